#include "transport/staged_copy.h"

#include "model/error.h"
#include "platform/files.h"
#include "transport/local_place.h"

#include <cerrno>
#include <sys/stat.h>

namespace zembrastel {
namespace {

// False when what was copied is not, or no longer, that version.
bool copyVersion(
    const LocalPlace& source, const Fingerprint& version, int staged, const std::filesystem::path& stagingFolder,
    const TransferControl& control) {
    const Descriptor from = source.parent->openForReading(source.name);
    struct stat opened {};
    if (::fstat(from.get(), &opened) != 0) throwFileError("stat", source.url);
    if (Fingerprint::of(*source.parent, opened) != version) return false;
    try {
        copyContents(from.get(), staged, source.url, [&control] { control.check(); });
    } catch (const std::filesystem::filesystem_error& error) {
        // It is not the disk of the original that is full.
        const int reason = error.code().value();
        if (reason == ENOSPC || reason == EDQUOT) throwFileError("copy", stagingFolder, reason);
        throw;
    }
    return source.fingerprint() == version;
}

} // namespace

Descriptor stageCopy(
    const std::string& localFolder, const std::string& path, const Fingerprint& version, const PrivateFolder& staging,
    const std::string& name, const TransferControl& control) {
    const auto local = LocalPlace::resolve(localFolder, path);
    if (local.fingerprint() != version) {
        throw SyncError("File changed before uploading; it will be retried.");
    }
    Descriptor staged = staging.folder().create(name, S_IRUSR | S_IWUSR);
    if (!copyVersion(local, version, staged.get(), staging.path(), control)) {
        throw SyncError("File changed while preparing the upload; it will be retried.");
    }
    return staged;
}

} // namespace zembrastel
