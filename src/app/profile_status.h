// What a profile shows of itself: its status, its counters, its log.
//
// Values; owned by the model, read on the main context.
#pragma once

#include "platform/uuid.h"
#include "sync/phase.h"
#include "sync/transfer_progress.h"
#include "transport/failure.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zembrastel {

struct Activity {
    enum class Kind { note, failure, uploaded, downloaded };

    Uuid id = Uuid::random();
    std::chrono::system_clock::time_point date;
    std::string text;
    Kind kind = Kind::note;
    std::string path = {};                         // of the file that was uploaded or downloaded
    std::optional<Failure> failure = std::nullopt; // that the line reports, if it is known

    [[nodiscard]] bool error() const { return kind == Kind::failure; }
};

struct ProfileStatus {
    static constexpr std::size_t maxActivities = 150;

    Phase phase = Phase::paused;
    std::string detail = "Changes will wait until you start watching.";
    bool unsaved = false;               // the state could not be saved since the phase began: `detail` says why
    std::int64_t uploaded = 0;          // files, since launch
    std::int64_t contentsUnchanged = 0; // files with a new date that were not sent, since launch
    std::int64_t pending = 0;           // files
    std::int64_t waiting = 0;           // files that wait until the server can be reached again
    std::optional<std::chrono::system_clock::time_point> lastUpload;
    std::deque<Activity> activity; // newest first, at most maxActivities
    // Of work in this phase that takes longer than a second.
    std::optional<TransferProgress> progress;
    // Why the phase is a failure, the end of the detail after that reason, and when the next attempt is, as far as that
    // is known.
    std::optional<Failure> failure;
    std::string outlook;
    std::optional<std::chrono::system_clock::time_point> retryAt;
    std::vector<Failure> refused; // files that could not be uploaded while the others were

    // Begins a phase, or repeats it with another detail.
    void enter(Phase next, std::string explanation) {
        if (phase != next || unsaved) progress.reset();
        phase = next;
        detail = std::move(explanation);
        unsaved = false;
        failure.reset();
        outlook.clear();
        retryAt.reset();
        waiting = 0;
        if (next < Phase::watching) refused.clear(); // they are the worker's
    }

    // Reports that the state could not be saved, until the next phase is entered.
    void reportUnsaved(std::string problem) {
        if (!unsaved) progress.reset();
        unsaved = true;
        detail = std::move(problem);
    }

    [[nodiscard]] std::string title() const { return unsaved ? attentionTitle : factsOf(phase).title; }
    [[nodiscard]] bool active() const { return factsOf(phase).active; }
    [[nodiscard]] bool failed() const { return factsOf(phase).failed; }
    [[nodiscard]] bool working() const { return !unsaved && factsOf(phase).working; }
    // None of the synchronised files was found: the profile waits for them, or for AppModel::forgetMissingFiles().
    [[nodiscard]] bool filesMissing() const { return !unsaved && phase == Phase::filesMissing; }
};

} // namespace zembrastel
