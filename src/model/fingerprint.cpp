#include "model/fingerprint.h"

#include <cerrno>
#include <sys/stat.h>
#include <system_error>

namespace zembrastel {

Fingerprint Fingerprint::read(const std::filesystem::path& file) {
    struct stat attributes {};
    if (lstat(file.c_str(), &attributes) != 0) {
        throw std::filesystem::filesystem_error("lstat", file, std::error_code(errno, std::system_category()));
    }
    return of(attributes);
}

Fingerprint Fingerprint::of(const struct stat& attributes) {
    constexpr double nanosecond = 1e-9;
    return {
        .size = attributes.st_size,
        .modified = static_cast<double>(attributes.st_mtim.tv_sec)
                    + static_cast<double>(attributes.st_mtim.tv_nsec) * nanosecond,
        .inode = attributes.st_ino};
}

} // namespace zembrastel
