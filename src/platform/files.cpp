#include "platform/files.h"

#include "platform/descriptor.h"
#include "platform/folder.h"
#include "platform/uuid.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

constexpr std::size_t copyPiece = std::size_t{64} << 20;
constexpr std::string_view writeSuffix = ".part";

// Lets the disk write each piece while the next one is copied to the kernel, which shortens the flush that follows.
void writeAll(int descriptor, std::string_view bytes, const std::filesystem::path& name) {
    constexpr std::size_t piece = std::size_t{2} << 20;
    off64_t begun = 0;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), std::min(bytes.size(), piece));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throwFileError("write", name);
        bytes.remove_prefix(static_cast<std::size_t>(written));
        if (!bytes.empty()) (void)::sync_file_range(descriptor, begun, written, SYNC_FILE_RANGE_WRITE);
        begun += written;
    }
}

void flushFolder(const Folder& folder) {
    // Some file systems cannot flush a folder, and need not.
    if (::fsync(folder.descriptor()) != 0 && errno != EINVAL && errno != EROFS) throwFileError("fsync", folder.path());
}

// Removes the file unless it was kept.
class TemporaryFile {
public:
    TemporaryFile(const Folder& where, std::string fileName) : folder(where), name(std::move(fileName)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (!kept) folder.remove(name);
    }
    void keep() { kept = true; }

private:
    const Folder& folder;
    const std::string name;
    bool kept = false;
};

// The errors by which copy_file_range and sendfile refuse these two files, before anything was copied.
bool meansUnsupported(int errorNumber) {
    return errorNumber == EXDEV || errorNumber == EOPNOTSUPP || errorNumber == EINVAL || errorNumber == ENOSYS
           || errorNumber == EPERM || errorNumber == EBADF;
}

ssize_t copyByReading(int from, int to) {
    std::array<char, 1 << 16> buffer{};
    const ssize_t size = ::read(from, buffer.data(), buffer.size());
    for (ssize_t done = 0; done < size;) {
        const ssize_t written = ::write(to, buffer.data() + done, static_cast<std::size_t>(size - done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return -1;
        done += written;
    }
    return size;
}

} // namespace

void throwFileError(const char* operation, const std::filesystem::path& file, int errorNumber) {
    throw std::filesystem::filesystem_error(operation, file, std::error_code(errorNumber, std::system_category()));
}

void throwFileError(const char* operation, const std::filesystem::path& file) {
    throwFileError(operation, file, errno);
}

void makePrivateFolders(const std::filesystem::path& folder) {
    if (folder.empty() || std::filesystem::is_directory(folder)) return;
    makePrivateFolders(folder.parent_path());
    if (::mkdir(folder.c_str(), S_IRWXU) == 0) {
        // The umask may have removed permissions that the owner needs.
        if (::chmod(folder.c_str(), S_IRWXU) != 0) throwFileError("chmod", folder);
        return;
    }
    const int errorNumber = errno;
    if (errorNumber == EEXIST && std::filesystem::is_directory(folder)) return; // a trailing "/", or another program
    throwFileError("mkdir", folder, errorNumber);
}

void writeAtomically(const std::filesystem::path& file, std::string_view bytes) {
    const auto folder = file.parent_path();
    writeAtomically(Folder::openThroughLinks(folder.empty() ? "." : folder), file.filename(), bytes);
}

void writeAtomically(const Folder& folder, const std::string& name, std::string_view bytes) {
    const std::string temporary = name + "." + Uuid::random().text() + std::string(writeSuffix);
    const auto path = folder.path() / temporary;
    Descriptor opened = folder.create(temporary, S_IRUSR | S_IWUSR);
    TemporaryFile guard(folder, temporary);
    // The umask may have removed permissions that the mode asks for.
    if (::fchmod(opened.get(), S_IRUSR | S_IWUSR) != 0) throwFileError("chmod", path);
    writeAll(opened.get(), bytes, path);
    if (::fsync(opened.get()) != 0) throwFileError("fsync", path);
    opened.close();
    folder.replace(temporary, folder, name);
    guard.keep();
    flushFolder(folder);
}

void removeStaleWrites(const std::filesystem::path& file) {
    const std::string prefix = file.filename().string() + ".";
    std::error_code unreadable; // a leftover that cannot be read or removed does no harm
    std::error_code ignored;
    for (std::filesystem::directory_iterator entry(file.parent_path(), unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        const std::string name = entry->path().filename().string();
        if (name.size() < prefix.size() + writeSuffix.size() || !name.starts_with(prefix)
            || !name.ends_with(writeSuffix)) {
            continue;
        }
        const std::string_view middle =
            std::string_view(name).substr(prefix.size(), name.size() - prefix.size() - writeSuffix.size());
        if (!Uuid::parse(middle)) continue;
        const auto written = std::filesystem::last_write_time(entry->path(), ignored);
        if (ignored || std::filesystem::file_time_type::clock::now() - written < std::chrono::hours(1)) continue;
        std::filesystem::remove(entry->path(), ignored);
    }
}

std::string readContents(int file, const std::filesystem::path& name) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0) throwFileError("stat", name);
    if (::lseek(file, 0, SEEK_SET) < 0 && errno != ESPIPE) throwFileError("seek", name);
    std::string bytes;
    std::size_t length = 0;
    // More than the size, so that the end is found without growing, and for parsers.
    constexpr std::size_t more = 64;
    bytes.resize(static_cast<std::size_t>(attributes.st_size) + more);
    while (true) {
        const ssize_t size = ::read(file, bytes.data() + length, bytes.size() - length);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) throwFileError("read", name);
        if (size == 0) break;
        length += static_cast<std::size_t>(size);
        if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    }
    bytes.resize(length);
    return bytes;
}

std::optional<std::string> readFile(const std::filesystem::path& file) {
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened && errno == ENOENT) return std::nullopt;
    if (!opened) throwFileError("open", file);
    return readContents(opened.get(), file);
}

void copyContents(int from, int to, const std::filesystem::path& name, const std::function<void()>& checkpoint) {
    using Copier = ssize_t (*)(int, int);
    static constexpr std::array<Copier, 3> copiers{
        [](int source, int target) { return ::copy_file_range(source, nullptr, target, nullptr, copyPiece, 0); },
        [](int source, int target) { return ::sendfile(target, source, nullptr, copyPiece); },
        copyByReading,
    };
    std::size_t copier = 0;
    std::size_t copied = 0;
    std::size_t sinceCheckpoint = copyPiece;
    while (true) {
        if (sinceCheckpoint >= copyPiece) {
            checkpoint();
            sinceCheckpoint = 0;
        }
        const ssize_t size = copiers[copier](from, to);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0 && copied == 0 && copier + 1 < copiers.size() && meansUnsupported(errno)) {
            ++copier;
            continue;
        }
        if (size < 0) throwFileError("copy", name);
        if (size == 0 && copied == 0 && copier == 0) {
            // copy_file_range copies nothing from files whose size reads as 0, such as those of /proc.
            ++copier;
            continue;
        }
        if (size == 0) return;
        copied += static_cast<std::size_t>(size);
        sinceCheckpoint += static_cast<std::size_t>(size);
    }
}

std::string whyNotWritten(int file) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0 || ::pwrite(file, "", 1, attributes.st_size) == 1) return "";
    return std::system_category().message(errno);
}

} // namespace zembrastel
