#include "platform/directory_walk.h"
#include "platform/folder.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sys/resource.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

std::map<std::string, EntryKind> walked(const fs::path& root) {
    std::map<std::string, EntryKind> found;
    const auto note = [&found](const WalkEntry& entry) {
        EXPECT_TRUE(found.emplace(entry.path, entry.kind).second) << entry.path;
        return true;
    };
    walkFolder(Folder::open(root), {.visit = note});
    return found;
}

class DirectoryWalkTest : public ::testing::Test {
protected:
    testing::TemporaryFolder folder;
    const fs::path root = folder.path() / "root";
};

TEST_F(DirectoryWalkTest, EveryItemIsSeenOnceAndLinksAreNeverEntered) {
    testing::writeFile(root / "a" / "b" / "file", "x");
    testing::writeFile(root / ".hidden", "x");
    testing::writeFile(folder.path() / "outside" / "secret", "x");
    fs::create_directory(root / "empty");
    fs::create_directory_symlink(folder.path() / "outside", root / "link");
    ASSERT_EQ(::mkfifo((root / "fifo").c_str(), 0600), 0);
    const std::map<std::string, EntryKind> expected{{"a", EntryKind::folder},      {"a/b", EntryKind::folder},
                                                    {"a/b/file", EntryKind::file}, {".hidden", EntryKind::file},
                                                    {"empty", EntryKind::folder},  {"link", EntryKind::link},
                                                    {"fifo", EntryKind::other}};
    EXPECT_EQ(walked(root), expected);
}

TEST_F(DirectoryWalkTest, DeepTreesAreWalkedWithFewDescriptors) {
    fs::path deep = root;
    for (int level = 0; level < 300; ++level) {
        deep /= "d";
        testing::writeFile(deep / "before", "x");
        fs::create_directories(deep / "z"); // entered after, or before, the long way down
        testing::writeFile(deep / "z" / "file", "x");
    }
    rlimit limits{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limits), 0);
    const Descriptor next(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const rlimit tight{.rlim_cur = static_cast<rlim_t>(next.get()) + 40, .rlim_max = limits.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
    const auto found = walked(root);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limits), 0);
    EXPECT_EQ(found.size(), 300U * 4);
}

TEST_F(DirectoryWalkTest, FolderOperationsFollowNoLinksAndReplaceNothing) {
    testing::writeFile(root / "sub" / "file", "old");
    testing::writeFile(folder.path() / "outside" / "secret", "x");
    fs::create_directory_symlink(folder.path() / "outside", root / "link");
    fs::create_directory_symlink(root, folder.path() / "linked-root");
    const auto isLoop = [](const std::function<void()>& attempt) {
        try {
            attempt();
        } catch (const fs::filesystem_error& error) {
            return error.code().value() == ELOOP;
        }
        return false;
    };
    EXPECT_TRUE(isLoop([&] { (void)Folder::open(folder.path() / "linked-root"); }));
    EXPECT_TRUE(isLoop([&] { (void)Folder::open(folder.path() / "linked-root" / "sub"); }));
    const auto opened = Folder::open(root);
    EXPECT_TRUE(isLoop([&] { (void)opened.enter("link"); }));
    EXPECT_TRUE(isLoop([&] { (void)opened.enterOrMake("link"); }));
    EXPECT_FALSE(opened.enter("missing"));

    const auto sub = opened.enter("sub");
    ASSERT_TRUE(sub);
    EXPECT_FALSE(sub->enter("file"));
    testing::writeFile(root / "sub" / "new", "new");
    EXPECT_FALSE(sub->install("new", "file"));
    EXPECT_EQ(testing::readFile(root / "sub" / "file"), "old");
    EXPECT_TRUE(sub->install("new", "fresh"));
    EXPECT_TRUE(sub->exchange("new", "file"));
    EXPECT_EQ(testing::readFile(root / "sub" / "file"), "new");
    EXPECT_EQ(testing::readFile(root / "sub" / "new"), "old");
    EXPECT_THROW((void)sub->create("file", 0600), fs::filesystem_error);
}

} // namespace
} // namespace zembrastel
