// The notifications for the user: one for a review or a choice that waits, one for a profile that keeps failing,
// and one when that profile has recovered. Without a network there is one for all profiles. Never one for a single
// file.
//
// Depends on its arguments alone, and remembers what was shown. One thread.
#pragma once

#include "app/app_model.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

inline constexpr std::chrono::minutes failureNoticeDelay{1};

// One profile as it is now.
struct ObservedProfile {
    enum class Health {
        stopped, // no job, and no failure
        working, // the outcome is not known yet
        failing,
        well,
    };

    Uuid id;
    Health health = Health::stopped;
    std::size_t toReview = 0; // files
    bool offline = false;     // it is failing because this machine has no network
    bool mustChoose = false;  // what counts as published, after the first check
};

struct Notice {
    enum class Kind {
        reviewWaits,
        reviewIsOver, // removes the notice
        failing,
        recovered,
        failureIsOver, // removes the notice: the profile has not recovered
        noNetwork,     // of all profiles together, with the id of one
        networkIsBack, // removes that notice
        choiceWaits,   // after the first check
        choiceIsOver,  // removes the notice
    };

    Kind kind = Kind::reviewWaits;
    Uuid id; // of the profile

    friend bool operator==(const Notice&, const Notice&) = default;
};

[[nodiscard]] ObservedProfile observe(const AppModel& model, const Profile& profile);

class Notices {
public:
    using Time = std::chrono::steady_clock::time_point;

    // What to show now. `seen`: the window is in front, where a review opens by itself.
    [[nodiscard]] std::vector<Notice> update(const std::vector<ObservedProfile>& profiles, Time now, bool seen);

    // When to update again although nothing has changed; nullopt if there is no need.
    [[nodiscard]] std::optional<Time> nextUpdate() const;

private:
    struct Past {
        std::size_t reviewed = 0;
        std::optional<Time> failingSince;
        bool failureShown = false;
        bool offline = false; // the latest failure
        bool reviewShown = false;
        bool choiceWaited = false;
        bool choiceShown = false;
    };

    static void updateReview(const ObservedProfile& profile, Past& past, bool seen, std::vector<Notice>& due);
    static void updateHealth(const ObservedProfile& profile, Past& past, Time now, std::vector<Notice>& due);

    void updateNetwork(Time now, std::vector<Notice>& due);
    static void updateChoice(const ObservedProfile& profile, Past& past, bool seen, std::vector<Notice>& due);

    std::map<Uuid, Past> pasts;
    std::optional<Uuid> offlineShown; // the id of the notice about the network
};

} // namespace zembrastel
