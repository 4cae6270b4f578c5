#include "app/control/control_service.h"

#include "model/error.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace zembrastel {
namespace {

bool hasFailedCheck(const AppModel& model, const Uuid& id) { return model.checkFailures().contains(id); }

} // namespace

ControlService::ControlService(
    AppModel& served, MainContext& mainContext, const std::filesystem::path& stateFolder, std::function<void()> show)
    : model(served), context(mainContext), showWindow(std::move(show)) {
    try {
        server = std::make_unique<LocalServer>(
            stateFolder, controlSocketName,
            LocalServer::Callbacks{
                .received =
                    [this](Client client, const std::string& line) {
                        context.post(lifetime.guard([this, client, line] { receive(client, line); }));
                    },
                .gone = [this](Client client) { context.post(lifetime.guard([this, client] { forget(client); })); }});
    } catch (const std::system_error& error) {
        unreachable = describe(error);
    }
    model.observe(*this);
}

void ControlService::refuse(answer::Failed::Reason reason, std::string text, std::optional<Failure> failure) {
    throw Refusal{{.reason = reason, .text = std::move(text), .failure = std::move(failure)}};
}

ControlService::~ControlService() { model.forget(*this); }

void ControlService::receive(Client client, const std::string& line) {
    try {
        carryOut(client, decodeControlRequest(line));
    } catch (const Refusal& refusal) {
        end(client, refusal.answer);
    } catch (const SyncError& error) {
        end(client, answer::Failed{.reason = answer::Failed::Reason::notUnderstood, .text = error.what()});
    }
}

void ControlService::carryOut(Client client, const ControlRequest& request) {
    requireProfiles(request);
    switch (request.kind) {
    case ControlRequest::Kind::show:
        return show(client);
    case ControlRequest::Kind::status:
        report(client, request);
        return end(client);
    case ControlRequest::Kind::follow:
        report(client, request);
        for (const auto& profile : model.profiles()) lastSent[profile.id] = encode(statusOf(profile));
        followers.insert_or_assign(client, request.profiles);
        server->ready(client);
        return;
    case ControlRequest::Kind::pause:
    case ControlRequest::Kind::resume:
        return changeEach(client, request);
    case ControlRequest::Kind::retry:
        return retryEach(client, request);
    case ControlRequest::Kind::review:
        // The failure of an earlier check does not answer this request.
        if (hasFailedCheck(model, request.profiles.front())) model.retryCheck(request.profiles.front());
        waitings.insert_or_assign(client, Waiting{.profile = request.profiles.front(), .decided = {}, .selected = {}});
        return answerSoon();
    case ControlRequest::Kind::decide:
        return decide(client, request);
    case ControlRequest::Kind::forgetFiles:
        return forgetFiles(client, request);
    case ControlRequest::Kind::sendMissing:
    case ControlRequest::Kind::sendAll:
        return sendAgain(client, request);
    case ControlRequest::Kind::leaveMissing:
        return leaveMissing(client, request);
    case ControlRequest::Kind::push:
        return push(client, request);
    case ControlRequest::Kind::adopt:
        return adopt(client, request);
    }
}

void ControlService::requireProfiles(const ControlRequest& request) const {
    using Kind = ControlRequest::Kind;
    for (const auto& id : request.profiles) {
        if (model.profile(id) == nullptr) refuse(answer::Failed::Reason::noProfile, id.text());
    }
    constexpr std::array kindsOfOne{Kind::review,       Kind::decide, Kind::sendMissing, Kind::sendAll,
                                    Kind::leaveMissing, Kind::push,   Kind::adopt};
    const bool ofOne = std::ranges::find(kindsOfOne, request.kind) != kindsOfOne.end();
    if (ofOne && request.profiles.size() != 1) refuse(answer::Failed::Reason::noProfile);
}

void ControlService::show(Client client) {
    if (!showWindow) refuse(answer::Failed::Reason::noWindow);
    showWindow();
    end(client);
}

void ControlService::report(Client client, const ControlRequest& request) {
    for (const auto& profile : model.profiles()) {
        const bool wanted = request.profiles.empty() || std::ranges::count(request.profiles, profile.id) > 0;
        if (wanted) send(client, statusOf(profile));
    }
}

