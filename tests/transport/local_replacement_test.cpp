// Edits of a local file between two steps of the program, and file systems with missing features.
//
// The system calls are intercepted, so that a test can act at a call, or make it fail as such a file system does.
#include "transport/download/local_replacement.h"

#include "model/error.h"
#include "support/local_site.h"
#include "transport/publish/leftovers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

enum class Call { link, renameNew, exchange, copy, date };

// Called before each call on this thread. Returns the error of the call, or 0.
thread_local std::function<int(Call)> onCall;

template <class... Arguments>
long make(Call call, long number, Arguments... arguments) {
    if (const int error = onCall ? onCall(call) : 0; error != 0) {
        errno = error;
        return -1;
    }
    return ::syscall(number, arguments...);
}

} // namespace

extern "C" int linkat(int from, const char* name, int to, const char* newName, int flags) noexcept {
    return static_cast<int>(make(Call::link, SYS_linkat, from, name, to, newName, flags));
}

extern "C" int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
    const auto call = flags == RENAME_EXCHANGE ? Call::exchange : Call::renameNew;
    return static_cast<int>(make(call, SYS_renameat2, from, name, to, newName, flags));
}

extern "C" ssize_t copy_file_range(int from, off64_t* at, int to, off64_t* toAt, size_t size, unsigned flags) {
    return make(Call::copy, SYS_copy_file_range, from, at, to, toAt, size, flags);
}

extern "C" int futimens(int file, const timespec* times) noexcept {
    return static_cast<int>(make(Call::date, SYS_utimensat, file, nullptr, times, 0));
}

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::failureOf;
using testing::FileTree;
using testing::FtpServer;
using testing::LocalSite;

struct stat attributesOf(const fs::path& item) {
    struct stat attributes {};
    EXPECT_EQ(::lstat(item.c_str(), &attributes), 0) << item;
    return attributes;
}

mode_t modeOf(const fs::path& item) { return attributesOf(item).st_mode & 07777U; }

std::string extendedAttribute(const fs::path& file, const char* name) {
    std::string value(100, '\0');
    const ssize_t size = ::getxattr(file.c_str(), name, value.data(), value.size());
    value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return value;
}

class Replacing : public ::testing::Test {
protected:
    Replacing() { testing::writeFile(site / "dir/page", "seen"); }
    ~Replacing() override { onCall = nullptr; }

    // Puts "new" in the place of "dir/page".
    bool replace() {
        const auto local = LocalPlace::resolve(site, "dir/page");
        const auto seen = local.fingerprint();
        const auto backup = makeBackup(site, local, control);
        StagedFile staged(*local.parent);
        EXPECT_EQ(modeOf(site / "dir" / staged.name()), 0600U) << "other users can read it";
        EXPECT_EQ(::write(staged.descriptor(), "new", 3), 3);
        return replaceKeeping(staged, local, seen, backup, site);
    }

    // The contents of the backups, without their ids.
    [[nodiscard]] std::multiset<std::string> kept() const {
        std::multiset<std::string> contents;
        for (const auto& [path, content] : testing::readTree(site / backupFolder)) {
            contents.insert(path.substr(path.find('/')) + ": " + content);
        }
        return contents;
    }

    testing::TemporaryFolder folder;
    const fs::path site = folder / "site";
    TransferControl control;
};

TEST_F(Replacing, EditBetweenTwoStepsStaysInPlace) {
    struct Case {
        Call at;
        int error; // of a file system without this feature
        std::multiset<std::string> kept;
    };
    for (const auto& one : std::vector<Case>{
             {Call::copy, 0, {"/dir/page: seen"}},
             {Call::exchange, 0, {"/dir/page: new", "/dir/page: seen"}}, // the new one was in place for a moment
             {Call::exchange, EINVAL, {"/dir/page: seen"}}}) {
        testing::writeFile(site / "dir/page", "seen");
        onCall = [&, edited = false](Call call) mutable {
            if (call != one.at) return 0;
            if (!std::exchange(edited, true)) {
                testing::writeFile(site / "draft", "edited");
                fs::rename(site / "draft", site / "dir/page");
            }
            return one.error;
        };
        EXPECT_FALSE(replace());
        onCall = nullptr;
        EXPECT_EQ(kept(), one.kept);
        fs::remove_all(site / backupFolder);
        EXPECT_EQ(testing::readTree(site), (FileTree{{"dir/page", "edited"}}));
    }
}

