// The operations on a server: one value for one profile and one job.
//
// Each operation is one or more runs of curl, one after another, and blocks its thread until they end; call none on the
// main context. Transports may share a control: cancelling it ends all their runs, and every operation then throws
// Cancelled. All other failures are SyncErrors, curl's messages among them, or the system's errors
// (std::filesystem::filesystem_error) passed on. No failure leaves a torn file on either side.
//
// Paths are relative, "/" between components, the same below the local and the remote folder; "" is the folder itself.
#pragma once

#include "model/fingerprint.h"
#include "model/name_fault.h"
#include "model/private_items.h"
#include "model/profile.h"
#include "platform/content_hash.h"
#include "transport/compare/remote_change.h"
#include "transport/compare/server_check.h"
#include "transport/curl/curl_configuration.h"
#include "transport/curl/transfer_error.h"
#include "transport/listing/alike_names.h"
#include "transport/listing/remote_entry.h"
#include "transport/publish/upload_limits.h"
#include "transport/server_traits.h"
#include "transport/transfer_control.h"
#include "transport/transfer_observer.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

class ChildProcess;

// The full record of one run of curl, for the diagnosis of a server.
struct Transcript {
    bool succeeded = false;
    bool connected = false; // true if the host's port accepted a connection
    CurlCode code = CurlCode::ok;
    std::string output{};               // curl's standard output; empty unless it succeeded
    std::string failure{};              // curl's message; empty if it succeeded
    std::vector<std::string> replies{}; // the server's lines, in order
};

struct FTPTransport {
    using Report = std::function<void(const std::string& line)>;
    using Installed = std::function<void(const std::string& path, const Fingerprint& fingerprint)>;

    Profile profile;
    std::string password;
    std::shared_ptr<TransferControl> control;
    TransferObserver* observer = nullptr;    // borrowed; may be null
    std::vector<PrivateItem> privateItems{}; // never compared with the server's files, nor replaced
    std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>(); // of the profile's server
    UploadLimits limits{};

    // Returns how many bytes of a local file curl has read or written.
    using Position = std::function<std::optional<std::uint64_t>(const ChildProcess& curl)>;

    // One run of curl, a conversation of one block: the common options, then `options`. Returns curl's standard output.
    // curl can read or write only one local file, the open `localFile`, which the options name ChildProcess::filePath:
    // curl gets no local path, in which another program could put a link. The observer gets the results of `position`.
    // The run fails if a file would become longer than `maxWritten`.
    std::string run(
        std::string_view path, bool directory, const std::vector<TransferOption>& options, int localFile = -1,
        const Position& position = {}, std::optional<std::uint64_t> maxWritten = std::nullopt) const;

    // The same run with its full record. A failure is part of the transcript and not thrown.
    [[nodiscard]] Transcript transcribe(
        std::string_view path, bool directory, std::vector<TransferOption> options, int localFile = -1) const;

    // The entries of one remote folder, in the server's order, each name once: the entries of MLSD that LIST shows too,
    // with MLSD's dates; or, if the server has no MLSD, the entries of LIST, without dates. remote_queries.h describes
    // how incomplete listings are recognised.
    [[nodiscard]] std::vector<RemoteEntry> list(std::string_view path) const;

    // Gives an entry of this folder the name of the local item with a similar name (alike_names.h), if the server finds
    // its own item under that name. An upload of the local item would then replace it.
    void nameAsLocal(
        std::string_view path, std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local) const;

    // As list(); nullopt if the server has no such folder.
    [[nodiscard]] std::optional<std::vector<RemoteEntry>> listIfThere(std::string_view path) const;

    // True if the server finds a file under this path, whatever name its listing shows.
    [[nodiscard]] bool hasFile(std::string_view path) const;

    // The server's modification date of one file; never a guess.
    [[nodiscard]] RemoteDate modificationDate(std::string_view path) const;

    // The server's facts of one file: the date as above, and the size if the server reports it.
    struct FileFacts {
        RemoteDate modified;
        std::optional<std::uint64_t> size = std::nullopt;
    };
    [[nodiscard]] FileFacts facts(std::string_view path) const;

