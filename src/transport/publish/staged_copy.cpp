#include "transport/publish/staged_copy.h"

#include "model/error.h"
#include "platform/files.h"
#include "platform/text.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::uint64_t megabyte = std::uint64_t{1} << 20;

// Smaller ones are copied as quickly.
constexpr std::uint64_t worthSharing = megabyte;

// ext4 spends a quarter of the program's time in a batch of small files on new inodes, since it searches for one that
// was not deleted lately.
constexpr std::uint64_t largestInMemory = std::uint64_t{64} << 10;

// What a staging folder keeps free, for other uploads and other programs.
constexpr std::uint64_t roomLeft = 64 * megabyte;

// A nameless file that shares the blocks of the original. Not open where the file system has no such thing.
Descriptor shareBlocks(int from, const LocalPlace& source) {
    Descriptor copy(::openat(source.parent->descriptor(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (copy && ::ioctl(copy.get(), FICLONE, from) != 0) copy.close();
    return copy;
}

std::string inMegabytes(std::uint64_t bytes) { return std::to_string(bytes / megabyte) + " MB"; }

void requireRoom(const std::string& path, std::uint64_t size, const PrivateFolder& staging) {
    struct statvfs system {};
    if (size < roomLeft || ::fstatvfs(staging.folder().descriptor(), &system) != 0) return;
    const std::uint64_t room = static_cast<std::uint64_t>(system.f_bavail) * system.f_frsize;
    if (room >= size + roomLeft) return;
    const std::string folder = printable(staging.path().parent_path().string());
    throw SyncError(
        "There is no room for a copy of " + printable(path) + " to upload from: it has " + inMegabytes(size) + ", and "
        + folder + " has " + inMegabytes(room) + " free. Free some space there, or start Zembrastel with TMPDIR set to "
        + "a folder with more. The other files are not affected.");
}

// Where the bytes of a copy go.
Descriptor newCopy(std::uint64_t size, const PrivateFolder& staging, const std::string& name, CopyPlace place) {
    if (place == CopyPlace::memoryIfSmall && size <= largestInMemory) {
        if (Descriptor inMemory{::memfd_create("upload", MFD_CLOEXEC)}) return inMemory;
    }
    return staging.folder().create(name, S_IRUSR | S_IWUSR);
}

Descriptor openCopy(
    const LocalPlace& source, int from, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control, CopyPlace place) {
    const auto size = static_cast<std::uint64_t>(version.size);
    if (size >= worthSharing) {
        if (Descriptor shared = shareBlocks(from, source)) return shared;
    }
    requireRoom(source.path, size, staging);
    Descriptor staged = newCopy(size, staging, name, place);
    try {
        copyContents(from, staged.get(), source.url, [&control] { control.check(); });
    } catch (const std::filesystem::filesystem_error& error) {
        // It is not the disk of the original that is full.
        const int reason = error.code().value();
        if (reason == ENOSPC || reason == EDQUOT) throwFileError("copy", staging.path(), reason);
        throw;
    }
    return staged;
}

// Reads up to a megabyte of the bytes from `begin` to `end`.
std::size_t readPiece(int file, std::uint64_t begin, std::uint64_t end, std::vector<char>& buffer) {
    buffer.resize(static_cast<std::size_t>(std::min(megabyte, end - begin)));
    const ssize_t size = ::pread(file, buffer.data(), buffer.size(), static_cast<off_t>(begin));
    if (size < 0) throwFileError("read", "a staged copy");
    buffer.resize(static_cast<std::size_t>(size));
    return buffer.size();
}

} // namespace

Descriptor stageCopy(
    const std::string& localFolder, const std::string& path, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control, CopyPlace place) {
    const auto local = LocalPlace::resolve(localFolder, path);
    if (local.fingerprint() != version) {
        throw SyncError("File changed before uploading; it will be retried.");
    }
    const Descriptor from = local.parent->openForReading(local.name);
    struct stat opened {};
    if (::fstat(from.get(), &opened) != 0) throwFileError("stat", local.url);
    if (Fingerprint::of(*local.parent, opened) == version) {
        Descriptor staged = openCopy(local, from.get(), version, staging, name, control, place);
        if (local.fingerprint() == version) return staged;
    }
    throw SyncError("File changed while preparing the upload; it will be retried.");
}

Descriptor stagePart(
    int copy, std::uint64_t begin, std::uint64_t length, const PrivateFolder& staging, const std::string& name) {
    staging.folder().remove(name);
    Descriptor part = staging.folder().create(name, S_IRUSR | S_IWUSR);
    std::vector<char> buffer;
    for (std::uint64_t at = begin; at < begin + length; at += buffer.size()) {
        if (readPiece(copy, at, begin + length, buffer) == 0) throwFileError("read", staging.path() / name, EIO);
        for (std::size_t done = 0; done < buffer.size();) {
            const ssize_t size = ::write(part.get(), buffer.data() + done, buffer.size() - done);
            if (size < 0) throwFileError("write", staging.path() / name);
            done += static_cast<std::size_t>(size);
        }
    }
    return part;
}

bool isPartOf(int copy, std::uint64_t begin, std::uint64_t length, int part) {
    struct stat attributes {};
    if (::fstat(part, &attributes) != 0) throwFileError("stat", "a part of an upload");
    if (static_cast<std::uint64_t>(attributes.st_size) != length) return false;
    std::vector<char> ours;
    std::vector<char> theirs;
    for (std::uint64_t at = 0; at < length; at += ours.size()) {
        if (readPiece(copy, begin + at, begin + length, ours) == 0) return false;
        if (readPiece(part, at, at + ours.size(), theirs) != ours.size() || ours != theirs) return false;
    }
    return true;
}

} // namespace zembrastel
