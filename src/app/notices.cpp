#include "app/notices.h"

#include <algorithm>

namespace zembrastel {

ObservedProfile observe(const AppModel& model, const Profile& profile) {
    using Health = ObservedProfile::Health;
    const ProfileStatus& status = model.status(profile.id);
    const auto review = model.reviews().find(profile.id);
    const bool running = model.running(profile.id);
    ObservedProfile observed{.id = profile.id};
    // A postponed review does not wait for the user.
    if (running && review != model.reviews().end()) observed.toReview = review->second.changes.size();
    observed.mustChoose =
        running && (status.phase == Phase::awaitingChoice || status.phase == Phase::comparingContents);
    if (status.failed()) {
        observed.health = Health::failing;
        observed.offline = status.failure && status.failure->kind == Failure::Kind::noNetwork;
    } else if (running) {
        const bool settled = observed.toReview > 0 || status.phase == Phase::awaitingChoice
                             || (status.phase == Phase::watching && !status.unsaved);
        observed.health = settled ? Health::well : Health::working;
    }
    return observed;
}

std::vector<Notice> Notices::update(const std::vector<ObservedProfile>& profiles, Time now, bool seen) {
    std::vector<Notice> due;
    std::map<Uuid, Past> current;
    for (const auto& profile : profiles) {
        Past past = pasts[profile.id];
        updateReview(profile, past, seen, due);
        updateChoice(profile, past, seen, due);
        updateHealth(profile, past, now, due);
        current.emplace(profile.id, past);
        pasts.erase(profile.id);
    }
    for (const auto& [id, removed] : pasts) {
        if (removed.choiceShown) due.push_back({Notice::Kind::choiceIsOver, id});
        if (removed.reviewShown) due.push_back({Notice::Kind::reviewIsOver, id});
        if (removed.failureShown) due.push_back({Notice::Kind::failureIsOver, id});
    }
    pasts = std::move(current);
    updateNetwork(now, due);
    return due;
}

void Notices::updateNetwork(Time now, std::vector<Notice>& due) {
    const auto isOffline = [](const auto& each) { return each.second.failingSince && each.second.offline; };
    if (std::ranges::none_of(pasts, isOffline)) {
        if (offlineShown) due.push_back({Notice::Kind::networkIsBack, *offlineShown});
        offlineShown.reset();
        return;
    }
    const auto found = std::ranges::find_if(pasts, [&](const auto& each) {
        return isOffline(each) && now - *each.second.failingSince > failureNoticeDelay;
    });
    if (offlineShown || found == pasts.end()) return;
    offlineShown = found->first;
    due.push_back({Notice::Kind::noNetwork, *offlineShown});
}

void Notices::updateChoice(const ObservedProfile& profile, Past& past, bool seen, std::vector<Notice>& due) {
    if (profile.mustChoose && !past.choiceWaited && !seen) {
        due.push_back({Notice::Kind::choiceWaits, profile.id});
        past.choiceShown = true;
    }
    if (!profile.mustChoose && past.choiceShown) {
        due.push_back({Notice::Kind::choiceIsOver, profile.id});
        past.choiceShown = false;
    }
    past.choiceWaited = profile.mustChoose;
}

void Notices::updateReview(const ObservedProfile& profile, Past& past, bool seen, std::vector<Notice>& due) {
    const bool isNew = profile.toReview > 0 && past.reviewed == 0;
    if (isNew && !seen) {
        due.push_back({Notice::Kind::reviewWaits, profile.id});
        past.reviewShown = true;
    }
    if (profile.toReview == 0 && past.reviewShown) {
        due.push_back({Notice::Kind::reviewIsOver, profile.id});
        past.reviewShown = false;
    }
    past.reviewed = profile.toReview;
}

void Notices::updateHealth(const ObservedProfile& profile, Past& past, Time now, std::vector<Notice>& due) {
    switch (profile.health) {
    case ObservedProfile::Health::failing:
        if (!past.failingSince || past.offline != profile.offline) past.failingSince = now;
        past.offline = profile.offline;
        if (!past.offline && !past.failureShown && now - *past.failingSince > failureNoticeDelay) {
            due.push_back({Notice::Kind::failing, profile.id});
            past.failureShown = true;
        }
        return;
    case ObservedProfile::Health::working: // another attempt is no success yet
        return;
    case ObservedProfile::Health::well:
    case ObservedProfile::Health::stopped:
        break;
    }
    if (past.failureShown) {
        const bool well = profile.health == ObservedProfile::Health::well;
        due.push_back({well ? Notice::Kind::recovered : Notice::Kind::failureIsOver, profile.id});
    }
    past.failingSince.reset();
    past.failureShown = false;
}

std::optional<Notices::Time> Notices::nextUpdate() const {
    std::optional<Time> next;
    for (const auto& [id, past] : pasts) {
        if (!past.failingSince || past.failureShown || (past.offline && offlineShown)) continue;
        // Just after: a failure is shown if it is older than the delay.
        const Time due = *past.failingSince + failureNoticeDelay + std::chrono::milliseconds(1);
        next = next ? std::min(*next, due) : due;
    }
    return next;
}

} // namespace zembrastel