TEST_F(Replacing, BackupDoesNotChangeThroughAnotherLink) {
    for (const bool linked : {true, false}) {
        testing::writeFile(site / "dir/page", "seen");
        if (linked) fs::create_hard_link(site / "dir/page", site / "link");
        const auto inode = attributesOf(site / "dir/page").st_ino;
        EXPECT_TRUE(replace());
        if (linked) testing::writeFile(site / "link", "edited");
        const auto backup = fs::directory_iterator(site / backupFolder)->path() / "dir/page";
        EXPECT_EQ(testing::readFile(backup), "seen");
        // The later writes of a program that has it open must not be lost.
        EXPECT_EQ(attributesOf(backup).st_ino == inode, !linked);
        EXPECT_EQ(testing::readFile(site / "dir/page"), "new");
        EXPECT_EQ(testing::leftoverPartFiles(site), std::vector<std::string>());
        fs::remove_all(site / backupFolder);
    }
}

TEST_F(Replacing, FileKeepsOwnerPermissionsAndAttributes) {
    using namespace std::string_literals;
    const auto page = site / "dir/page";
    // rw- for its owner and the user 7, nothing for the group, within rw-, and r-- for others
    const auto list =
        "\2\0\0\0\1\0\6\0\xff\xff\xff\xff\2\0\6\0\7\0\0\0\4\0\0\0\xff\xff\xff\xff\x10\0\6\0\xff\xff\xff\xff"
        " \0\4\0\xff\xff\xff\xff"s;
    ASSERT_EQ(::setxattr(page.c_str(), "user.kept", "value", 5, 0), 0);
    ASSERT_EQ(::setxattr(page.c_str(), "system.posix_acl_access", list.data(), list.size(), 0), 0);
    // A user other than root cannot change the owner.
    const uid_t owner = ::geteuid() == 0 ? 54321 : ::geteuid();
    ASSERT_EQ(::chown(page.c_str(), owner, ::geteuid() == 0 ? 54322 : ::getegid()), 0);
    ASSERT_EQ(::chmod(page.c_str(), 04764), 0);
    const auto before = attributesOf(page);
    fs::create_hard_link(page, site / "link"); // so that the backup is a copy
    ASSERT_TRUE(replace());
    const auto backup = fs::directory_iterator(site / backupFolder)->path() / "dir/page";
    for (const auto& file : {page, backup}) {
        const auto now = attributesOf(file);
        EXPECT_EQ(now.st_uid, before.st_uid);
        EXPECT_EQ(now.st_gid, before.st_gid);
        EXPECT_EQ(now.st_mode & 07777U, 0764U) << "new content must not run as its owner";
        EXPECT_EQ(extendedAttribute(file, "user.kept"), "value");
        EXPECT_EQ(
            extendedAttribute(file, "system.posix_acl_access"),
            extendedAttribute(site / "link", "system.posix_acl_access"));
    }
    for (fs::path above = backup.parent_path(); above != site; above = above.parent_path()) {
        EXPECT_EQ(modeOf(above), 0700U) << above;
    }
}

TEST_F(Replacing, FailedBackupLeavesNothingBehind) {
    control.cancel();
    EXPECT_THROW((void)replace(), Cancelled);
    EXPECT_TRUE(fs::is_empty(site / backupFolder));
    EXPECT_EQ(modeOf(site / backupFolder), 0700U);
}

