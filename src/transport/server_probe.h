// Tests a server step by step, with the commands of normal transfers, and records its answers. They are interpreted in
// app/diagnosis/diagnosis.h.
//
// Blocks its thread. Throws Cancelled, and the system's errors of this machine. Failures of the server are
// observations.
#pragma once

#include "platform/clock.h"
#include "transport/certificate/certificate_inspection.h"
#include "transport/ftp_transport.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

struct SeenListing {
    Transcript answer;
    std::optional<std::vector<RemoteEntry>> entries = std::nullopt; // nullopt if it failed or cannot be read
};

struct SeenDate {
    std::string path;
    Transcript answer;
    std::optional<RemoteDate> date = std::nullopt;
};

// The upload of a test file, which is renamed, uploaded again over itself, and deleted.
struct SeenUpload {
    std::chrono::system_clock::time_point at;           // end of the first upload
    std::string name;                                   // of the test file
    Transcript first;                                   // under a temporary name, then renamed
    std::optional<Transcript> second = std::nullopt;    // the same over the existing file, if the first succeeded
    std::optional<Transcript> plainName = std::nullopt; // without a leading dot, if the first was refused
    std::optional<SeenDate> date = std::nullopt;        // of the test file
    std::optional<bool> listed = std::nullopt;          // true if LIST showed it
    std::vector<std::string> left = {};                 // files in the remote folder that could not be deleted
};

struct SeenCertificate {
    InspectedCertificate inspected;
    std::vector<std::string> otherNames; // of the server, for which the certificate is
};

struct ServerObservations {
    std::chrono::system_clock::time_point at;
    SeenListing mlsd;
    bool hasNetwork = true; // false if the server was not reached and this machine had no network to reach it through
    // Nullopt for steps that were not reached.
    std::optional<SeenListing> list = std::nullopt;
    std::optional<SeenListing> listAll = std::nullopt; // "LIST -a", if the server has no MLSD
    std::optional<SeenDate> date = std::nullopt;       // of a file in the remote folder
    std::optional<SeenUpload> upload = std::nullopt;
    std::optional<SeenCertificate> certificate = std::nullopt; // if it was refused
};

// Reads only, unless `write` is true: then it uploads a test file and deletes it. `report` gets a line before each
// step.
[[nodiscard]] ServerObservations probeServer(
    const FTPTransport& transport, bool write, const Clock& clock, const FTPTransport::Report& report);

} // namespace zembrastel
