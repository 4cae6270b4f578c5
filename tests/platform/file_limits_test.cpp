#include "platform/file_limits.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zembrastel {
namespace {

TEST(FileLimits, FileThatMayNotGrowIsAnErrorAndNotTheEnd) {
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
