// The input and the result of a comparison of the local folder with the server.
//
// Values; any thread.
#pragma once

#include "model/fingerprint.h"
#include "model/records/publish_journal.h"
#include "model/server_version.h"
#include "platform/content_hash.h"
#include "transport/compare/first_comparison.h"
#include "transport/compare/remote_change.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zembrastel {

// The records about a profile's files.
struct ServerRecord {
    FileMap baseline = {};       // each local file as last uploaded or downloaded
    RemoteDates knownDates = {}; // the server's dates, recorded with uploads and decisions
    // True if the server was compared before. Then a file without a record that exists on both sides appeared on the
    // server since. In the first comparison, the newer side of such a file counts.
    bool wasCompared = false;
    // Versions of the server's files that this program uploaded, or that the user decided about, perhaps not yet saved.
    AnnouncedFiles announced = {};
    // Files that were offered before and not decided about, and files that an upload did not replace because the
    // server's version was not the one last seen. They are offered even if the rules do not require it.
    std::set<std::string, std::less<>> unanswered = {};
    // The files among them that an upload did not replace: the local file changed too, whatever the baseline shows.
    std::set<std::string, std::less<>> disputed = {};
    // True if all files are sent again: no file counts as published before its contents were compared.
    bool compareAll = false;
    // Files that the first comparison found newer on the server. No earlier version is known, so they do not count as
    // edited on both sides.
    std::set<std::string, std::less<>> newerAtFirst = {};
    // Contents that were compared before the user chose; see ServerCheck::first.
    ComparedContents compared = {};

    // True if nothing is known of the files: the profile was never published.
    [[nodiscard]] bool isFirst() const { return !wasCompared && !compareAll && baseline.empty() && knownDates.empty(); }
};

struct ServerCheck {
    // The local files whose server version the user must decide about.
    std::vector<RemoteChange> changes = {};
    // The version that each file with a local counterpart has on the server.
    ServerVersions seen = {};
    // Facts to record without asking the user: local files that the server has in the same version although that was
    // not recorded (own uploads before a kill, and equal contents), and dates that the server reports differently since
    // its clock or time zone changed. There are more dates than files.
    AnnouncedFiles recognised = {};
    // Of those among them whose contents were compared.
    ContentHashes hashes = {};
    // Published files, locally unchanged since, that the server confirmed to be absent.
    std::set<std::string, std::less<>> missing = {};
    // With compareAll: published files, locally unchanged since, that are sent again. The server lacks them, or it has
    // their recorded version and the contents are not known to be equal.
    std::set<std::string, std::less<>> toSend = {};
    // In the first comparison, if the server has files with the same names and sizes as here: the user chooses what
    // they count as before anything is recorded or uploaded. Such files are not among the changes.
    std::optional<FirstComparison> first = std::nullopt;
};

} // namespace zembrastel
