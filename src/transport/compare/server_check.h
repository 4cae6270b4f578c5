// What a comparison of the local folder with the server begins with, and what it finds.
//
// Values; any thread.
#pragma once

#include "model/fingerprint.h"
#include "model/publish_journal.h"
#include "model/remote_date.h"
#include "model/server_version.h"
#include "transport/compare/remote_change.h"

#include <set>
#include <string>
#include <vector>

namespace zembrastel {

// What was recorded of a profile's files.
struct ServerRecord {
    FileMap baseline = {};       // each local file as last uploaded or downloaded
    RemoteDates knownDates = {}; // the server's dates that were recorded with uploads and decisions
    // Was the server compared before? Then a file of which nothing is recorded, on both sides, appeared on the server
    // since. Before that, the newer side of such a file is the right one.
    bool wasCompared = false;
    // Versions of the server's files that are this program's own uploads, or that the user has decided about, whether
    // or not that was saved.
    AnnouncedFiles announced = {};
    // Files that were offered before and not decided on, and files that an upload did not replace because the server's
    // version was not the one last seen. They are offered even where the rules would not offer them.
    std::set<std::string, std::less<>> unanswered = {};
    // Those of them that an upload did not replace: the local file changed too, whatever the baseline says.
    std::set<std::string, std::less<>> disputed = {};
    // Everything is to be sent again: no file counts as published before its contents were compared.
    bool compareAll = false;
};

struct ServerCheck {
    // The local files whose server version the user has to decide about.
    std::vector<RemoteChange> changes = {};
    // The version that each file with a local counterpart has on the server.
    ServerVersions seen = {};
    // What is to be recorded without a question: local files that the server has in the same version though that was
    // not recorded (own uploads of a program that was killed, and equal contents), and dates that the server reports
    // otherwise since its clock or time zone changed. There are more dates than files.
    AnnouncedFiles recognised = {};
    // Published files, unchanged here since, that the server does not have. Only what it confirmed to be absent.
    std::set<std::string, std::less<>> missing = {};
    // With compareAll: published files, unchanged here since, that are to be sent again. The server lacks them, or it
    // has the recorded version of them and its contents are not known to be the same.
    std::set<std::string, std::less<>> toSend = {};
};

} // namespace zembrastel
