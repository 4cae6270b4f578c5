// What of a profile's events is worth a line for a person who watches it.
//
// The model repeats a status at every poll and tells a failure twice, as status and as activity. This keeps each once.
// A value for one profile; used on the main context alone.
#pragma once

#include "app/profile_status.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zembrastel::cli {

class Narration {
public:
    // "Uploading: index.html (2 pending)". Nothing when the reader knows it already.
    [[nodiscard]] std::optional<std::string> status(const ProfileStatus& status);

    // "Uploaded index.html", "error: curl: (7) ...". Nothing when the line before said the same.
    [[nodiscard]] std::optional<std::string> activity(const Activity& activity);

private:
    std::string title;
    std::string detail;
    std::int64_t pending = 0;
    // What the latest event told, if it told something: the failure of an activity, or the whole detail of a status.
    std::string justFailed;
    std::string justDetailed;
};

} // namespace zembrastel::cli
