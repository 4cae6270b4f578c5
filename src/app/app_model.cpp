#include "app/app_model.h"

#include "model/error.h"
#include "platform/private_folder.h"
#include "transport/compare/server_record.h"

#include <utility>

namespace zembrastel {
namespace {

// A demonstration has its own work and passwords.
AppModel::Options resolved(AppModel::Options options) {
    if (!options.demonstration) return options;
    options.work = options.demonstration->work;
    options.passwordAccess = PasswordAccess::none();
    return options;
}

} // namespace

std::string loadFailure(const std::exception& error) {
    return "Could not load saved profiles: " + describe(error) + ". Your saved file has been left untouched.";
}

AppModel::AppModel(MainContext& mainContext, Options chosen)
    : options(resolved(std::move(chosen))), statuses(options.clock, observers),
      records(
          mainContext, options.clock,
          [this](const std::set<Uuid>& ids, const std::string& message) { statuses.reportUnsaved(ids, message); }),
      pendingReviews(observers), passwords(mainContext, options.passwordAccess, options.sessionPasswords),
      jobs(
          {.context = mainContext,
           .clock = options.clock,
           .observers = observers,
           .records = records,
           .statuses = statuses,
           .reviews = pendingReviews,
           .passwords = passwords,
           .alert = [this](std::string message) { setAlert(std::move(message)); }},
          {.work = options.work, .privateItems = options.privateItems, .watches = options.watches}) {
    if (options.demonstration) {
        records.keepInMemory();
        records.put(options.demonstration->profile);
        statuses.replace(options.demonstration->profile.id, options.demonstration->past);
    } else {
        load();
    }
    if (!profiles().empty()) selected = profiles().front().id;
}

void AppModel::load() {
    removeStalePrivateFolders();
    try {
        if (options.storeFailure) std::rethrow_exception(options.storeFailure);
        const StateStore store = options.storeOverride ? *options.storeOverride : StateStore();
        jobs.keepPrivate(store.privateItems());
        records.load(store);
        for (const auto& each : profiles()) {
            if (const auto what = ResendRequest(*records.folder(), each.id).read()) planResend(each.id, *what);
        }
    } catch (const std::exception& error) {
        alertText = loadFailure(error);
    }
}

AppModel::~AppModel() {
    observers.clear();
    shutdown();
    jobs.join();
}

void AppModel::select(std::optional<Uuid> id) {
    if (selected == id) return;
    selected = id;
    observers.notify([](ModelObserver& observer) { observer.selectionChanged(); });
}

Failure AppModel::checkFailure(const Uuid& id) const {
    const auto found = checkFailures().find(id);
    if (found == checkFailures().end()) return {};
    return status(id).failure.value_or(Failure{.message = found->second});
}

void AppModel::setAlert(std::string text) {
    alertText = std::move(text);
    observers.notify([](ModelObserver& observer) { observer.alertChanged(); });
}

void AppModel::dismissAlert() {
    alertText.reset();
    observers.notify([](ModelObserver& observer) { observer.alertChanged(); });
}

void AppModel::removeStrayPassword(const Uuid& id) {
    if (profile(id) != nullptr) return;
    passwords.remove(id, [this](const std::optional<std::string>& failure) {
        if (failure) setAlert(*failure);
    });
}

void AppModel::startEnabled() {
    for (const auto& candidate : std::vector<Profile>(profiles())) {
        if (candidate.enabled) start(candidate.id);
    }
}

void AppModel::shutdown() {
    jobs.stopAll();
    records.flush();
}

void AppModel::forgetMissingFiles(const Uuid& id) {
    if (!status(id).filesMissing()) return;
    stopJob(id);
    jobs.start(id, std::nullopt, true);
}

void AppModel::retryCheck(const Uuid& id) {
    stopJob(id);
    start(id);
}

void AppModel::sendAgain(const Uuid& id, Resend what) {
    if (profile(id) == nullptr) return;
    planResend(id, what);
    std::exception_ptr unsaved;
    try {
        if (const auto& folder = records.folder()) ResendRequest(*folder, id).write(what);
    } catch (const std::filesystem::filesystem_error&) {
        unsaved = std::current_exception();
    }
    if (running(id)) {
        retryCheck(id);
    } else {
        resume(id);
    }
    if (unsaved) std::rethrow_exception(unsaved);
}

void AppModel::leaveMissing(const Uuid& id) {
    for (const auto& path : std::exchange(pendingReviews.unsettled(id).missing, {})) {
        records.recordDate(id, path, leftMissing);
    }
    jobs.publishReview(id);
    records.persist();
}

void AppModel::pauseReview(Uuid id, Uuid reviewId) {
    const RemoteReview* waiting = jobs.review(id);
    if (waiting == nullptr || waiting->reviewId != reviewId) return;
    const RemoteReview review = *waiting;
    try {
        pause(id);
    } catch (const std::exception& error) {
        setAlert(describe(error));
    }
    pendingReviews.postpone(review);
    jobs.publishReview(id);
}

Decision AppModel::resolveReview(Uuid id, Uuid reviewId, const PathSet& selectedPaths) {
    if (const auto* kept = pendingReviews.postponed(id); kept != nullptr && kept->reviewId == reviewId) {
        // The server may have changed since: it is checked first.
        try {
            resumeWith(id, EarlierDecision{.changes = kept->changes, .selected = selectedPaths});
        } catch (const std::exception& error) {
            setAlert(describe(error));
        }
        if (running(id)) return Decision::accepted;
        setAlert(status(id).detail);
        return Decision::refused;
    }
    const RemoteReview* waiting = jobs.review(id);
    if (waiting == nullptr || waiting->reviewId != reviewId) return Decision::outdated;
    const Decision decision = jobs.decide(id, selectedPaths);
    pendingReviews.presentNext();
    return decision;
}

} // namespace zembrastel
