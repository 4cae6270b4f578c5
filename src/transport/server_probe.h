// Looks at a server step by step, by the same ways as all transfers go, and notes what is seen. What it means is for
// others to say: see app/diagnosis/diagnosis.h.
//
// Blocks its thread. Throws Cancelled, and the system's errors of this machine; whatever the server does is an
// observation.
#pragma once

#include "platform/clock.h"
#include "transport/ftp_transport.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

struct SeenListing {
    Transcript answer;
    std::optional<std::vector<RemoteEntry>> entries = std::nullopt; // nothing when it failed or cannot be read
};

struct SeenDate {
    std::string path;
    Transcript answer;
    std::optional<RemoteDate> date = std::nullopt;
};

// Of a test file that was uploaded, renamed, uploaded again over itself, and deleted.
struct SeenUpload {
    std::chrono::system_clock::time_point at;           // when the first upload had ended
    std::string name;                                   // of the test file
    Transcript first;                                   // under a temporary name, then renamed
    std::optional<Transcript> second = std::nullopt;    // the same over what is there; only after a first
    std::optional<Transcript> plainName = std::nullopt; // without a leading dot; only when the first was refused
    std::optional<SeenDate> date = std::nullopt;        // of the test file
    std::optional<bool> listed = std::nullopt;          // did LIST show it?
    std::vector<std::string> left = {};                 // what could not be deleted, in the remote folder
};

struct ServerObservations {
    std::chrono::system_clock::time_point at;
    SeenListing mlsd;
    // What follows is nothing where it was not come to.
    std::optional<SeenListing> list = std::nullopt;
    std::optional<SeenListing> listAll = std::nullopt; // "LIST -a"; only where there is no MLSD
    std::optional<SeenDate> date = std::nullopt;       // of a file in the remote folder
    std::optional<SeenUpload> upload = std::nullopt;
};

// Reads only, unless `write` says to upload a test file, which is deleted again. `report` gets a line before each step.
[[nodiscard]] ServerObservations probeServer(
    const FTPTransport& transport, bool write, const Clock& clock, const FTPTransport::Report& report);

} // namespace zembrastel
