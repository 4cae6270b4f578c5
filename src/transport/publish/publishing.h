// Sends files to the server and puts them in the place of the live ones, many with one login.
//
// First each file is sent under a temporary name. Then the server says what it has under that name and under the
// file's own. Only copies of which it confirmed every byte go live, and only where the live file is the one last seen;
// all of a batch are renamed within milliseconds. A server that confirms no sizes is trusted, and that is reported.
//
// Blocks its thread, on which all calls of the events are made; these may throw, which ends the work and is passed on.
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
        file,  // others may well be published
        server // the connection, the login or the server: the work ends with it
    };
    Kind kind = Kind::file;
    std::string message{}; // for the user
};

// A file of which the server has a complete copy.
struct CompleteCopy {
    const FileToPublish& file;
    std::optional<ServerVersion> version; // nothing where the server gives no dates
};

// Each file that was begun ends in one of `published`, `failed` and `notReplaced`, except when the work ends early.
struct PublishEvents {
    // The file is now being sent. It may come again, when it has to be sent again.
    std::function<void(const FileToPublish&)> sending = {};

    // These are about to go live. A rename keeps dates, so these are the versions that the server has from now on.
    std::function<void(const std::vector<CompleteCopy>&)> goingLive = {};

    std::function<void(const CompleteCopy&)> published = {};

    std::function<void(const FileToPublish&, const PublishFailure&)> failed = {};

    // The server's file is another one than the one last seen. It was left as it is; this is what the server says of
    // it, as far as it does.
    std::function<void(const FileToPublish&, const std::optional<ServerVersion>& found)> notReplaced = {};

    // Once for a server while the program runs: it does not say how large files are, so uploads cannot be checked.
    std::function<void()> sizesUnconfirmed = {};
};

// Publishes the files in their order, in batches. True when each of them has come to an end of its own; false when a
// failure of the server ended the work, of which one file was told: those after it may not have been tried.
//
// Throws Cancelled when the control is stopped; a step that puts files in place is finished first, for a second at
// most. Also throws the system's errors where this machine cannot stage or start anything. Temporary files that
// could not be removed are removed in a later call: see ServerTraits.
bool publish(const FTPTransport& transport, const std::vector<FileToPublish>& files, const PublishEvents& events);

} // namespace zembrastel
