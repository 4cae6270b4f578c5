// Answers to requests that wait for a job.
#include "app/control/control_service.h"

#include <utility>

namespace zembrastel {

// Later, because observers are notified in the middle of a change, such as the restart after an initial download.
void ControlService::answerSoon() {
    if (waitings.empty() || answersDue) return;
    answersDue = true;
    context.post(lifetime.guard([this] { answerWaiting(); }));
}

void ControlService::answerWaiting() {
    answersDue = false;
    std::erase_if(waitings, [this](const auto& entry) {
        try {
            return answerIfSettled(entry.first, entry.second);
        } catch (const Refusal& refusal) {
            end(entry.first, refusal.answer);
            return true;
        }
    });
}

// Whether the job has done what the request waits for, or cannot.
bool ControlService::isSettled(const Waiting& waiting) const {
    const Uuid& id = waiting.profile;
    if (!model.running(id) || model.checkFailures().contains(id)) return true;
    if (!waiting.polls) return model.watching(id);
    const ProfileStatus& status = model.status(id);
    return *waiting.polls <= 0 || status.unsaved || status.failed() || status.phase == Phase::lacksSelection;
}

bool ControlService::answerIfSettled(Client client, const Waiting& waiting) {
    const Uuid& id = waiting.profile;
    const Profile* profile = model.profile(id);
    if (profile == nullptr) refuse(answer::Failed::Reason::noProfile, id.text());
    const bool decided = !waiting.decided.empty();
    if (model.firstComparison(id) != nullptr) {
        if (waiting.adopts) return adoptIfFound(client, *profile, *waiting.adopts);
        refuse(answer::Failed::Reason::choiceWaits, profile->name);
    }
    const auto failure = model.checkFailures().find(id);
    const auto review = model.reviews().find(id);
    if (!decided && !waiting.adopts && review != model.reviews().end()) {
        const auto& changes = review->second.changes;
        send(client, answer::Review{.profile = id, .revision = review->second.reviewId.text(), .changes = changes});
        end(client);
        return true;
    }
    const bool waitsAgain = review != model.reviews().end();
    if (!waitsAgain && !isSettled(waiting)) return false;
    if (decided) sendOutcomes(client, waiting);
    if (waitsAgain && model.running(id)) {
        end(client, answer::Done{.reviewWaits = true});
        return true;
    }
    if (failure != model.checkFailures().end())
        refuse(answer::Failed::Reason::server, failure->second, model.checkFailure(id));
    if (!model.running(id)) {
        if (model.status(id).failed()) refuse(answer::Failed::Reason::refused, model.status(id).detail);
        refuse(answer::Failed::Reason::paused);
    }
    const ProfileStatus& status = model.status(id);
    if (waiting.polls && (status.unsaved || status.failed())) refuse(answer::Failed::Reason::refused, status.detail);
    if (profile->needsDownload) refuse(answer::Failed::Reason::needsDownload);
    if (waiting.leavesMissing) {
        leaveMissing(client, *profile);
    } else if (waiting.polls) {
        send(client, statusOf(*profile));
    } else if (!decided && !waiting.adopts) {
        send(client, answer::Review{.profile = id, .revision = {}, .changes = {}});
    }
    end(client);
    return true;
}

void ControlService::sendOutcomes(Client client, const Waiting& waiting) {
    for (const auto& change : waiting.decided) {
        const auto* known = model.remoteDates(waiting.profile).find(change.path);
        const bool kept = !waiting.selected.contains(change.path);
        const bool downloaded = !kept && known != nullptr && *known == change.remoteDate;
        send(client, answer::Outcome{.path = change.path, .kept = kept, .downloaded = downloaded});
    }
}

} // namespace zembrastel
