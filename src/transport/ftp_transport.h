// Every conversation with a server: one value for one profile and one job, and its operations.
//
// Each operation is one or more runs of curl, one after another, and blocks its thread until they end; none belongs on
// the main context. Transports may share a control: cancelling it ends whatever runs under it, and every operation then
// fails with Cancelled. All other failures are SyncErrors, curl's own words among them, or the system's errors
// (std::filesystem::filesystem_error) passed on unchanged. No failure leaves a torn file on either side.
//
// Paths are relative, "/" between components, the same below the local and the remote folder; "" is the folder itself.
#pragma once

#include "model/fingerprint.h"
#include "model/name_fault.h"
#include "model/private_items.h"
#include "model/profile.h"
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

// One run of curl with all that was said in it, for finding out what is wrong with a server.
struct Transcript {
    bool succeeded = false;
    bool connected = false; // a server answered at the host's port
    CurlCode code = CurlCode::ok;
    std::string output{};               // what curl wrote to its standard output, where it succeeded
    std::string failure{};              // curl's own words; empty where it succeeded
    std::vector<std::string> replies{}; // the server's lines, in their order
};

struct FTPTransport {
    using Report = std::function<void(const std::string& line)>;
    using Installed = std::function<void(const std::string& path, const Fingerprint& fingerprint)>;

    Profile profile;
    std::string password;
    std::shared_ptr<TransferControl> control;
    TransferObserver* observer = nullptr;    // borrowed; nothing is looked at for nobody
    std::vector<PrivateItem> privateItems{}; // neither compared with the server's nor replaced by them
    std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>(); // of the profile's server
    UploadLimits limits{};

    // Tells how many bytes of a local file curl has read or written.
    using Position = std::function<std::optional<std::uint64_t>(const ChildProcess& curl)>;

    // One run of curl, a conversation of one block: the options that every operation has, then `options`. Returns what
    // curl wrote to its standard output. The one local file that curl may read or write is the open `localFile`, which
    // the options call ChildProcess::filePath: curl is given no path of the local side, so nobody can put a link into
    // one. What `position` tells goes to the observer. A file that would become longer than `maxWritten` fails the
    // run.
    std::string run(
        std::string_view path, bool directory, const std::vector<TransferOption>& options, int localFile = -1,
        const Position& position = {}, std::optional<std::uint64_t> maxWritten = std::nullopt) const;

    // The same run, with all that was said in it. A failure is part of the transcript and not thrown.
    [[nodiscard]] Transcript transcribe(
        std::string_view path, bool directory, std::vector<TransferOption> options, int localFile = -1) const;

    // The entries of one remote folder, in the server's order: those of MLSD that LIST shows as well, with MLSD's
    // dates, or where the server has no MLSD those of LIST, without dates. Each name once. How listings that were cut
    // are recognised, and how many folders are listed with one login: see remote_queries.h.
    [[nodiscard]] std::vector<RemoteEntry> list(std::string_view path) const;

    // Gives entries of this folder the name of the local item that they are alike to (alike_names.h), if the server
    // finds its own item under that name. Then an upload of the local item would replace it.
    void nameAsLocal(
        std::string_view path, std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local) const;

    // As list(); nothing where the server has no such folder.
    [[nodiscard]] std::optional<std::vector<RemoteEntry>> listIfThere(std::string_view path) const;

    // Has the server a file that it finds under this very path, however it spells the name in its listing?
    [[nodiscard]] bool hasFile(std::string_view path) const;

    // The server's modification date of one file; never a guess.
    [[nodiscard]] RemoteDate modificationDate(std::string_view path) const;

    // What the server tells of one file: the date as above, and the size, where it tells that.
    struct FileFacts {
        RemoteDate modified;
        std::optional<std::uint64_t> size = std::nullopt;
    };
    [[nodiscard]] FileFacts facts(std::string_view path) const;

    // The size of one file in bytes, as the server tells it now; nothing where it does not.
    [[nodiscard]] std::optional<std::uint64_t> size(std::string_view path) const;

    // The version of one file, also of one that listings hide. Nullopt where it is not there, or the server does not
    // report its date.
    [[nodiscard]] std::optional<ServerVersion> findVersion(std::string_view path) const;

    // The number of entries in the profile's remote folder. Reads only.
    [[nodiscard]] std::size_t test() const;

    // Sends the version of the local file that has this fingerprint and puts it in the place of the live one, whatever
    // that is: see publishing.h. Missing remote folders are made. A failure at any moment leaves the live file as it
    // was; a temporary file may stay on the server, until a later upload removes it.
    void upload(const std::string& path, const Fingerprint& fingerprint) const;

    // Where the file or folder of this path is, or would be. Throws SyncError when the path is not safe or a symbolic
    // link stands anywhere on the way.
    [[nodiscard]] std::filesystem::path safeLocalURL(std::string_view path) const;

    // The initial download of the chosen contents below `path`, which is `depth` levels below the remote folder.
    // Installs what is missing locally and replaces, with a backup, what is older than the server's; keeps all else.
    // What no local file can be made of is left out: names that cannot be transferred, folders that are too deep or
    // lead back to one above them; and what would come to stand in the place of a private item, or inside one. A local
    // item is the server's if the server finds its own under the local name. `report` gets a line for each step,
    // `installed` each file written: both are called on this thread.
    void downloadTree(const std::string& path, int depth, const Report& report, const Installed& installed) const;

    // Replaces local files by the server's newer versions, with the old ones as backups under .zembrastel-backups: many
    // with one login, each as soon as it is there. One of which either side changed or vanished since the comparison is
    // left as it was and refused; any other failure ends the call. Both are called on this thread, once for each file.
    struct ReplaceEvents {
        std::function<void(const RemoteChange& change, const Fingerprint& installed)> replaced;
        std::function<void(const RemoteChange& change, const ChangedMeanwhile& refusal)> refused;
    };
    void replaceLocal(const std::vector<RemoteChange>& changes, const ReplaceEvents& events) const;

    // The same for one file: returns the new local fingerprint, or throws ChangedMeanwhile.
    Fingerprint replaceLocal(const RemoteChange& change) const;

    // Compares the scanned local files with the server and changes nothing on either side: see ServerCheck. Its changes
    // are ordered as a file manager would order them. Paths are those of the local files, also where the server's
    // listing has another spelling of the name. `report` gets a line for each folder. Fetches at most 32 MB, to compare
    // contents.
    [[nodiscard]] ServerCheck newerRemoteFiles(const ServerRecord& recorded, const Report& report) const;

    // Has the server's file the bytes of the local file, which has this fingerprint? False as well when the local file
    // changed meanwhile. Fetches the file.
    [[nodiscard]] bool hasContentsOf(const std::string& path, const Fingerprint& local) const;
};

// Throws the SyncError for a folder `depth` levels below the remote one, when that is too deep.
void checkFolderDepth(int depth);

} // namespace zembrastel
