// What a look at a server means for a profile, in words for the site owner and for the hoster.
//
// A pure function; any thread.
#pragma once

#include "model/profile.h"
#include "transport/server_probe.h"

#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct Finding {
    enum class Outcome {
        fine,
        unknown, // could not be found out
        notice,  // works, with a drawback
        wrong    // does not work, or does harm
    };

    // One word that stays the same, for programs: "address", "port", "connections", "encryption", "certificate",
    // "login", "folder", "listing", "completeness", "hiddenFiles", "dateQuery", "clock", "upload", "temporaryName",
    // "rename", "replacement", "testFile".
    std::string subject;
    Outcome outcome = Outcome::fine;
    std::string text;     // what was seen
    std::string remedy{}; // what to do, and what to ask the hoster for; empty where all is well
};

[[nodiscard]] std::string_view word(Finding::Outcome outcome);

// In the order in which things are come to: whatever cannot be reached because of one that is wrong is left out.
[[nodiscard]] std::vector<Finding> diagnose(const Profile& profile, const ServerObservations& seen);

} // namespace zembrastel
