#include "platform/file_attributes.h"
#include <csignal>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include "platform/files.h"

#include <cerrno>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr mode_t permissionBits = 0777;
constexpr auto accessList = "system.posix_acl_access";

// The others belong to the content, such as a signature or a capability, or to the system.
bool isKept(std::string_view name) {
    return name.starts_with("user.") || name.starts_with("system.") || name == "security.selinux";
}

// The whole result of `read`, a function like flistxattr; empty if it fails.
template <class Read>
std::string readAll(const Read& read) {
    std::string bytes;
    const ssize_t size = read(nullptr, std::size_t{0});
    if (size <= 0) return bytes;
    bytes.resize(static_cast<std::size_t>(size));
    const ssize_t got = read(bytes.data(), bytes.size());
    bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return bytes;
}

bool copyExtendedAttribute(int from, int to, const char* name) {
    const auto value = readAll([&](char* into, std::size_t size) { return ::fgetxattr(from, name, into, size); });
    return ::fsetxattr(to, name, value.data(), value.size(), 0) == 0;
}

// False when there is an access-control list that `to` does not have now.
bool copyExtendedAttributes(int from, int to) {
    bool listed = false;
    bool listKept = false;
    const auto names = readAll([&](char* into, std::size_t size) { return ::flistxattr(from, into, size); });
    for (std::size_t at = 0; at < names.size(); at += std::string_view(names.c_str() + at).size() + 1) {
        const char* name = names.c_str() + at;
        if (!isKept(name)) continue;
        const bool kept = copyExtendedAttribute(from, to, name);
        if (name != std::string_view(accessList)) continue;
        listed = true;
        listKept = kept;
    }
    // It may have inherited one from its folder.
    if (!listKept) (void)::fremovexattr(to, accessList);
    return listKept || !listed;
}

} // namespace

void copyAttributes(int from, int to, const std::filesystem::path& name) {
    struct stat source {};
    struct stat target {};
    if (::fstat(from, &source) != 0 || ::fstat(to, &target) != 0) throwFileError("stat", name);
    constexpr auto asItIs = static_cast<uid_t>(-1);
    if (source.st_uid != target.st_uid) (void)::fchown(to, source.st_uid, asItIs); // only root may
    const bool groupKept = source.st_gid == target.st_gid || ::fchown(to, asItIs, source.st_gid) == 0;
    const bool listKept = copyExtendedAttributes(from, to);
    // The list states the rights of the owning group, which is another group now.
    if (!groupKept) (void)::fremovexattr(to, accessList);
    mode_t mode = source.st_mode & permissionBits;
    if (!groupKept || !listKept) mode &= ~(S_IRWXG & ~((mode & S_IRWXO) << 3U));
    // On some file systems all files have the same bits.
    if (::fchmod(to, mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) throwFileError("chmod", name);
}

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

bool hasOpenWriter(int file) noexcept {
    // If a writer opens the file during the lease, the kernel sends this process a signal. The default, SIGIO, would
    // end the process; SIGURG is ignored.
    if (::fcntl(file, F_SETSIG, SIGURG) != 0) return false;
    if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    (void)::fcntl(file, F_SETLEASE, F_UNLCK);
    return false;
}

} // namespace zembrastel
