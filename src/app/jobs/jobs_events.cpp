// Enters the events of workers into the records and statuses.
#include "app/jobs/jobs.h"

#include "sync/unchanged_contents.h"

#include <algorithm>
#include <cassert>

namespace zembrastel {

void Jobs::receive(const WorkerEvent& event, const Uuid& id) {
    std::visit([this, &id](const auto& happened) { apply(happened, id); }, event);
}

// The failure with the kind noNetwork, if that is its reason.
Failure Jobs::withNetwork(Failure failure, const Uuid& id) const {
    const Profile* const profile = mayBeOfNetwork(failure) ? parts.records.profile(id) : nullptr;
    if (profile != nullptr && !settings.work.hasNetwork(profile->host)) failure.kind = Failure::Kind::noNetwork;
    return failure;
}

void Jobs::apply(const event::Status& event, const Uuid& id) {
    parts.statuses.change(id, [&](ProfileStatus& status) {
        status.enter(event.phase, event.detail);
        status.pending = event.pending;
        if (event.failure) status.failure = withNetwork(*event.failure, id);
        status.outlook = event.outlook;
        status.retryAt = event.retryAt;
        status.waiting = event.waiting;
    });
}

void Jobs::apply(const event::Activity& event, const Uuid& id) {
    auto failure = event.failure;
    if (failure) failure = withNetwork(*std::move(failure), id);
    parts.statuses.log(id, event.text, event.error ? Activity::Kind::failure : Activity::Kind::note, {}, failure);
}

void Jobs::apply(const event::FilesRefused& event, const Uuid& id) {
    parts.statuses.change(id, [&event](ProfileStatus& status) { status.refused = event.failures; });
}

void Jobs::apply(const event::Uploaded& event, const Uuid& id) {
    assert(jobs.at(id).is<Job::Watching>());
    parts.records.recordFile(id, event.path, event.fingerprint);
    parts.statuses.change(id, [this](ProfileStatus& status) {
        ++status.uploaded;
        status.lastUpload = parts.clock.now();
        status.pending = std::max<std::int64_t>(status.pending - 1, 0);
    });
    parts.statuses.countFileDone(id);
    parts.statuses.log(id, "Uploaded " + event.path, Activity::Kind::uploaded, event.path);
    if (parts.reviews.unsettled(id).missing.erase(event.path) > 0) publishReview(id);
    parts.records.saveSoon(id);
}

void Jobs::apply(const event::ContentsUnchanged& event, const Uuid& id) {
    const auto files = static_cast<std::int64_t>(event.files.size());
    for (const auto& [path, fingerprint] : event.files) parts.records.recordFile(id, path, fingerprint);
    parts.statuses.change(id, [files](ProfileStatus& status) {
        status.contentsUnchanged += files;
        status.pending = std::max<std::int64_t>(status.pending - files, 0);
    });
    parts.statuses.log(id, unchangedContentsLine(static_cast<std::uint64_t>(files)));
    parts.records.saveSoon(id);
}

void Jobs::apply(const event::Baseline& event, const Uuid& id) {
    parts.records.setBaseline(id, event.files);
    const auto isDeleted = [&event](const std::string& path) { return !event.files.contains(path); };
    if (std::erase_if(parts.reviews.unsettled(id).missing, isDeleted) > 0) publishReview(id);
    parts.records.saveSoon(id);
}

void Jobs::apply(const event::Downloaded& event, const Uuid& id) {
    parts.records.recordFile(id, event.path, event.fingerprint);
    parts.statuses.countFileDone(id);
    parts.records.saveSoon(id);
}

void Jobs::apply(const event::RemoteDate& event, const Uuid& id) {
    parts.records.recordDate(id, event.path, event.date);
    parts.records.saveSoon(id);
}

void Jobs::apply(const event::DownloadFinished&, const Uuid& id) {
    Profile* finished = parts.records.find(id);
    if (finished == nullptr) return;
    finished->needsDownload = false;
    parts.observers.notify([](ModelObserver& observer) { observer.profilesChanged(); });
    parts.records.persistFor(id);
    stop(id);
    start(id);
}

void Jobs::apply(const event::FolderReturned&, const Uuid& id) {
    parts.statuses.log(id, "The local folder is back.");
    stop(id);
    start(id);
}

void Jobs::apply(const event::ServerChanged& event, const Uuid& id) {
    parts.statuses.logFailure(
        id, "Not replaced, because they changed on the server: " + listedPaths(event.paths)
                + ". The server is checked again before anything is uploaded.");
    stop(id);
    auto& unsettled = parts.reviews.unsettled(id);
    unsettled.unanswered.insert(event.paths.begin(), event.paths.end());
    unsettled.disputed = event.paths;
    start(id);
}

void Jobs::apply(const event::PassEnded& event, const Uuid& id) {
    finishWithoutWatching(id);
    if (event.failure) parts.statuses.enterFailed(id, Phase::stopped, *event.failure);
}

} // namespace zembrastel
