#include "app/statuses.h"

#include "platform/text.h"

namespace zembrastel {

const ProfileStatus& Statuses::of(const Uuid& id) const {
    static const ProfileStatus unstarted;
    const auto found = statuses.find(id);
    return found == statuses.end() ? unstarted : found->second;
}

void Statuses::change(const Uuid& id, const std::function<void(ProfileStatus&)>& change) {
    change(statuses[id]);
    observers.notify([&id](ModelObserver& observer) { observer.statusChanged(id); });
}

void Statuses::enter(const Uuid& id, Phase phase, const std::string& detail) {
    change(id, [&](ProfileStatus& status) { status.enter(phase, detail); });
}

void Statuses::enterFailed(const Uuid& id, Phase phase, const Failure& why, const std::string& outlook) {
    change(id, [&](ProfileStatus& status) {
        status.enter(phase, outlook.empty() ? why.message : sentence(why.message) + " " + outlook);
        status.failure = why;
        status.outlook = outlook;
    });
}

void Statuses::log(
    const Uuid& id, std::string text, Activity::Kind kind, std::string path, std::optional<Failure> failure) {
    auto& activity = statuses[id].activity;
    activity.push_front(
        {.date = clock.now(),
         .text = std::move(text),
         .kind = kind,
         .path = std::move(path),
         .failure = std::move(failure)});
    if (activity.size() > ProfileStatus::maxActivities) activity.pop_back();
    observers.notify([&](ModelObserver& observer) { observer.activityLogged(id, activity.front()); });
}

void Statuses::reportUnsaved(const std::set<Uuid>& ids, const std::string& message) {
    const std::string problem = "Could not save sync state: " + message;
    for (const auto& id : ids) {
        change(id, [&problem](ProfileStatus& status) { status.reportUnsaved(problem); });
        logFailure(id, problem);
    }
}

void Statuses::showProgress(const Uuid& id, const TransferProgress& progress) {
    statuses[id].progress = progress;
    observers.notify([&id](ModelObserver& observer) { observer.progressChanged(id); });
}

void Statuses::countFileDone(const Uuid& id) {
    auto& progress = statuses[id].progress;
    if (!progress) return;
    progress->file.reset(); // the last progress was about the file that is now done
    ++progress->filesDone;
    if (progress->filesDone >= progress->filesQueued && progress->folders == 0) {
        change(id, [](ProfileStatus& status) { status.progress.reset(); });
    } else {
        observers.notify([&id](ModelObserver& observer) { observer.progressChanged(id); });
    }
}

} // namespace zembrastel
