#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/remote_url.h"

#include <cerrno>
#include <sys/stat.h>

namespace zembrastel {
namespace {

// Copies the file to the open, empty file `staged`. False when what was copied is not, or no longer, the version of
// this fingerprint.
bool stageVersion(
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

std::vector<TransferOption> uploadOptions(const std::string& temporary, const std::string& name) {
    // The renames are sent in the file's own remote folder once the transfer is complete, and only then.
    return {
        {"ftp-create-dirs"},
        {"upload-file", ChildProcess::filePath},
        {"quote", "-RNFR " + temporary},
        {"quote", "-RNTO " + name}};
}

void FTPTransport::upload(const std::string& path, const Fingerprint& fingerprint) const {
    auto pieces = splitNonEmpty(path, '/');
    if (pieces.empty() || !validName(pieces.back())) throw SyncError("Invalid filename.");
    const std::string name(pieces.back());
    const auto local = LocalPlace::resolve(profile.localFolder, path);
    if (local.fingerprint() != fingerprint) {
        throw SyncError("File changed before uploading; it will be retried.");
    }
    const PrivateFolder staging;
    const Descriptor staged = staging.folder().create("upload", S_IRUSR | S_IWUSR);
    if (!stageVersion(local, fingerprint, staged.get(), staging.path(), *control)) {
        throw SyncError("File changed while preparing the upload; it will be retried.");
    }
    const std::string temporary = temporaryName();
    pieces.back() = temporary;
    if (observer != nullptr) observer->fileBegins(path, static_cast<std::uint64_t>(fingerprint.size));
    run(join(pieces, '/'), false, uploadOptions(temporary, name), staged.get(),
        [](const ChildProcess& curl) { return curl.filePosition(); });
}

} // namespace zembrastel
