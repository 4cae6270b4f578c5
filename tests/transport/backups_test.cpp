// Backups of replaced files and their restoring, without a server.
#include "transport/download/backups.h"

#include "model/error.h"
#include "platform/uuid.h"
#include "support/file_tree.h"
#include "support/local_site.h"
#include "support/temporary_folder.h"
#include "transport/download/local_replacement.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using std::chrono::hours;
using testing::failureOf;
using testing::FileTree;

class Backups : public ::testing::Test {
protected:
    // Makes a backup as a replacement does: `age` ago, of a version that was a day older.
    std::string keep(const std::string& path, const std::string& content, hours age) const {
        const std::string id = Uuid::random().text();
        const fs::path backup = site / backupFolder / id;
        testing::writeFile(backup / path, content);
        testing::touch(backup / path, now - age - hours(24));
        testing::touch(backup, now - age);
        return id;
    }

    [[nodiscard]] std::vector<Backup> list() const { return listBackups(site, control); }

    [[nodiscard]] FileTree tree() const {
        auto files = testing::readTree(site);
        std::erase_if(files, [](const auto& file) { return file.first.starts_with(backupFolder); });
        return files;
    }

    // The contents of all versions of the file, the newest first.
    [[nodiscard]] std::vector<std::string> kept(const std::string& path) const {
        std::vector<std::string> contents;
        for (const auto& each : list()) {
            if (each.path == path) contents.push_back(testing::readFile(placeOf(site, each)));
        }
        return contents;
    }

    [[nodiscard]] Restored restore(const Backup& backup) const { return restoreBackup(site, backup, control); }

    testing::TemporaryFolder folder;
    const fs::path site = folder / "site";
    const std::chrono::system_clock::time_point now =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    TransferControl control;
};

TEST_F(Backups, ForeignItemsAreNotOffered) {
    fs::create_directory(site);
    EXPECT_TRUE(list().empty());
    const auto older = keep("a.txt", "older", hours(5));
    const auto newer = keep("a.txt", "new", hours(2));
    const auto other = keep("dir/a10.txt", "x", hours(9));
    const fs::path place = site / backupFolder;
    testing::writeFile(place / "notes/a.txt", "no backup");
    testing::writeFile(place / "loose", "no backup");
    testing::writeFile(place / older / "\xff", "no name");
    testing::writeFile(folder / "outside/secret", "not ours");
    fs::create_symlink(folder / "outside/secret", place / older / "link");
    fs::create_directory_symlink(folder / "outside", place / Uuid::random().text());
    testing::touch(place / older, now - hours(5));

    const auto found = list();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(
        found[0],
        (Backup{.path = "a.txt", .id = newer, .kept = now - hours(2), .modified = now - hours(26), .size = 3}));
    EXPECT_EQ(found[1].id, older);
    EXPECT_EQ(found[2].path, "dir/a10.txt");
    EXPECT_EQ(found[2].id, other);
    const auto totals = totalsOf(found);
    EXPECT_EQ(totals.files, 2U);
    EXPECT_EQ(totals.bytes, 9U);
}

TEST_F(Backups, RestoringLosesNoVersion) {
    keep("dir/page", "first", hours(5));
    testing::writeFile(site / "dir/page", "second");
    ASSERT_EQ(::chmod((site / "dir/page").c_str(), 0640), 0);
    const auto versions = list();
    const auto done = restore(versions.front());
    EXPECT_TRUE(done.replaced);
    EXPECT_EQ(tree(), (FileTree{{"dir/page", "first"}}));
    EXPECT_EQ(kept("dir/page"), (std::vector<std::string>{"second", "first"}));
    // Newer than any copy on the server, so that no comparison replaces it again.
    EXPECT_EQ(done.now, Fingerprint::read(site / "dir/page"));
    EXPECT_GE(done.now.modified, static_cast<double>(std::chrono::system_clock::to_time_t(now)));
    struct stat restored {};
    ASSERT_EQ(::stat((site / "dir/page").c_str(), &restored), 0);
    EXPECT_EQ(restored.st_mode & 0777U, 0640U);

    // The next backup must be newer, whatever the resolution of the file system's dates.
    testing::touch(site / backupFolder / list().front().id, now - hours(1));
    (void)restore(list().front());
    EXPECT_EQ(tree(), (FileTree{{"dir/page", "second"}}));
    EXPECT_EQ(kept("dir/page"), (std::vector<std::string>{"first", "second", "first"}));
}

TEST_F(Backups, MissingFileIsRestoredWithItsFolders) {
    keep("a/b/page", "old", hours(1));
    EXPECT_FALSE(restore(list().front()).replaced);
    EXPECT_EQ(tree(), (FileTree{{"a/b/page", "old"}}));
}

TEST_F(Backups, LinksAndFoldersAreNotReplaced) {
    testing::writeFile(folder / "outside/page", "not ours");
    keep("dir/page", "old", hours(1));
    const auto version = list().front();
    fs::create_directory_symlink(folder / "outside", site / "dir");
    EXPECT_EQ(failureOf([&] { return restore(version); }), "Refusing to follow a local symbolic link: dir/page");
    fs::remove(site / "dir");
    fs::create_directories(site / "dir/page/inside");
    EXPECT_EQ(
        failureOf([&] { return restore(version); }),
        "dir/page is no file in the local folder now. It was left as it is.");
    EXPECT_TRUE(fs::is_directory(site / "dir/page/inside"));

    fs::remove_all(site / "dir");
    const fs::path backup = site / backupFolder / version.id;
    fs::remove_all(backup);
    fs::create_directory_symlink(folder / "outside", backup);
    EXPECT_NE(failureOf([&] { return restore(version); }), "");
    fs::remove(backup);
    EXPECT_EQ(
        failureOf([&] { return restore(version); }), "This version of dir/page is no longer in .zembrastel-backups.");
    EXPECT_EQ(testing::readTree(folder / "outside"), (FileTree{{"page", "not ours"}}));
    EXPECT_TRUE(tree().empty());
}

TEST_F(Backups, LeftoverIsNotRestoredUnderItsTemporaryName) {
    const std::string name = temporaryName();
    keep(name, "an edit", hours(1));
    const auto failure = failureOf([&] { return restore(list().front()); });
    EXPECT_NE(failure.find("interrupted download"), std::string::npos) << failure;
    EXPECT_TRUE(tree().empty());
}

} // namespace
} // namespace zembrastel
