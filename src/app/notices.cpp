#include "app/notices.h"

#include <algorithm>

namespace zembrastel {

ProfileLook lookAt(const AppModel& model, const Profile& profile) {
    using Health = ProfileLook::Health;
    const ProfileStatus& status = model.status(profile.id);
    const auto review = model.reviews().find(profile.id);
    const bool running = model.running(profile.id);
    ProfileLook look{.id = profile.id};
    // A review that was put off waits for nobody.
    if (running && review != model.reviews().end()) look.toReview = review->second.changes.size();
    if (status.failed()) {
        look.health = Health::failing;
    } else if (running) {
        const bool settled = look.toReview > 0 || (status.phase == Phase::watching && !status.unsaved);
        look.health = settled ? Health::well : Health::working;
    }
    return look;
}

std::vector<Notice> Notices::look(const std::vector<ProfileLook>& profiles, Time now, bool seen) {
    std::vector<Notice> told;
    std::map<Uuid, Past> current;
    for (const auto& profile : profiles) {
        Past past = pasts[profile.id];
        lookAtReview(profile, past, seen, told);
        lookAtHealth(profile, past, now, told);
        current.emplace(profile.id, past);
        pasts.erase(profile.id);
    }
    for (const auto& [id, removed] : pasts) {
        if (removed.reviewTold) told.push_back({Notice::Kind::reviewIsOver, id});
        if (removed.failureTold) told.push_back({Notice::Kind::failureIsOver, id});
    }
    pasts = std::move(current);
    return told;
}

void Notices::lookAtReview(const ProfileLook& profile, Past& past, bool seen, std::vector<Notice>& told) {
    const bool isNew = profile.toReview > 0 && past.reviewed == 0;
    if (isNew && !seen) {
        told.push_back({Notice::Kind::reviewWaits, profile.id});
        past.reviewTold = true;
    }
    if (profile.toReview == 0 && past.reviewTold) {
        told.push_back({Notice::Kind::reviewIsOver, profile.id});
        past.reviewTold = false;
    }
    past.reviewed = profile.toReview;
}

void Notices::lookAtHealth(const ProfileLook& profile, Past& past, Time now, std::vector<Notice>& told) {
    switch (profile.health) {
    case ProfileLook::Health::failing:
        if (!past.failingSince) past.failingSince = now;
        if (!past.failureTold && now - *past.failingSince > failureToTell) {
            told.push_back({Notice::Kind::failing, profile.id});
            past.failureTold = true;
        }
        return;
    case ProfileLook::Health::working: // another try is no success yet
        return;
    case ProfileLook::Health::well:
    case ProfileLook::Health::stopped:
        break;
    }
    if (past.failureTold) {
        const bool well = profile.health == ProfileLook::Health::well;
        told.push_back({well ? Notice::Kind::recovered : Notice::Kind::failureIsOver, profile.id});
    }
    past.failingSince.reset();
    past.failureTold = false;
}

std::optional<Notices::Time> Notices::nextLook() const {
    std::optional<Time> next;
    for (const auto& [id, past] : pasts) {
        if (!past.failingSince || past.failureTold) continue;
        // Just after: a failure is told when it is older than that.
        const Time due = *past.failingSince + failureToTell + std::chrono::milliseconds(1);
        next = next ? std::min(*next, due) : due;
    }
    return next;
}

} // namespace zembrastel
