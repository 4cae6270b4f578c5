#include "model/fingerprint.h"

#include "platform/files.h"
#include "platform/folder.h"

#include <cerrno>
#include <sys/stat.h>

namespace zembrastel {

Fingerprint Fingerprint::read(const std::filesystem::path& file) {
    const auto parent = file.parent_path();
    const Folder folder = Folder::openThroughLinks(parent.empty() ? "." : parent);
    const auto attributes = folder.attributes(file.filename());
    if (!attributes) throwFileError("stat", file, ENOENT);
    return of(folder, *attributes);
}

Fingerprint Fingerprint::of(const Folder& folder, const struct stat& attributes) {
    return of(inodeNumbersAt(folder.descriptor()), attributes);
}

Fingerprint Fingerprint::of(InodeNumbers numbers, const struct stat& attributes) {
    constexpr double nanosecond = 1e-9;
    return {
        .size = attributes.st_size,
        .modified = static_cast<double>(attributes.st_mtim.tv_sec)
                    + static_cast<double>(attributes.st_mtim.tv_nsec) * nanosecond,
        .inode = numbers == InodeNumbers::lasting ? attributes.st_ino : 0};
}

} // namespace zembrastel
