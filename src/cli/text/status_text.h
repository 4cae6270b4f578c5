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

// "My website  Watching" and the details, a line each. A failure of the profile is explained; null leaves its words.
[[nodiscard]] std::vector<std::string> statusLines(const answer::Status& answer, const Profile* profile);

// Decides which events of a profile deserve a line for the user.
//
// The model repeats a status at every poll and reports a failure twice, as status and as activity. This lets each pass
// once. A failure of the profile is explained, and curl's words follow as a second line when they are new; null leaves
// only those words. A value for one profile; used on the main context alone.
class Narration {
public:
    // "Uploading: index.html (2 pending)". No line if the user knows it already.
    [[nodiscard]] std::vector<std::string> status(const ProfileStatus& status, const Profile* profile);

    // "Uploaded index.html", "error: The server refused the login." No line if the line before said the same.
    [[nodiscard]] std::vector<std::string> activity(const Activity& activity, const Profile* profile);

private:
    [[nodiscard]] std::vector<std::string> withDetails(std::string line, const std::string& details);

    std::string title;
    std::string detail;
    std::int64_t pending = 0;
    // What the latest event printed: the failure of an activity, or the whole detail of a status. Else empty.
    std::string justFailed;
    std::string justDetailed;
    std::string detailsPrinted; // curl's words, since the profile failed
};

} // namespace zembrastel::cli
