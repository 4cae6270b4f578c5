#include "support/file_tree.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "ui/desktop/login_entry.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>

namespace zembrastel::ui {
namespace {

class LoginEntryTest : public ::testing::Test {
protected:
    LoginEntryTest() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }
    ~LoginEntryTest() override { ::unsetenv("XDG_CONFIG_HOME"); }

    testing::TemporaryFolder folder;
};

TEST_F(LoginEntryTest, DesktopsAcceptTheEntry) {
    const LoginEntry entry("org.example.Program", "Program", {R"(/opt/my "50%" $x\y`/program)", "--background"});
    EXPECT_EQ(entry.file(), folder / "autostart/org.example.Program.desktop");
    EXPECT_FALSE(entry.isOn());
    entry.switchOn();
    EXPECT_TRUE(entry.isOn());
    EXPECT_NE(
        testing::readFile(entry.file())
            .find(R"(Exec="/opt/my \\"50%%\\" \\$x\\\\y\\`/program" "--background")"
                  "\n"),
        std::string::npos);
    EXPECT_EQ(testing::Program({"/usr/bin/desktop-file-validate", entry.file()}).wait(), 0);
    entry.switchOff();
    EXPECT_FALSE(entry.isOn());
    EXPECT_TRUE(std::filesystem::is_empty(folder / "autostart"));
    entry.switchOff();
}

TEST_F(LoginEntryTest, EntryDisabledElsewhereCountsAsOff) {
    const LoginEntry entry("org.example.Program", "Program", {"/usr/bin/program"});
    for (const auto& [more, isOn] : std::map<std::string, bool>{
             {"Hidden=true\n", false},
             {"Hidden = true\n", false},
             {"X-GNOME-Autostart-enabled=false\n", false},
             {"Hidden=false\nX-GNOME-Autostart-enabled=true\n", true},
             {"[Desktop Action x]\nHidden=true\n", true}}) {
        testing::writeFile(entry.file(), "[Desktop Entry]\nExec=program\n" + more);
        EXPECT_EQ(entry.isOn(), isOn) << more;
    }
    entry.switchOn();
    EXPECT_TRUE(entry.isOn());
}

} // namespace
} // namespace zembrastel::ui