    // The present size of one file in bytes; nullopt if the server does not report it.
    [[nodiscard]] std::optional<std::uint64_t> size(std::string_view path) const;

    // The version of one file, also of one that listings hide. Nullopt if it does not exist, or the server does not
    // report its date.
    [[nodiscard]] std::optional<ServerVersion> findVersion(std::string_view path) const;

    // The absolute path of the folder in which a login starts; "/" if the server does not report it. Reads only.
    [[nodiscard]] std::string loginFolder() const;

    // The number of entries in the profile's remote folder. Reads only.
    [[nodiscard]] std::size_t test() const;

    // Makes the profile's remote folder, level by level. Does nothing if it is there.
    void createFolder() const;

    // Sends the version of the local file with this fingerprint and replaces the live file by it, whatever its version:
    // see publishing.h. Makes missing remote folders. A failure at any moment leaves the live file unchanged; a
    // temporary file may stay on the server until a later upload removes it.
    void upload(const std::string& path, const Fingerprint& fingerprint) const;

    // The local path of this file or folder, whether or not it exists. Throws SyncError if the path is not safe or a
    // symbolic link is on the way.
    [[nodiscard]] std::filesystem::path safeLocalURL(std::string_view path) const;

    // The initial download of the chosen contents below `path`, which is `depth` levels below the remote folder.
    // Installs files that are missing locally, replaces files that are older than the server's, with a backup, and
    // keeps all others. Skips names that cannot be transferred, folders that are too deep or lead back to a folder
    // above them, and items whose place is a private item or inside one. A local item is the counterpart of a server
    // item if the server finds its item under the local name. `report` gets a line for each step, `installed` each
    // written file: both are called on this thread.
    void downloadTree(const std::string& path, int depth, const Report& report, const Installed& installed) const;

    // Replaces local files by the server's newer versions, many with one login, each as soon as it is fetched. The old
    // versions become backups under .zembrastel-backups. A file that changed or vanished on either side since the
    // comparison is left unchanged and refused; any other failure ends the call. One of the events is called for each
    // file, on this thread.
    struct ReplaceEvents {
        std::function<void(const RemoteChange& change, const Fingerprint& installed)> replaced;
        std::function<void(const RemoteChange& change, const ChangedMeanwhile& refusal)> refused;
    };
    void replaceLocal(const std::vector<RemoteChange>& changes, const ReplaceEvents& events) const;

    // The same for one file: returns the new local fingerprint, or throws ChangedMeanwhile.
    Fingerprint replaceLocal(const RemoteChange& change) const;

    // Compares the scanned local files with the server and changes nothing on either side: see ServerCheck. Its changes
    // are in the order of a file manager. Paths are those of the local files, also if the server's listing shows a
    // similar name. `report` gets a line for each folder. Fetches at most 32 MB, to compare contents.
    [[nodiscard]] ServerCheck newerRemoteFiles(const ServerRecord& recorded, const Report& report) const;

    // See filesWithEqualContents(). If it has a function for results, files that the server refuses have none: after
    // the others, they end the call with SyncError.
    struct FileToCompare {
        std::string path; // relative
        Fingerprint fingerprint{};
    };

    // The files of which the server has the same bytes, with the hashes of these bytes. Files that changed locally
    // meanwhile, or that the server refuses, are not among them. Fetches all of the files, many with one login, to a
    // private folder. Throws SyncError if the server fails. Calls `compared` for each file as soon as its result is
    // known, on this thread, with the hash if the contents are equal; the observer gets the transfers, but not the
    // number of files.
    using Compared = std::function<void(const FileToCompare& file, const std::optional<ContentHash>& equal)>;
    ContentHashes filesWithEqualContents(const std::vector<FileToCompare>& files, const Compared& compared = {}) const;
};

// Throws SyncError if a folder `depth` levels below the remote folder is too deep.
void checkFolderDepth(int depth);

} // namespace zembrastel
