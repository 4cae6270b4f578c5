// What each profile shows of itself: its status and its log. Every change is reported to the observers.
//
// Main context.
#pragma once

#include "app/model_observer.h"
#include "app/profile_status.h"
#include "platform/clock.h"

#include <functional>
#include <map>
#include <set>
#include <string>

namespace zembrastel {

class Statuses {
public:
    // Both must outlive this object.
    Statuses(const Clock& clockToUse, const Observers& toNotify) : clock(clockToUse), observers(toNotify) {}

    // That of a profile which has not reported anything is the default status.
    [[nodiscard]] const ProfileStatus& of(const Uuid& id) const;

    void change(const Uuid& id, const std::function<void(ProfileStatus&)>& change);
    void enter(const Uuid& id, Phase phase, const std::string& detail);
    // The detail is the failure's message and then the outlook.
    void enterFailed(const Uuid& id, Phase phase, const Failure& why, const std::string& outlook = {});

    // As at the start of the program.
    void enterPaused(const Uuid& id) { enter(id, Phase::paused, ProfileStatus().detail); }

    // Adds a line to the profile's log and drops the oldest line of a full one.
    void log(
        const Uuid& id, std::string text, Activity::Kind kind = Activity::Kind::note, std::string path = {},
        std::optional<Failure> failure = std::nullopt);
    void logFailure(const Uuid& id, std::string text, std::optional<Failure> failure = std::nullopt) {
        log(id, std::move(text), Activity::Kind::failure, {}, std::move(failure));
    }

    // Shows that the state of these profiles could not be saved, and logs it.
    void reportUnsaved(const std::set<Uuid>& ids, const std::string& message);

    void showProgress(const Uuid& id, const TransferProgress& progress);

    // A file was sent or fetched: counts it until the next progress is reported.
    void countFileDone(const Uuid& id);

    void replace(const Uuid& id, ProfileStatus status) { statuses.insert_or_assign(id, std::move(status)); }
    void forget(const Uuid& id) { statuses.erase(id); }

private:
    const Clock& clock;
    const Observers& observers;
    std::map<Uuid, ProfileStatus> statuses;
};

} // namespace zembrastel
