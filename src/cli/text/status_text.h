// The status of a profile, for a user and for programs.
#pragma once

#include "app/control/control_messages.h"
#include "app/profile_status.h"
#include "cli/terminal/json_line.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::cli {

// The members of a status that the "status" events of all commands share.
void addStatusFields(JsonLine& object, const ProfileStatus& status);

// "My website  Watching" and the details, a line each.
[[nodiscard]] std::vector<std::string> statusLines(const answer::Status& answer);

// The status and the line with the explanation of their failure instead of its words, if it is known.
[[nodiscard]] ProfileStatus explained(ProfileStatus status, const Profile& profile);
[[nodiscard]] Activity explained(Activity activity, const Profile& profile);

// Decides which events of a profile deserve a line for the user.
//
// The model repeats a status at every poll and reports a failure twice, as status and as activity. This lets each pass
// once. A value for one profile; used on the main context alone.
class Narration {
public:
    // "Uploading: index.html (2 pending)". Nullopt if the user knows it already.
    [[nodiscard]] std::optional<std::string> status(const ProfileStatus& status);

    // "Uploaded index.html", "error: curl: (7) ...". Nullopt if the line before said the same.
    [[nodiscard]] std::optional<std::string> activity(const Activity& activity);

private:
    std::string title;
    std::string detail;
    std::int64_t pending = 0;
    // What the latest event printed: the failure of an activity, or the whole detail of a status. Else empty.
    std::string justFailed;
    std::string justDetailed;
};

} // namespace zembrastel::cli