TEST_F(Replacing, LeftoverCopyIsRemovedAndEditIsKept) {
    const std::string id = ".zembrastel-01234567-89AB-CDEF-0123-456789ABCDEF";
    testing::writeTree(site, {{id + ".part", "half"}, {"dir/" + id + ".displaced", "an edit"}});
    FileTree expected{{"dir/page", "seen"}, {"dir/.zembrastel-notes.part", "mine"}};
    testing::writeTree(site, expected);
    const auto place = LocalPlace::resolve(site, "page");
    const StagedFile underWay(*place.parent);
    Profile profile;
    profile.localFolder = site;
    clearLeftovers(profile, control);
    EXPECT_EQ(kept(), (std::multiset<std::string>{"/dir/" + id + ".displaced: an edit"}));
    fs::remove_all(site / backupFolder);
    expected.emplace(underWay.name(), "");
    EXPECT_EQ(testing::readTree(site), expected);
}

TEST(FirstDownload, FileThatAppearsMeanwhileIsKept) {
    FtpServer server(FtpServer::Kind::odd);
    server.put("site/page", "server");
    struct Case {
        std::string able; // features of the file system
        int linkError, renameError;
        std::vector<std::optional<Call>> appearsAt;
    };
    for (const auto& one : std::vector<Case>{
             {"links", 0, 0, {std::nullopt, Call::link}},
             {"renames", EPERM, 0, {std::nullopt, Call::renameNew}},
             {"neither", EPERM, EINVAL, {std::nullopt, Call::renameNew, Call::date}}}) {
        for (const auto& appears : one.appearsAt) {
            SCOPED_TRACE(one.able + (appears ? ", a file appears" : ""));
            const LocalSite site(server);
            onCall = [&](Call call) {
                if (call == appears) {
                    testing::writeFile(site / "draft", "mine");
                    fs::rename(site / "draft", site / "page");
                }
                return call == Call::link ? one.linkError : call == Call::renameNew ? one.renameError : 0;
            };
            std::string report;
            std::size_t installed = 0;
            site.transport().downloadTree(
                "", 0, [&](const std::string& line) { report = line; }, [&](const auto&...) { ++installed; });
            onCall = nullptr;
            EXPECT_EQ(site.files(), (FileTree{{"page", appears ? "mine" : "server"}}));
            EXPECT_EQ(report, appears ? "Kept existing local file: page" : "Downloading page");
            EXPECT_EQ(installed, appears ? 0U : 1U);
            testing::writeFile(site / "other", "");
            EXPECT_EQ(modeOf(site / "page"), modeOf(site / "other"));
            EXPECT_GT(attributesOf(site / "page").st_mtime, 0);
        }
    }
}

TEST(Download, ManyKeptFilesDoNotFloodTheLog) {
    FtpServer server(FtpServer::Kind::odd);
    LocalSite site(server);
    for (const char name : {'a', 'b', 'c', 'd', 'z'}) {
        server.put(std::string("site/") + name, "x");
        testing::writeFile(site / std::string(1, name), "x");
    }
    std::vector<std::string> lines;
    site.transport().downloadTree(
        "", 0, [&](const std::string& line) { lines.push_back(line); }, [](const auto&...) {});
    EXPECT_EQ(lines, std::vector<std::string>{"Kept 5 local files with the same or newer date."});
}

TEST(Upload, FileEditedWhileCopiedDoesNotGoLive) {
    FtpServer server(FtpServer::Kind::odd);
    server.put("site/page", "old");
    const LocalSite site(server, {{"page", "new"}});
    onCall = [&](Call call) {
        if (call == Call::copy) testing::writeFile(site / "page", "half an edit");
        return 0;
    };
    const auto failure = failureOf([&] {
        site.transport().upload("page", site.fingerprint("page"));
        return 0;
    });
    onCall = nullptr;
    EXPECT_EQ(failure, "File changed while preparing the upload; it will be retried.");
    EXPECT_EQ(testing::readTree(server.root()), (FileTree{{"site/page", "old"}}));
}

} // namespace
} // namespace zembrastel
