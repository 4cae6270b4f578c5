// Sends files to the server and replaces the live files by them, many with one login.
//
// Each file is first sent under a temporary name. Then the server is asked about that file and the live file. Only
// copies of confirmed size go live, and only if the live file is the version last seen; all files of a batch are
// renamed within milliseconds. A server that does not report sizes is trusted, and that is reported.
//
// Blocks its thread and calls the events on it. An exception of an event ends the work and is passed on.
#pragma once

#include "model/fingerprint.h"
#include "model/server_version.h"
#include "transport/publish/publish_decision.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

struct FTPTransport;

struct FileToPublish {
    std::string path; // relative
    Fingerprint fingerprint{};
    LastSeen lastSeen = NothingKnown{};
};

struct PublishFailure {
    enum class Kind {
        file,  // other files can still be published
        server // the connection, the login or the server: it ends the work
    };
    Kind kind = Kind::file;
    std::string message{};        // for the user
    CurlCode code = CurlCode::ok; // ok for a failure that is not curl's
    FtpReply reply = FtpReply::none;
};

// A file of which the server has a complete copy.
struct CompleteCopy {
    const FileToPublish& file;
    std::optional<ServerVersion> version; // nullopt if the server gives no dates
};

// Each begun file ends in `published`, `failed` or `notReplaced`, unless the work ends early.
struct PublishEvents {
    // The private copy of the file that is going to be sent, open for reading.
    std::function<void(const FileToPublish&, int copy)> staged = {};

    // The file is being sent. Called again if the file is sent again.
    std::function<void(const FileToPublish&)> sending = {};

    // These files are about to go live. A rename keeps dates, so these are the server's versions from now on.
    std::function<void(const std::vector<CompleteCopy>&)> goingLive = {};

    std::function<void(const CompleteCopy&)> published = {};

    std::function<void(const FileToPublish&, const PublishFailure&)> failed = {};

    // The live file is not the version last seen and was not replaced. `found` is its version, if the server reports
    // it.
    std::function<void(const FileToPublish&, const std::optional<ServerVersion>& found)> notReplaced = {};

    // Once for a server while the program runs: it does not report sizes, so uploads cannot be verified.
    std::function<void()> sizesUnconfirmed = {};
};

// Publishes the files in order, in batches. True if each file was published, failed or was not replaced; false if a
// failure of the server, which was reported for one file, ended the work: the files after it may not have been tried.
//
// Throws Cancelled if the control is stopped; a running rename step is finished first, for at most a second. Also
// throws the system's errors if this machine cannot stage a file or start curl. Temporary files that could not be
// removed are removed in a later call: see ServerTraits.
bool publish(const FTPTransport& transport, const std::vector<FileToPublish>& files, const PublishEvents& events);

} // namespace zembrastel
