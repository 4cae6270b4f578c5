#include "platform/private_folder.h"

#include "platform/files.h"
#include "platform/standard_paths.h"
#include "platform/uuid.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr std::string_view prefix = "zembrastel-";

bool isStale(const std::filesystem::path& folder) {
    const std::string name = folder.filename().string();
    if (!name.starts_with(prefix) || !Uuid::parse(std::string_view(name).substr(prefix.size()))) return false;
    struct stat attributes {};
    if (::lstat(folder.c_str(), &attributes) != 0 || !S_ISDIR(attributes.st_mode)) return false;
    const auto modified = std::chrono::system_clock::from_time_t(attributes.st_mtim.tv_sec);
    return attributes.st_uid == ::geteuid() && std::chrono::system_clock::now() - modified > std::chrono::hours(1);
}

Folder makePrivateFolder() {
    const auto parent = Folder::openThroughLinks(temporaryFolder());
    const auto name = std::string(prefix) + Uuid::random().text();
    // The umask may have removed permissions that the owner needs.
    if (::mkdirat(parent.descriptor(), name.c_str(), S_IRWXU) != 0
        || ::fchmodat(parent.descriptor(), name.c_str(), S_IRWXU, 0) != 0) {
        throwFileError("mkdir", parent.path() / name);
    }
    try {
        auto made = parent.enter(name);
        if (!made) throwFileError("open", parent.path() / name, ENOENT);
        return std::move(*made);
    } catch (const std::filesystem::filesystem_error&) {
        (void)::unlinkat(parent.descriptor(), name.c_str(), AT_REMOVEDIR);
        throw;
    }
}

// Removes files only; the listing also has the folder itself and its parent. Uses the held descriptor, so that it works
// when no further one can be opened.
void removeFiles(const Folder& folder) {
    alignas(dirent64) std::array<char, 4096> buffer{};
    (void)::lseek(folder.descriptor(), 0, SEEK_SET);
    for (ssize_t size = 0; (size = ::getdents64(folder.descriptor(), buffer.data(), buffer.size())) > 0;) {
        for (ssize_t offset = 0; offset < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + offset);
            offset += entry->d_reclen;
            if (entry->d_type != DT_DIR) folder.remove(entry->d_name);
        }
    }
}

} // namespace

PrivateFolder::PrivateFolder() : opened(makePrivateFolder()) {}

PrivateFolder::~PrivateFolder() {
    removeFiles(opened);
    if (::rmdir(path().c_str()) == 0) return;
    std::error_code ignored;
    std::filesystem::remove_all(path(), ignored);
}

void removeStalePrivateFolders() {
    std::error_code unreadable; // another program may be removing the same things
    std::error_code ignored;
    for (std::filesystem::directory_iterator entry(temporaryFolder(), unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        if (isStale(entry->path())) std::filesystem::remove_all(entry->path(), ignored);
    }
}

} // namespace zembrastel
