#include "platform/files.h"
#include "platform/process_resources.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zembrastel {
namespace {

// How a shell ends that crashes in this folder, started by a process that allows itself dumps and then does `first`.
int crashIn(const testing::TemporaryFolder& folder, void (*first)()) {
    const pid_t child = ::fork();
    if (child == 0) {
        rlimit all{};
        ::getrlimit(RLIMIT_CORE, &all);
        all.rlim_cur = all.rlim_max;
        ::setrlimit(RLIMIT_CORE, &all);
        if (::chdir(folder.path().c_str()) != 0) ::_exit(1);
        first();
        ::execl("/bin/sh", "sh", "-c", "kill -SEGV $$", nullptr);
        ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(ProcessLimits, CrashLeavesNoPasswordOnDisk) {
    const testing::TemporaryFolder folder;
    const int allowed = crashIn(folder, [] {});
    ASSERT_TRUE(WIFSIGNALED(allowed));
    if (!WCOREDUMP(allowed)) GTEST_SKIP() << "this system dumps nothing anyway";
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) std::filesystem::remove(entry);
    const int forbidden = crashIn(folder, forbidCoreDumps);
    EXPECT_TRUE(WIFSIGNALED(forbidden));
    EXPECT_FALSE(WCOREDUMP(forbidden));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(ProcessLimits, FullFileSizeLimitIsAnErrorNotTheEnd) {
    const testing::TemporaryFolder folder;
    const pid_t program = ::fork();
    if (program == 0) {
        prepareFileLimits();
        const rlimit nothing{};
        ::setrlimit(RLIMIT_FSIZE, &nothing);
        try {
            writeAtomically(folder / "state", "bytes");
        } catch (const std::filesystem::filesystem_error& error) {
            ::_exit(error.code() == std::errc::file_too_large ? 0 : 2);
        }
        ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace zembrastel
