#include "platform/descriptor.h"
#include "platform/file_attributes.h"
#include "support/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace zembrastel {
namespace {

TEST(OpenWriter, FileOpenOrMappedForWritingIsFound) {
    const testing::TemporaryFolder folder;
    const auto path = folder.path() / "page.html";
    Descriptor writer(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(::write(writer.get(), "half", 4), 4);
    const Descriptor reader(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_TRUE(hasOpenWriter(reader.get()));

    void* const mapped = ::mmap(nullptr, 4, PROT_READ | PROT_WRITE, MAP_SHARED, writer.get(), 0);
    ASSERT_NE(mapped, MAP_FAILED);
    writer = Descriptor();
    EXPECT_TRUE(hasOpenWriter(reader.get()));

    ::munmap(mapped, 4);
    EXPECT_FALSE(hasOpenWriter(reader.get()));
    const Descriptor next(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_GE(next.get(), 0) << "the lease was not given back";
}

} // namespace
} // namespace zembrastel
