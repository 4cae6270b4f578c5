#include "platform/files.h"
#include "platform/instance_lock.h"
#include "platform/private_folder.h"
#include "platform/uuid.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::vector<std::string> flushed; // what kind of item, as often as it was flushed

} // namespace

extern "C" int fsync(int item) {
    struct stat attributes {};
    ::fstat(item, &attributes);
    flushed.emplace_back(S_ISDIR(attributes.st_mode) ? "folder" : "file");
    return static_cast<int>(::syscall(SYS_fsync, item));
}

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

mode_t permissions(const fs::path& path) {
    struct stat attributes {};
    EXPECT_EQ(::lstat(path.c_str(), &attributes), 0);
    return attributes.st_mode & 07777;
}

class FilesTest : public ::testing::Test {
protected:
    testing::TemporaryFolder folder;
};

TEST_F(FilesTest, AtomicWriteIsPrivateCompleteAndClean) {
    const auto file = folder.path() / "state";
    const mode_t before = ::umask(0);
    writeAtomically(file, "first");
    EXPECT_EQ(std::exchange(flushed, {}), (std::vector<std::string>{"file", "folder"})) << "a power cut loses it";
    ::umask(0777);
    writeAtomically(file, std::string(1 << 20, 'b'));
    ::umask(before);
    EXPECT_EQ(readFile(file).value().size(), 1U << 20);
    EXPECT_EQ(permissions(file), 0600U);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
}

TEST_F(FilesTest, AnyUmaskLeavesFolderAndLockUsable) {
    const mode_t before = ::umask(0277);
    const PrivateFolder working;
    const auto lock = InstanceLock::acquire(working.path());
    ::umask(before);
    EXPECT_EQ(permissions(working.path()), 0700U);
    EXPECT_EQ(permissions(working.path() / "lock"), 0600U);
}

TEST_F(FilesTest, OnlyOldLeftoversOfOwnWritesAreRemoved) {
    const auto file = folder.path() / "state";
    const auto old = folder.path() / ("state." + Uuid::random().text() + ".part");
    const auto fresh = folder.path() / ("state." + Uuid::random().text() + ".part");
    const auto foreign = folder.path() / "state.backup.part";
    for (const auto& path : {file, old, fresh, foreign}) writeAtomically(path, "x");
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(2);
    for (const auto& path : {file, old, foreign}) fs::last_write_time(path, longAgo);
    removeStaleWrites(file);
    EXPECT_FALSE(fs::exists(old));
    for (const auto& path : {file, fresh, foreign}) EXPECT_TRUE(fs::exists(path)) << path;
}

TEST_F(FilesTest, CopyIsCompleteForAnyFileAndCanBeStopped) {
    const auto content = testing::randomBytes(3'000'000, 1);
    testing::writeFile(folder.path() / "source", content);
    const auto copy = [&](const fs::path& source, const std::function<void()>& checkpoint) {
        const auto target = folder.path() / "target";
        fs::remove(target);
        const Descriptor from(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
        const Descriptor to(::open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        copyContents(from.get(), to.get(), source, checkpoint);
        return readFile(target).value();
    };
    EXPECT_EQ(copy(folder.path() / "source", [] {}), content);
    EXPECT_EQ(copy("/proc/version", [] {}), readFile("/proc/version").value());
    EXPECT_EQ(copy("/dev/null", [] {}), "");
    EXPECT_THROW(copy(folder.path() / "source", [] { throw std::runtime_error("stop"); }), std::runtime_error);
}

TEST_F(FilesTest, WorkingFoldersArePrivateAndLeaveNothing) {
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    fs::path place;
    {
        const PrivateFolder working;
        place = working.path();
        EXPECT_EQ(permissions(place), 0700U);
        fs::create_directories(place / "deep" / "er");
    }
    EXPECT_FALSE(fs::exists(place));

    const auto old = folder.path() / ("zembrastel-" + Uuid::random().text());
    const auto fresh = folder.path() / ("zembrastel-" + Uuid::random().text());
    const auto foreign = folder.path() / "zembrastel-notes";
    for (const auto& path : {old, fresh, foreign}) testing::writeFile(path / "file", "x");
    for (const auto& path : {old, foreign}) {
        fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(2));
    }
    removeStalePrivateFolders();
    ::unsetenv("TMPDIR");
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(fresh / "file"));
    EXPECT_TRUE(fs::exists(foreign / "file"));
}

TEST_F(FilesTest, SecondProgramCannotTakeTheStateFolder) {
    {
        const auto first = InstanceLock::acquire(folder.path());
        ASSERT_TRUE(first);
        EXPECT_FALSE(InstanceLock::acquire(folder.path()));
        fs::remove(folder / "lock");
        EXPECT_FALSE(InstanceLock::acquire(folder.path())) << "with a lock file of its own";
        fs::create_directory(folder / "another");
        EXPECT_TRUE(InstanceLock::acquire(folder / "another"));
    }
    EXPECT_TRUE(InstanceLock::acquire(folder.path()));
}

TEST(Uuid, IdsAreReadInEitherCaseAndWrittenInOne) {
    const auto id = Uuid::random();
    std::string lower = id.text();
    for (auto& c : lower) c = static_cast<char>(std::tolower(c));
    EXPECT_EQ(Uuid::parse(lower), id);
    EXPECT_EQ(Uuid::parse(id.text())->text(), id.text());
    EXPECT_NE(Uuid::random(), id);
    for (const auto* bad :
         {"", "x", "123e4567-e89b-12d3-a456-42661417400", "123e4567-e89b-12d3-a456-4266141740000",
          "123e4567e89b12d3a456426614174000", "g23e4567-e89b-12d3-a456-426614174000"}) {
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
    }
}

} // namespace
} // namespace zembrastel