void ControlService::changeEach(Client client, const ControlRequest& request) {
    const bool pauses = request.kind == ControlRequest::Kind::pause;
    for (const auto& id : request.profiles) {
        const auto isSo = [&] { return !model.running(id) && !model.profile(id)->enabled; };
        const auto isOn = [&] { return model.running(id) && model.profile(id)->enabled; };
        const bool retries = !pauses && hasFailedCheck(model, id);
        if (!retries && (pauses ? isSo() : isOn())) continue;
        try {
            if (pauses) {
                pausedHere.insert(id);
                model.pause(id);
            } else {
                pausedHere.erase(id);
                if (retries) model.retryCheck(id);
                model.resume(id);
            }
        } catch (const std::exception& error) {
            refuse(answer::Failed::Reason::notSaved, describe(error));
        }
        if (!pauses && !model.running(id)) refuse(answer::Failed::Reason::refused, model.status(id).detail);
        send(client, answer::Changed{.profile = id, .retried = retries});
    }
    end(client);
}

void ControlService::retryEach(Client client, const ControlRequest& request) {
    for (const auto& id : request.profiles) {
        if (!hasFailedCheck(model, id)) continue;
        model.retryCheck(id);
        send(client, answer::Changed{.profile = id, .retried = true});
    }
    end(client);
}

void ControlService::decide(Client client, const ControlRequest& request) {
    const Uuid& id = request.profiles.front();
    const auto review = model.reviews().find(id);
    if (review == model.reviews().end() || review->second.reviewId.text() != request.revision) {
        refuse(answer::Failed::Reason::otherReview, outdatedDecision);
    }
    // Postponed: the profile was paused elsewhere, and is resumed there.
    if (!model.running(id)) refuse(answer::Failed::Reason::paused);
    Waiting waiting{.profile = id, .decided = review->second.changes, .selected = {}};
    for (const auto& change : waiting.decided) {
        if (request.downloadAll || std::ranges::count(request.download, change.path) > 0) {
            waiting.selected.insert(change.path);
        }
    }
    const PathSet selected = waiting.selected;
    waitings.insert_or_assign(client, std::move(waiting));
    const Decision decision = model.resolveReview(id, review->second.reviewId, selected);
    if (decision != Decision::accepted) {
        waitings.erase(client);
        refuse(answer::Failed::Reason::refused, model.alert().value_or(""));
    }
    answerSoon();
}

void ControlService::forgetFiles(Client client, const ControlRequest& request) {
    for (const auto& id : request.profiles) {
        if (!model.status(id).filesMissing()) continue;
        model.forgetMissingFiles(id);
        send(client, answer::Changed{id});
    }
    end(client);
}

void ControlService::sendAgain(Client client, const ControlRequest& request) {
    const Uuid& id = request.profiles.front();
    if (!model.running(id)) refuse(answer::Failed::Reason::paused);
    if (model.profile(id)->needsDownload) refuse(answer::Failed::Reason::needsDownload);
    try {
        model.sendAgain(id, request.kind == ControlRequest::Kind::sendAll ? Resend::everything : Resend::missing);
    } catch (const std::exception& error) {
        refuse(answer::Failed::Reason::notSaved, describe(error));
    }
    waitings.insert_or_assign(client, Waiting{.profile = id, .decided = {}, .selected = {}});
    answerSoon();
}

// The server is checked again first: the last check may be hours old.
void ControlService::leaveMissing(Client client, const ControlRequest& request) {
    const Uuid& id = request.profiles.front();
    if (!model.running(id)) refuse(answer::Failed::Reason::paused);
    if (model.profile(id)->needsDownload) refuse(answer::Failed::Reason::needsDownload);
    model.retryCheck(id);
    waitings.insert_or_assign(client, Waiting{.profile = id, .decided = {}, .selected = {}, .leavesMissing = true});
    answerSoon();
}

void ControlService::leaveMissing(Client client, const Profile& profile) {
    send(client, statusOf(profile));
    try {
        model.leaveMissing(profile.id);
    } catch (const std::exception& error) {
        refuse(answer::Failed::Reason::notSaved, describe(error));
    }
}

// A job that uploads goes on, and its present scan may be older than the request. Any other starts anew, so that the
// server is checked and no file waits after an earlier failure.
void ControlService::push(Client client, const ControlRequest& request) {
    const Uuid& id = request.profiles.front();
    if (!model.running(id)) refuse(answer::Failed::Reason::paused);
    const ProfileStatus& status = model.status(id);
    const bool rests = status.unsaved || status.failed() || status.phase == Phase::watching;
    if (rests) model.retryCheck(id);
    waitings.insert_or_assign(
        client, Waiting{.profile = id, .decided = {}, .selected = {}, .leavesMissing = false, .polls = rests ? 1 : 2});
    answerSoon();
}

