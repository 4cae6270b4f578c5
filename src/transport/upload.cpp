#include "model/error.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/remote_url.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

// Copies the file to `staged`. False when what was copied is not, or no longer, the version of this fingerprint.
bool stageVersion(
    const LocalPlace& source, const Fingerprint& version, const std::filesystem::path& staged,
    const TransferControl& control) {
    const Descriptor from = source.parent->openForReading(source.name);
    const Descriptor to(::open(staged.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!to) throwFileError("open", staged);
    struct stat opened {};
    if (::fstat(from.get(), &opened) != 0) throwFileError("stat", source.url);
    if (Fingerprint::of(opened) != version) return false;
    copyContents(from.get(), to.get(), source.url, [&control] { control.check(); });
    return source.fingerprint() == version;
}

} // namespace

void FTPTransport::upload(const std::string& path, const Fingerprint& fingerprint) const {
    auto pieces = splitNonEmpty(path, '/');
    if (pieces.empty() || !validName(pieces.back())) throw SyncError("Invalid filename.");
    const std::string name(pieces.back());
    const auto local = LocalPlace::resolve(profile.localFolder, path);
    if (local.fingerprint() != fingerprint) {
        throw SyncError("File changed before uploading; it will be retried.");
    }
    const PrivateFolder staging;
    const auto staged = staging.path() / "upload";
    if (!stageVersion(local, fingerprint, staged, *control)) {
        throw SyncError("File changed while preparing the upload; it will be retried.");
    }
    const std::string temporary = temporaryName();
    pieces.back() = temporary;
    // The renames are sent in the file's own remote folder once the transfer is complete, and only then.
    run(join(pieces, '/'), false,
        {{"ftp-create-dirs"},
         {"upload-file", staged.string()},
         {"quote", "-RNFR " + temporary},
         {"quote", "-RNTO " + name}});
}

} // namespace zembrastel
