#include "model/scan.h"

#include "model/error.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using Paths = std::set<std::string>;
using testing::writeTree;

class ScanTest : public ::testing::Test {
protected:
    ScanTest() { profile.localFolder = root; }

    Paths paths(const ScanHooks& hooks = {}) const {
        Paths found;
        for (const auto& [path, fingerprint] : scan(profile, hooks)) found.insert(path);
        return found;
    }

    std::string failure(const ScanHooks& hooks = {}) const {
        try {
            (void)scan(profile, hooks);
        } catch (const std::exception& error) {
            return describe(error);
        }
        return "no failure";
    }

    testing::TemporaryFolder folder;
    const fs::path root = folder / "site";
    Profile profile;
};

TEST_F(ScanTest, SpecialItemsAreSkippedHiddenFilesAreNot) {
    writeTree(root, {{"index.html", "x"}, {"assets/.well-known/acme", "x"}});
    ASSERT_EQ(::mkfifo((root / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(paths(), (Paths{"index.html", "assets/.well-known/acme"}));

    fs::create_directory_symlink(root, folder / "site-link");
    profile.localFolder = folder / "site-link";
    EXPECT_TRUE(paths().contains("index.html"));
}

TEST_F(ScanTest, UnchosenFoldersAreNotEntered) {
    writeTree(root, {{"a/b/c.txt", "x"}, {"secret/x~", "x"}});
    profile.initialDownloadSelection = DownloadSelection{.rules = {{"a/b/c.txt", true}}};
    const auto entered = [](std::string_view path) { ADD_FAILURE() << path; };
    EXPECT_EQ(paths({.excluded = entered}), Paths{"a/b/c.txt"});
}

TEST_F(ScanTest, FingerprintDistinguishesNanoseconds) {
    const auto moment = std::chrono::sys_days(std::chrono::year(2026) / 1 / 2) + std::chrono::nanoseconds(123456789);
    writeTree(root, {{"a", "12345"}, {"b", "54321"}});
    for (const auto* name : {"a", "b"}) testing::touch(root / name, moment);
    const auto first = scan(profile).at("a");
    EXPECT_EQ(first.size, 5);
    EXPECT_DOUBLE_EQ(first.modified, 1767312000.123456789);
    EXPECT_EQ(first, Fingerprint::read(root / "a"));
    fs::rename(root / "b", root / "a");
    EXPECT_NE(scan(profile).at("a"), first) << "replaced by a file of the same size and time";
}

TEST_F(ScanTest, NameThatCannotBeSentIsReported) {
    std::string parent;
    for (int level = 1; level < maxFolderLevels; ++level) parent += "d/";
    writeTree(
        root, {{"good\x7f", "x"},
               {"caf\xe9/inside", "x"},
               {"bad\xff", "x"},
               {"excluded\xff~", "x"},
               {".git/\xff", "x"},
               {"line\nbreak", "x"},
               {"line\u2028break", "x"},
               {"tab\t/inside", "x"},
               {parent + "last", "x"},
               {parent + "d/beyond", "x"}});
    Paths told;
    const auto tell = [&told](std::string_view path, NameFault fault) { told.insert(leftOutLine(fault, path)); };
    EXPECT_EQ(paths({.unusableName = tell}), (Paths{"good\x7f", parent + "last"}));
    const std::string notUtf8 = "Left out, because its name is not valid UTF-8: ";
    const std::string control = "Left out, because its name has a control character or a line break: ";
    EXPECT_EQ(
        told, (Paths{
                  notUtf8 + "caf\\xE9", notUtf8 + "bad\\xFF", control + "line\\x0Abreak",
                  control + "line\\xE2\\x80\\xA8break", control + "tab\\x09",
                  "Left out, because it is nested more than 128 levels deep: " + parent + "d"}));
}

TEST_F(ScanTest, PasswordFileAndStateFolderAreNeverPublished) {
    writeTree(root, {{"page", "x"}, {"secret.txt", "pw"}, {"a/State/profiles.json", "x"}, {"b/state/page", "x"}});
    fs::create_hard_link(root / "secret.txt", root / "a/copy");
    fs::create_symlink(root / "secret.txt", folder / "link");
    Paths told;
    const ScanHooks hooks{
        .privateItems =
            {{.path = folder / "link", .reason = "it holds a password"},
             {.path = root / "a/State", .reason = "it is private"},
             {.path = folder / "missing", .reason = ""}},
        .keptPrivate = [&](std::string_view path, const PrivateItem& item) { told.insert(leftOutText(path, item)); }};
    EXPECT_EQ(paths(hooks), (Paths{"page", "b/state/page"}));
    EXPECT_EQ(
        told, (Paths{
                  "Left out, because it holds a password: secret.txt", "Left out, because it holds a password: a/copy",
                  "Left out, because it is private: a/State"}));
    // As editors save it: another file takes the name.
    testing::writeFile(root / "new", "pw2");
    fs::rename(root / "new", root / "secret.txt");
    EXPECT_FALSE(paths(hooks).contains("secret.txt"));
}

TEST(Fingerprint, OnlyLastingInodeNumbersCount) {
    // ext, XFS, btrfs, NFS, SMB, overlay; FAT, exFAT, FUSE, shared folders of VirtualBox
    for (const auto type : std::vector<std::int64_t>{0xEF53, 0x58465342, 0x9123683E, 0x6969, 0xFE534D42, 0x794C7630}) {
        EXPECT_EQ(inodeNumbersOf(type), InodeNumbers::lasting) << std::hex << type;
    }
    for (const auto type : std::vector<std::int64_t>{0x4D44, 0x2011BAB0, 0x65735546, 0x786F4256}) {
        EXPECT_EQ(inodeNumbersOf(type), InodeNumbers::passing) << std::hex << type;
    }
    struct stat attributes {};
    attributes.st_size = 7;
    attributes.st_ino = 5;
    const auto lasting = Fingerprint::of(InodeNumbers::lasting, attributes);
    const auto passing = Fingerprint::of(InodeNumbers::passing, attributes);
    EXPECT_EQ(lasting, (Fingerprint{.size = 7, .inode = 5}));
    EXPECT_EQ(passing, (Fingerprint{.size = 7}));
    EXPECT_FALSE(isOtherVersion(passing, lasting)) << "recorded before the numbers were known not to last";
    EXPECT_FALSE(isOtherVersion(passing, passing));
    EXPECT_FALSE(isOtherVersion(lasting, lasting));
    EXPECT_TRUE(isOtherVersion(lasting, passing)) << "moved to another disk";
    EXPECT_TRUE(isOtherVersion(lasting, {.size = 7, .inode = 6})) << "replaced by one of equal size and time";
    EXPECT_TRUE(isOtherVersion(passing, {.size = 8}));
    EXPECT_TRUE(isOtherVersion(passing, {.size = 7, .modified = 1}));
}

TEST_F(ScanTest, UnavailableFolderIsAnErrorNotEmpty) {
    const auto unavailable = "The local folder is unavailable or unreadable.";
    EXPECT_EQ(failure(), unavailable);
    testing::writeFile(root, "a file");
    EXPECT_EQ(failure(), unavailable);
    fs::remove(root);
    writeTree(root, {{"open/a", "x"}, {"closed/b", "x"}});
    if (::geteuid() == 0) return; // root reads what it likes
    fs::permissions(root / "closed", fs::perms::none);
    EXPECT_EQ(failure(), (root / "closed").string() + ": Permission denied");
    fs::permissions(root, fs::perms::owner_read);
    EXPECT_EQ(failure(), unavailable);
    fs::permissions(root, fs::perms::owner_all);
}

TEST_F(ScanTest, FolderSwappedForALinkDuringTheScanIsRefused) {
    writeTree(folder.path(), {{"site/victim/inside", "x"}, {"outside/secret", "x"}});
    // The first check comes before the folder's entry is looked at, when its name was read already.
    const auto swap = [&] {
        if (fs::is_symlink(root / "victim")) return;
        fs::rename(root / "victim", folder / "elsewhere");
        fs::create_directory_symlink(folder / "outside", root / "victim");
    };
    EXPECT_EQ(failure({.checkpoint = swap}), "A file moved outside the selected local folder while scanning.");
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