void ControlService::adopt(Client client, const ControlRequest& request) {
    const Uuid& id = request.profiles.front();
    if (!model.running(id)) refuse(answer::Failed::Reason::paused);
    if (model.profile(id)->needsDownload) refuse(answer::Failed::Reason::needsDownload);
    if (hasFailedCheck(model, id)) model.retryCheck(id);
    waitings.insert_or_assign(client, Waiting{.profile = id, .decided = {}, .selected = {}, .adopts = request});
    answerSoon();
}

// False while the contents are compared.
bool ControlService::adoptIfFound(Client client, const Profile& profile, const ControlRequest& request) {
    const Uuid& id = profile.id;
    if (request.comparesContents && !model.firstComparison(id)->isCompared()) {
        model.compareContents(id);
        if (model.comparingContents(id)) return false;
    }
    const auto before = statusOf(profile);
    if (model.adopt(id, request.adoption) != Decision::accepted) {
        refuse(answer::Failed::Reason::refused, model.alert().value_or(""));
    }
    send(client, before);
    end(client);
    return true;
}

void ControlService::forget(Client client) {
    followers.erase(client);
    waitings.erase(client);
}

answer::Status ControlService::statusOf(const Profile& profile) const {
    const auto review = model.reviews().find(profile.id);
    answer::Status shown{
        .profile = profile.id,
        .name = profile.name,
        .enabled = profile.enabled,
        .running = model.running(profile.id),
        .newerOnServer = review == model.reviews().end() ? 0 : static_cast<std::int64_t>(review->second.changes.size()),
        .missingOnServer = static_cast<std::int64_t>(model.missingOnServer(profile.id).size()),
        .choice = std::nullopt,
        .status = model.status(profile.id)};
    if (const auto* found = model.firstComparison(profile.id)) {
        shown.choice = choiceOf(*found, model.comparingContents(profile.id));
    }
    shown.status.activity.clear();
    return shown;
}

// A worker repeats its status at every poll; it is sent if it has changed.
void ControlService::notifyFollowers(const Profile& profile) {
    if (followers.empty()) return;
    const answer::Status shown = statusOf(profile);
    std::string line = encode(ControlAnswer(shown));
    if (lastSent[profile.id] == line) return;
    lastSent[profile.id] = std::move(line);
    for (const auto& [client, profiles] : followers) {
        if (profiles.empty() || std::ranges::count(profiles, profile.id) > 0) send(client, shown);
    }
}

void ControlService::statusChanged(const Uuid& id) {
    const Profile* profile = model.profile(id);
    if (profile == nullptr) return answerSoon();
    notifyFollowers(*profile);
    const ProfileStatus& status = model.status(id);
    const bool foundNothing = model.watching(id) && status.phase == Phase::watching && !status.unsaved;
    for (auto& [client, waiting] : waitings) {
        if (waiting.profile == id && waiting.polls && foundNothing) --*waiting.polls;
    }
    reportToPushers(*profile);
    answerSoon();
}

void ControlService::progressChanged(const Uuid& id) {
    if (const Profile* profile = model.profile(id)) reportToPushers(*profile);
}

void ControlService::reportToPushers(const Profile& profile) {
    for (const auto& [client, waiting] : waitings) {
        if (waiting.profile == profile.id && waiting.polls) send(client, statusOf(profile));
    }
}

void ControlService::activityLogged(const Uuid& id, const Activity& activity) {
    for (const auto& [client, profiles] : followers) {
        if (profiles.empty() || std::ranges::count(profiles, id) > 0) send(client, answer::Activity{id, activity});
    }
    for (const auto& [client, waiting] : waitings) {
        if (waiting.profile == id && (waiting.polls || !waiting.decided.empty()))
            send(client, answer::Activity{id, activity});
    }
}

void ControlService::reviewChanged(const Uuid& id) { statusChanged(id); }

void ControlService::profilesChanged() {
    std::erase_if(pausedHere, [this](const Uuid& id) { return model.profile(id) == nullptr || model.running(id); });
    for (const auto& profile : model.profiles()) notifyFollowers(profile);
    answerSoon();
}

void ControlService::send(Client client, const ControlAnswer& answer) { server->send(client, encode(answer)); }

void ControlService::end(Client client, const ControlAnswer& last) {
    send(client, last);
    server->ready(client);
}

} // namespace zembrastel
