#include "platform/folder.h"

#include "platform/files.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int openWithoutLinks(const std::filesystem::path& path) {
    open_how how{};
    how.flags = static_cast<std::uint64_t>(folderFlags);
    how.resolve = RESOLVE_NO_SYMLINKS;
    const long opened = ::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how);
    if (opened >= 0 || (errno != ENOSYS && errno != EPERM)) return static_cast<int>(opened);
    // Without openat2 (before Linux 5.6, or forbidden by a sandbox): component by component.
    Descriptor folder(::open("/", folderFlags));
    for (const auto& component : path.relative_path()) {
        if (!folder) return -1;
        if (component.empty()) continue;
        folder = Descriptor(::openat(folder.get(), component.c_str(), folderFlags));
    }
    return folder ? ::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0) : -1;
}

// The errors by which renameat2 reports that the file system does not support its flag.
bool isUnsupportedRename(int errorNumber) {
    return errorNumber == EINVAL || errorNumber == ENOSYS || errorNumber == EOPNOTSUPP;
}

} // namespace

Folder Folder::open(const std::filesystem::path& path) {
    Descriptor opened(openWithoutLinks(path));
    if (opened) return {std::move(opened), path};
    const int errorNumber = errno;
    // O_DIRECTORY calls a link at the end "not a directory".
    const bool link = errorNumber == ENOTDIR && std::filesystem::is_symlink(path);
    throwFileError("open", path, link ? ELOOP : errorNumber);
}

Folder Folder::openThroughLinks(const std::filesystem::path& path) {
    Descriptor opened(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) throwFileError("open", path);
    return {std::move(opened), path};
}

std::optional<Folder> Folder::enter(const std::string& name) const {
    Descriptor entered(::openat(opened.get(), name.c_str(), folderFlags));
    if (entered) return Folder(std::move(entered), place / name);
    const int errorNumber = errno;
    if (errorNumber == ENOENT) return std::nullopt;
    if (errorNumber == ENOTDIR || errorNumber == ELOOP) {
        const auto item = attributes(name);
        if (item && S_ISLNK(item->st_mode)) throwFileError("open", place / name, ELOOP);
        return std::nullopt;
    }
    throwFileError("open", place / name, errorNumber);
}

Folder Folder::enterOrMake(const std::string& name, mode_t mode) const {
    if (::mkdirat(opened.get(), name.c_str(), mode) != 0 && errno != EEXIST) {
        throwFileError("mkdir", place / name);
    }
    auto entered = enter(name);
    if (!entered) throwFileError("mkdir", place / name, ENOTDIR);
    return std::move(*entered);
}

std::optional<struct stat> Folder::attributes(const std::string& name) const {
    struct stat item {};
    if (::fstatat(opened.get(), name.c_str(), &item, AT_SYMLINK_NOFOLLOW) == 0) return item;
    if (errno == ENOENT) return std::nullopt;
    throwFileError("stat", place / name);
}

Descriptor Folder::openForReading(const std::string& name) const {
    // Not blocking: the name may now be a FIFO.
    Descriptor file(::openat(opened.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file) throwFileError("open", place / name);
    return file;
}

Descriptor Folder::create(const std::string& name, mode_t mode) const {
    Descriptor file(::openat(opened.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file) throwFileError("open", place / name);
    return file;
}

bool Folder::install(const std::string& name, const std::string& newName) const {
    if (::linkat(opened.get(), name.c_str(), opened.get(), newName.c_str(), 0) == 0) return true;
    if (errno == EEXIST) return false;
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) {
        throwFileError("link", place / newName);
    }
    // Without hard links, a rename that refuses to replace does the same.
    if (::renameat2(opened.get(), name.c_str(), opened.get(), newName.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno == EEXIST) return false;
    if (!isUnsupportedRename(errno)) throwFileError("rename", place / newName);
    return installOverPlaceholder(name, newName);
}

bool Folder::installOverPlaceholder(const std::string& name, const std::string& newName) const {
    Descriptor placeholder(::openat(
        opened.get(), newName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!placeholder && errno == EEXIST) return false;
    constexpr std::array<timespec, 2> longAgo{};
    struct stat made {};
    if (!placeholder || ::futimens(placeholder.get(), longAgo.data()) != 0 || ::fstat(placeholder.get(), &made) != 0) {
        const int errorNumber = errno;
        if (placeholder) remove(newName);
        throwFileError("open", place / newName, errorNumber);
    }
    placeholder.close(); // FUSE gives an open file that is replaced a name of its own
    const auto item = attributes(newName);
    // Recognised by its date, since some of these file systems renumber their files.
    const bool ours = item && item->st_size == 0 && item->st_mtim.tv_sec == made.st_mtim.tv_sec;
    if (!ours) return false; // a file that appeared meanwhile
    try {
        replace(name, *this, newName);
    } catch (const std::filesystem::filesystem_error&) {
        remove(newName);
        throw;
    }
    return true;
}

bool Folder::exchange(const std::string& name, const std::string& other) const {
    if (::renameat2(opened.get(), name.c_str(), opened.get(), other.c_str(), RENAME_EXCHANGE) == 0) return true;
    if (isUnsupportedRename(errno)) return false;
    throwFileError("rename", place / other);
}

void Folder::replace(const std::string& name, const Folder& target, const std::string& newName) const {
    if (::renameat(opened.get(), name.c_str(), target.opened.get(), newName.c_str()) != 0) {
        throwFileError("rename", target.place / newName);
    }
}

Mount Folder::mount() const {
    constexpr unsigned idNeverUsedAgain = 0x4000; // STATX_MNT_ID_UNIQUE, which older headers lack
    struct statx attributes {};
    if (::statx(descriptor(), "", AT_EMPTY_PATH, STATX_MNT_ID | idNeverUsedAgain, &attributes) != 0) {
        throwFileError("stat", place);
    }
    return {.mount = attributes.stx_mnt_id, .major = attributes.stx_dev_major, .minor = attributes.stx_dev_minor};
}

void Folder::remove(const std::string& name) const noexcept { ::unlinkat(opened.get(), name.c_str(), 0); }

void Folder::removeFolder(const std::string& name) const noexcept {
    ::unlinkat(opened.get(), name.c_str(), AT_REMOVEDIR);
}

} // namespace zembrastel
