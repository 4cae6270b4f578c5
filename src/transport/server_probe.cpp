#include "transport/server_probe.h"

#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "platform/text.h"
#include "platform/uuid.h"
#include "platform/wake_signals.h"
#include "transport/listing/listing_parsers.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace zembrastel {
namespace {

using Parser = std::vector<RemoteEntry> (*)(std::string_view);

SeenListing listedBy(const FTPTransport& transport, const std::vector<TransferOption>& options, Parser parse) {
    SeenListing seen{.answer = transport.transcribe("", true, options)};
    if (!seen.answer.succeeded || !isValidUtf8(seen.answer.output) || isCutShort(seen.answer.output)) return seen;
    try {
        seen.entries = parse(seen.answer.output);
    } catch (const SyncError&) {
        // Recorded as a listing without entries.
    }
    return seen;
}

SeenDate dateOf(const FTPTransport& transport, const std::string& path) {
    SeenDate seen{.path = path, .answer = transport.transcribe(path, false, {{"head"}})};
    const auto& text = seen.answer.output;
    const auto value = isValidUtf8(text) ? findLastModified(text) : std::nullopt;
    if (const auto date = value ? parseHttpDate(*value) : std::nullopt) seen.date = toRemoteDate(*date);
    return seen;
}

const RemoteEntry* firstFile(const ServerObservations& seen) {
    const auto& entries = seen.mlsd.entries ? seen.mlsd.entries : seen.list->entries;
    if (!entries) return nullptr;
    const auto file = std::ranges::find(*entries, false, &RemoteEntry::directory);
    return file == entries->end() ? nullptr : &*file;
}

// True if LIST would fail too, perhaps after the same wait.
bool isOver(const Transcript& answer) {
    if (answer.succeeded) return false;
    const bool loggedIn =
        std::ranges::any_of(answer.replies, [](const auto& reply) { return reply.starts_with("230"); });
    return !loggedIn || answer.code == CurlCode::noSuchFolder || answer.code == CurlCode::timedOut;
}

// The certificate that was the reason of the failure; nullopt if it was not, or cannot be fetched.
std::optional<SeenCertificate> refusedCertificate(
    const FTPTransport& transport, const Transcript& answer, const Clock& clock) {
    if (!isOfCertificate(answer.code)) return std::nullopt;
    try {
        auto inspected = inspectCertificate(transport.profile, *transport.control, clock);
        auto names = otherNamesOf(transport.profile.host, inspected.certificate);
        return SeenCertificate{.inspected = std::move(inspected), .otherNames = std::move(names)};
    } catch (const SyncError&) {
        return std::nullopt; // the failure itself is recorded
    }
}

// Options with which curl sends the open file under the temporary name, and then renames it to `name`, replacing an
// existing file.
std::vector<TransferOption> uploadOptions(const std::string& temporary, const std::string& name) {
    // curl sends the renames in the file's remote folder, only after a complete transfer.
    return {
        {"ftp-create-dirs"},
        {"upload-file", ChildProcess::filePath},
        {"quote", "-RNFR " + temporary},
        {"quote", "-RNTO " + name}};
}

class TestUpload {
public:
    TestUpload(const FTPTransport& used, const Clock& usedClock) : transport(used), clock(usedClock) {
        constexpr std::string_view text = "A test by Zembrastel. This file may be deleted.\n";
        if (::write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throwFileError("write", staging.path());
        }
    }

    SeenUpload run(const FTPTransport::Report& report) {
        const std::string id = Uuid::random().text();
        seen.name = ".zembrastel-" + id + ".probe";
        report("Uploading a test file, which is deleted again: " + seen.name);
        seen.first = upload();
        seen.at = clock.now();
        if (seen.first.succeeded) {
            mustDelete(seen.name);
            checkUploaded(report);
        } else if (seen.first.code == CurlCode::uploadRefused) {
            const std::string plain = "zembrastel-" + id + ".probe";
            report("Uploading a test file without a dot before its name: " + plain);
            seen.plainName = transport.transcribe(plain, false, {{"upload-file", ChildProcess::filePath}}, file.get());
            if (seen.plainName->succeeded) mustDelete(plain);
        }
        report("Deleting the test file");
        for (const auto& [name, certain] : made) {
            if (!remove(name) && certain) seen.left.push_back(name);
        }
        return std::move(seen);
    }

private:
    Transcript upload() {
        const std::string temporary = temporaryName();
        auto answer = transport.transcribe(temporary, false, uploadOptions(temporary, seen.name), file.get());
        // If the rename was refused, the file is there; if the transfer failed, part of it may be.
        if (!answer.succeeded) made.emplace_back(temporary, answer.code == CurlCode::commandRefused);
        return answer;
    }

    void checkUploaded(const FTPTransport::Report& report) {
        seen.date = dateOf(transport, seen.name);
        const auto shown = listedBy(transport, {}, parseLIST);
        if (shown.entries) seen.listed = std::ranges::count(*shown.entries, seen.name, &RemoteEntry::name) > 0;
        report("Uploading the test file again, over the one that is there");
        seen.second = upload();
    }

    void mustDelete(const std::string& name) { made.emplace_back(name, true); }

    [[nodiscard]] bool remove(const std::string& name) const {
        return transport.transcribe("", true, {{"head"}, {"quote", "-DELE " + name}}).succeeded;
    }

    const FTPTransport& transport;
    const Clock& clock;
    const PrivateFolder staging;
    const Descriptor file = staging.folder().create("probe", S_IRUSR | S_IWUSR);
    SeenUpload seen;
    std::vector<std::pair<std::string, bool>> made; // by name; true if it certainly exists
};

} // namespace

ServerObservations probeServer(
    const FTPTransport& transport, bool write, const Clock& clock, const FTPTransport::Report& report) {
    report("Connecting, logging in and listing the remote folder");
    ServerObservations seen{.at = {}, .mlsd = listedBy(transport, {{"request", "MLSD"}}, parseMLSD)};
    seen.at = clock.now();
    if (isOver(seen.mlsd.answer)) {
        seen.hasNetwork = seen.mlsd.answer.connected || hasNetworkFor(transport.profile.host);
        seen.certificate = refusedCertificate(transport, seen.mlsd.answer, clock);
        return seen;
    }
    report("Listing the remote folder in the other form");
    seen.list = listedBy(transport, {}, parseLIST);
    if (!seen.mlsd.answer.succeeded && isOver(seen.list->answer)) return seen;
    if (!seen.mlsd.answer.succeeded) seen.listAll = listedBy(transport, {{"request", "LIST -a"}}, parseLIST);
    if (const auto* file = firstFile(seen)) {
        report("Asking for the date of " + file->name);
        seen.date = dateOf(transport, file->name);
    }
    if (write) seen.upload = TestUpload(transport, clock).run(report);
    return seen;
}

} // namespace zembrastel
