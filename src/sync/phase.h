// What a profile is doing, and what its status shows of that.
//
// Values and pure functions; any thread. The table is the only place that knows the titles: code compares phases.
#pragma once

#include <array>
#include <cstddef>

namespace zembrastel {

enum class Phase {
    paused,
    nothingSelected, // the sync contents are empty
    unchosen,        // an initial download is due, and nothing is chosen for it
    stopped,         // the profile could not start, or could not finish
    starting,        // the password is read
    checking,
    checkFailed,       // or the download that a review ended with
    awaitingChoice,    // what to upload of a site that is already on the server
    comparingContents, // before that choice
    awaitingReview,
    downloadingReview,
    downloading, // initially
    retryingDownload,
    lacksSelection, // the initial download ended, because nothing is chosen for it
    watching,
    queued,
    uploading,
    waitingToRetry,
    filesMissing // none of the synchronised files is there
};

struct PhaseFacts {
    Phase phase;
    const char* title;
    bool active;  // a job runs, or ran until the phase was last reported
    bool failed;  // the user has to know
    bool working; // something is done this moment, rather than waited for
};

inline constexpr const char* attentionTitle = "Needs attention";

// In the order of the enumeration.
inline constexpr std::array phaseTable{
    PhaseFacts{Phase::paused, "Paused", false, false, false},
    PhaseFacts{Phase::nothingSelected, "Nothing selected", false, false, false},
    PhaseFacts{Phase::unchosen, "Choose download contents", false, true, false},
    PhaseFacts{Phase::stopped, attentionTitle, false, true, false},
    PhaseFacts{Phase::starting, "Starting", true, false, true},
    PhaseFacts{Phase::checking, "Checking server", true, false, true},
    PhaseFacts{Phase::checkFailed, "Server check needs attention", true, true, false},
    PhaseFacts{Phase::awaitingChoice, "Choose what to upload", true, false, false},
    PhaseFacts{Phase::comparingContents, "Comparing contents", true, false, true},
    PhaseFacts{Phase::awaitingReview, "Review remote changes", true, false, false},
    PhaseFacts{Phase::downloadingReview, "Downloading server changes", true, false, true},
    PhaseFacts{Phase::downloading, "Downloading", true, false, true},
    PhaseFacts{Phase::retryingDownload, "Retrying download", true, true, false},
    PhaseFacts{Phase::lacksSelection, "Needs download selection", true, false, false},
    PhaseFacts{Phase::watching, "Watching", true, false, false},
    PhaseFacts{Phase::queued, "Changes queued", true, false, false},
    PhaseFacts{Phase::uploading, "Uploading", true, false, true},
    PhaseFacts{Phase::waitingToRetry, "Waiting to retry", true, true, false},
    PhaseFacts{Phase::filesMissing, "Waiting to retry", true, true, false},
};

[[nodiscard]] constexpr const PhaseFacts& factsOf(Phase phase) {
    return phaseTable.at(static_cast<std::size_t>(phase));
}

static_assert([] {
    for (std::size_t index = 0; index < phaseTable.size(); ++index) {
        if (phaseTable.at(index).phase != static_cast<Phase>(index)) return false;
    }
    return phaseTable.back().phase == Phase::filesMissing;
}());

} // namespace zembrastel
