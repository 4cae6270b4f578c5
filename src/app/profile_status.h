// What a profile shows of itself: its status, its counters, its log.
//
// Values; owned by the model, read on the main context.
#pragma once

#include "platform/uuid.h"
#include "sync/transfer_progress.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace zembrastel {

struct Activity {
    Uuid id = Uuid::random();
    std::chrono::system_clock::time_point date;
    std::string text;
    bool error = false;
};

struct ProfileStatus {
    static constexpr std::size_t mostActivities = 150;

    std::string title = "Paused";
    std::string detail = "Changes will wait until you start watching.";
    bool active = false;
    bool failed = false;
    // None of the synchronised files was found: the profile waits for them, or for AppModel::forgetMissingFiles().
    bool filesMissing = false;
    std::int64_t uploaded = 0; // files, since launch
    std::int64_t pending = 0;  // files
    std::optional<std::chrono::system_clock::time_point> lastUpload;
    std::deque<Activity> activity; // newest first, at most mostActivities
    // Of work under this title that takes longer than a moment.
    std::optional<TransferProgress> progress;
};

} // namespace zembrastel
