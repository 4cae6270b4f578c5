#include "platform/inode_numbers.h"

#include <linux/magic.h>
#include <sys/vfs.h>

namespace zembrastel {
namespace {

// Not in every version of the kernel's header.
constexpr std::int64_t exfat = 0x2011BAB0;
constexpr std::int64_t fuse = 0x65735546;
constexpr std::int64_t virtualBoxFolder = 0x786F4256;

} // namespace

InodeNumbers inodeNumbersOf(std::int64_t fileSystemType) {
    switch (fileSystemType) {
    case MSDOS_SUPER_MAGIC:
    case exfat:
    case fuse:
    case virtualBoxFolder:
        return InodeNumbers::passing;
    default:
        return InodeNumbers::lasting;
    }
}

InodeNumbers inodeNumbersAt(int descriptor) {
    struct statfs found {};
    return ::fstatfs(descriptor, &found) == 0 ? inodeNumbersOf(found.f_type) : InodeNumbers::lasting;
}

} // namespace zembrastel
