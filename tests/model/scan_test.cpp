#include "model/error.h"
#include "model/scan.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

class ScanTest : public ::testing::Test {
protected:
    ScanTest() { profile.localFolder = root; }

    std::set<std::string> paths() const {
        std::set<std::string> found;
        for (const auto& [path, fingerprint] : scan(profile)) found.insert(path);
        return found;
    }

    std::string failure() const {
        try {
            (void)scan(profile);
        } catch (const std::exception& error) {
            return describe(error);
        }
        return "no failure";
    }

    testing::TemporaryFolder folder;
    const fs::path root = folder / "site";
    Profile profile;
};

TEST_F(ScanTest, LinksExcludedAndSpecialItemsNeverReachTheServer) {
    testing::writeTree(
        root, {{"index.html", "x"},
               {"assets/.well-known/acme", "x"},
               {"node_modules/lib/a.js", "x"},
               {"sub/.git/config", "x"},
               {".zembrastel-backups/1/index.html", "x"}});
    testing::writeFile(folder / "outside" / "secret", "x");
    fs::create_directory_symlink(folder / "outside", root / "linked");
    fs::create_symlink(folder / "outside" / "secret", root / "link.txt");
    ASSERT_EQ(::mkfifo((root / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(paths(), (std::set<std::string>{"index.html", "assets/.well-known/acme"}));

    fs::create_directory_symlink(root, folder / "site-link");
    profile.localFolder = folder / "site-link";
    EXPECT_TRUE(paths().contains("index.html"));
}

TEST_F(ScanTest, OnlyTheChosenContentsAreSeenAndUnchosenFoldersAreNotEntered) {
    testing::writeTree(root, {{"a/b/c.txt", "x"}, {"a/b/other.txt", "x"}, {"secret/x.txt", "x"}, {"top.txt", "x"}});
    const auto everything = paths();
    profile.syncSelection = DownloadSelection::everything();
    EXPECT_EQ(paths(), everything);
    profile.syncSelection = DownloadSelection{.rules = {{"a", false}}};
    EXPECT_TRUE(paths().empty());
    profile.syncSelection.reset();
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"a/b/c.txt", true}}};
    EXPECT_EQ(paths(), std::set<std::string>{"a/b/c.txt"});
}

TEST_F(ScanTest, FingerprintTellsVersionsApartToTheNanosecond) {
    const auto moment = std::chrono::sys_days(std::chrono::year(2026) / 1 / 2) + std::chrono::nanoseconds(123456789);
    testing::writeFile(root / "a", "12345");
    testing::touch(root / "a", std::chrono::time_point_cast<std::chrono::system_clock::duration>(moment));
    const auto first = scan(profile).at("a");
    EXPECT_EQ(first.size, 5);
    EXPECT_DOUBLE_EQ(first.modified, 1767312000.123456789);
    EXPECT_EQ(first, Fingerprint::read(root / "a"));

    // Replaced by a file of the same size and time.
    testing::writeFile(root / "b", "54321");
    testing::touch(root / "b", std::chrono::time_point_cast<std::chrono::system_clock::duration>(moment));
    fs::rename(root / "b", root / "a");
    EXPECT_NE(scan(profile).at("a"), first);
}

TEST_F(ScanTest, NameThatIsNotUtf8IsLeftOutAndTold) {
    testing::writeTree(root, {{"good", "x"}, {"caf\xe9/inside", "x"}, {"bad\xff", "x"}});
    std::set<std::string> told;
    const auto found = scan(profile, {.unusableName = [&told](std::string_view path) { told.emplace(path); }});
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(told, (std::set<std::string>{"caf\xe9", "bad\xff"}));
}

TEST_F(ScanTest, UnavailableFolderIsAnErrorAndNeverAnEmptyResult) {
    EXPECT_EQ(failure(), "The local folder is unavailable or unreadable.");
    testing::writeFile(root, "a file");
    EXPECT_EQ(failure(), "The local folder is unavailable or unreadable.");
    fs::remove(root);
    testing::writeTree(root, {{"open/a", "x"}, {"closed/b", "x"}});
    if (::geteuid() == 0) return; // root reads what it likes
    ASSERT_EQ(::chmod((root / "closed").c_str(), 0), 0);
    EXPECT_EQ(failure(), (root / "closed").string() + ": Permission denied");
    ASSERT_EQ(::chmod(root.c_str(), S_IRUSR), 0);
    EXPECT_EQ(failure(), "The local folder is unavailable or unreadable.");
    ASSERT_EQ(::chmod(root.c_str(), S_IRWXU), 0);
}

TEST_F(ScanTest, FolderSwappedForALinkDuringTheScanIsRefused) {
    testing::writeFile(root / "victim" / "inside", "x");
    testing::writeFile(folder / "outside" / "secret", "x");
    bool swapped = false;
    // The first check comes before the folder's entry is looked at, when its name was read already.
    const auto swap = [&] {
        if (swapped) return;
        swapped = true;
        fs::rename(root / "victim", folder / "elsewhere");
        fs::create_directory_symlink(folder / "outside", root / "victim");
    };
    try {
        (void)scan(profile, {.checkpoint = swap});
        FAIL() << "followed the link";
    } catch (const SyncError& error) {
        EXPECT_STREQ(error.what(), "A file moved outside the selected local folder while scanning.");
    }
}

TEST_F(ScanTest, StopEndsAScanInTheMiddle) {
    for (int i = 0; i < 2000; ++i) testing::writeFile(root / std::to_string(i), "");
    int checks = 0;
    const auto stop = [&checks] {
        if (++checks == 2) throw Cancelled();
    };
    EXPECT_THROW((void)scan(profile, {.checkpoint = stop}), Cancelled);
}

} // namespace
} // namespace zembrastel
