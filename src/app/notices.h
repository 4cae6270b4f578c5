// What the user is to be told of by a notification: a review that waits, and a profile that has failed for long, once,
// and once more when it has recovered. Never anything of a single file.
//
// Pure: it is shown the profiles and the time, and holds what it has told. One thread.
#pragma once

#include "app/app_model.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

inline constexpr std::chrono::minutes failureToTell{1};

// One profile as it is now.
struct ProfileLook {
    enum class Health {
        stopped, // does nothing, and nothing is wrong
        working, // whether it will go well is not known yet
        failing,
        well,
    };

    Uuid id;
    Health health = Health::stopped;
    std::size_t toReview = 0; // files
};

struct Notice {
    enum class Kind {
        reviewWaits,
        reviewIsOver, // takes the notice of it away
        failing,
        recovered,
        failureIsOver, // takes the notice of it away: nobody has recovered
    };

    Kind kind;
    Uuid id; // of the profile

    friend bool operator==(const Notice&, const Notice&) = default;
};

[[nodiscard]] ProfileLook lookAt(const AppModel& model, const Profile& profile);

class Notices {
public:
    using Time = std::chrono::steady_clock::time_point;

    // What is to be told now. `seen` says that the user has the window before him, where a review opens by itself.
    [[nodiscard]] std::vector<Notice> look(const std::vector<ProfileLook>& profiles, Time now, bool seen);

    // When to look again though nothing has changed; nothing when there is no need to.
    [[nodiscard]] std::optional<Time> nextLook() const;

private:
    struct Past {
        std::size_t reviewed = 0;
        std::optional<Time> failingSince;
        bool failureTold = false;
        bool reviewTold = false;
    };

    static void lookAtReview(const ProfileLook& profile, Past& past, bool seen, std::vector<Notice>& told);
    static void lookAtHealth(const ProfileLook& profile, Past& past, Time now, std::vector<Notice>& told);

    std::map<Uuid, Past> pasts;
};

} // namespace zembrastel
