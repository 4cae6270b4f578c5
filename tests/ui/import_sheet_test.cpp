#include "ui/import/import_sheet.h"

#include "screen_fixture.h"

#include <QFileDialog>

namespace zembrastel::testing {
namespace {

class ImportSheetTest : public ScreenFixture {
protected:
    ImportSheetTest() {
        std::filesystem::create_directory(folder / "site");
        passwords.save = [this](const std::string& password, const Uuid& id) {
            if (isLocked) throw SyncError("The store is locked.");
            stored[id] = password;
        };
        startModel();
    }

    void open(const std::string& bytes) {
        writeFile(folder / "sitemanager.xml", bytes);
        sheet = std::make_unique<ImportSheet>(*bridge, context, folder / "sitemanager.xml", nullptr);
        screen = sheet.get();
        sheet->open();
        ASSERT_TRUE(waitFor([this] { return list().isEnabled(); }));
    }

    void openSites() {
        open(
            R"(<FileZilla3><Servers>
              <Server><Name>whole</Name><Host>a.example</Host><Protocol>4</Protocol><User>u</User><LocalDir>)"
            + site() + R"(</LocalDir><Pass encoding="base64">aHVzaA==</Pass></Server>
              <Server><Name>no folder</Name><Host>b.example</Host><Protocol>4</Protocol><User>u</User></Server>
              <Server><Name>shell</Name><Host>c.example</Host><Protocol>1</Protocol><User>u</User></Server>
            </Servers></FileZilla3>)");
    }

    [[nodiscard]] std::string site() const { return (folder / "site").string(); }
    [[nodiscard]] bool closes() const {
        return waitFor([this] { return !sheet->isVisible(); });
    }

    std::atomic<bool> isLocked = false;
    std::unique_ptr<ImportSheet> sheet;
};

TEST_F(ImportSheetTest, ImportedProfileStartsWithoutFurtherInput) {
    openSites();
    const QString note = ", The site names no remote folder; \"/\" is taken.";
    EXPECT_EQ(
        row(0),
        "whole, Selected, u@a.example:21 · FTPS (TLS) · /, Local folder: " + QString::fromStdString(site()) + note);
    EXPECT_EQ(
        row(1), "no folder, u@b.example:21 · FTPS (TLS) · /, It has no local folder., Choose local folder…" + note);
    EXPECT_EQ(row(2), "shell, Skipped: It uses SFTP; only FTP and FTPS are supported.");
    press("Import 1 profile");
    ASSERT_TRUE(closes());
    ASSERT_EQ(model->profiles().size(), 1U);
    const Profile& imported = model->profiles().front();
    EXPECT_EQ(imported.name, "whole");
    EXPECT_FALSE(imported.enabled);
    EXPECT_FALSE(imported.requiresDownloadSelection());
    EXPECT_EQ(model->selection(), imported.id);
    EXPECT_EQ(stored, (std::map<Uuid, std::string>{{imported.id, "hush"}}));
    stored.clear();
    model->toggle(imported.id);
    EXPECT_EQ(model->status(imported.id).title(), "Checking server") << "the password is known for this session";
}

TEST_F(ImportSheetTest, UnusableProfileStaysUnticked) {
    openSites();
    key(Qt::Key_Space);
    EXPECT_TRUE(row(0).startsWith("whole, Not selected"));
    for (const int number : {1, 2}) {
        key(Qt::Key_Down);
        key(Qt::Key_Space);
        EXPECT_FALSE(row(number).contains("elected")) << row(number).toStdString();
    }
    key(Qt::Key_Up);
    key(Qt::Key_Return);
    auto* const chooser = sheet->findChild<QFileDialog*>();
    ASSERT_NE(chooser, nullptr);
    Q_EMIT chooser->fileSelected(QString::fromStdString(site()));
    chooser->close();
    EXPECT_TRUE(row(1).startsWith("no folder, Selected")) << row(1).toStdString();
    press("Import 1 profile");
    ASSERT_TRUE(closes());
    EXPECT_EQ(model->profiles().front().localFolder, site());
}

TEST_F(ImportSheetTest, FailureIsShownAndLosesNothing) {
    open("<not FileZilla's/>");
    EXPECT_TRUE(message().startsWith("Cannot import sitemanager.xml: ")) << message().toStdString();
    sheet->reject();

    isLocked = true;
    openSites();
    press("Import 1 profile");
    ASSERT_TRUE(waitFor([this] { return !message().isEmpty(); }));
    EXPECT_TRUE(message().startsWith("The store is locked. ")) << message().toStdString();
    EXPECT_TRUE(model->profiles().empty());
    press("Keep the password for this session only");
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(model->profiles().size(), 1U);

    openSites();
    EXPECT_FALSE(row(0).contains("elected")) << "it is already imported";
    EXPECT_TRUE(row(0).contains("There is a profile of this name already."));
}

} // namespace
} // namespace zembrastel::testing
