// The one model: it owns the profiles, what is remembered of them, their jobs, statuses and reviews.
//
// Lives on the main context: every call comes from there, and none blocks on a server. Work runs on threads of its own
// and comes back through the main context; a result of a job that was stopped or replaced meanwhile is dropped. A
// profile has at most one job: see job.h. A review belongs to the job that found it, or was postponed by "Stay paused"
// and belongs to a profile without a job.
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/main_context.h"
#include "app/context/task_lane.h"
#include "app/job.h"
#include "app/job_work.h"
#include "app/model_observer.h"
#include "app/password_calls.h"
#include "app/profile_status.h"
#include "app/remote_review.h"
#include "app/state_saver.h"
#include "model/password_store.h"
#include "model/private_items.h"
#include "model/profile.h"
#include "model/publish_journal.h"
#include "model/resend_request.h"
#include "model/saved_state.h"
#include "model/state_store.h"
#include "platform/clock.h"
#include "sync/worker_event.h"
#include "transport/compare/remote_change.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace zembrastel {

// "a.html, b.html", and of many only how many more there are.
[[nodiscard]] std::string listedPaths(const PathSet& paths);

// What the user reads when the saved state could not be loaded.
[[nodiscard]] std::string loadFailure(const std::exception& error);

class AppModel {
public:
    // Where passwords are kept. The functions may block, and throw what the user is to read.
    struct PasswordAccess {
        std::function<void(const std::string& password, const Uuid& id)> save = PasswordStore::save;
        std::function<std::string(const Uuid& id)> read = PasswordStore::read;
        std::function<void(const Uuid& id)> remove = PasswordStore::remove;
    };

    struct Options {
        bool demo = false; // a sample profile; no network, disk or secret store
        std::optional<StateStore> storeOverride = std::nullopt;
        // Why there is no store to load from, if so: the same as a failure to load.
        std::exception_ptr storeFailure = nullptr;
        std::map<Uuid, std::string> sessionPasswords = {}; // known already, never stored
        PasswordAccess passwordAccess = {};
        JobWork work = serverWork(); // a demonstration has its own
        Clock& clock = systemClock();
        // Never published, beside what the saved state itself has to keep private.
        std::vector<PrivateItem> privateItems = {};
        // False ends a job where its worker would start: for a program that only checks and reviews.
        bool watches = true;
    };

    // Loads the saved state. When that fails there are no profiles, `alert` says why, and nothing is ever saved.
    AppModel(MainContext& mainContext, Options chosen);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;
    // Shuts down and waits for the threads, which takes less than a second.
    ~AppModel();

    // The observer must outlive the model or be taken away again.
    void observe(ModelObserver& observer) { observers.insert(&observer); }
    void forget(ModelObserver& observer) { observers.erase(&observer); }

    [[nodiscard]] const std::vector<Profile>& profiles() const { return state.profiles; }
    [[nodiscard]] const Profile* profile(const Uuid& id) const; // nullptr when there is none
    [[nodiscard]] const ProfileStatus& status(const Uuid& id) const;
    [[nodiscard]] const std::optional<Uuid>& selection() const { return selected; }
    [[nodiscard]] const std::optional<std::string>& alert() const { return alertText; }
    // Of the jobs that await a decision, and the postponed ones.
    [[nodiscard]] const std::map<Uuid, RemoteReview>& reviews() const { return published.reviews; }
    [[nodiscard]] const std::optional<RemoteReview>& presentedReview() const { return presented; }
    // Why uploads of these profiles do not start: a server check, or a review's download, that failed.
    [[nodiscard]] const std::map<Uuid, std::string>& checkFailures() const { return published.failures; }
    // Published files that the last server check did not find on the server. They are sent again only on request.
    [[nodiscard]] const PathSet& missingOnServer(const Uuid& id) const;
    [[nodiscard]] const FileMap& baseline(const Uuid& id) const;
    [[nodiscard]] const RemoteDates& remoteDates(const Uuid& id) const;

    void select(std::optional<Uuid> id);
    // Has the user read a message in an alert.
    void setAlert(std::string text);
    void dismissAlert();

    // Has the password at hand until the program ends, without storing it anywhere.
    void keepForSession(const Uuid& id, const std::string& password) { passwords.insert_or_assign(id, password); }

    // Hands the profile's password to `then`, at once when it is at hand, else when the secret store has given it; a
    // failure's message to `failed`. Both are called on the main context, and not once the model has gone.
    void withPassword(const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed);

    // Stores the profile's password, however long the secret store takes, after every read and save asked for before.
    // `done` gets the message of a failure or nothing, on the main context, and not once the model has gone. What is at
    // hand stays as it is: see keepForSession(). A demonstration stores nothing.
    void storePassword(
        const Uuid& id, const std::string& password, std::function<void(std::optional<std::string> failure)> done);

    // Removes what was stored for a profile that does not exist, such as one that was removed while the secret store
    // waited. Where that fails, `alert` says so.
    void removeStrayPassword(const Uuid& id);

    // Throws what save() would refuse this profile for, with nothing changed.
    void checkSavable(const Profile& changed) const { (void)savable(changed); }

    // A demonstration touches no network, disk or secret store.
    [[nodiscard]] bool isDemo() const { return options.demo; }

    // Is there a job?
    [[nodiscard]] bool running(const Uuid& id) const { return jobs.contains(id); }

    // Is it past the server check and all decisions, so that files go up (or, at first, come down)?
    [[nodiscard]] bool watching(const Uuid& id) const;

    // Starts watching: the password is read, then the server is checked, or the initial download begins where one is
    // due. Drops a postponed review. A start that is refused shows in the status.
    void start(const Uuid& id);

    // The user says that the files which status().filesMissing is about are gone: the profile starts anew, and they no
    // longer count as synchronised. Those that are there again by then stay. Without that status nothing happens.
    void forgetMissingFiles(const Uuid& id);

    // The next successful server check finds out what is to be sent again. It is sent when watching starts, and nothing
    // is forgotten before. A file on the server that this program has not uploaded there, and that is not equal, is
    // offered for review first. For a program that ends with the profile's work: the plan ends with the program.
    void planResend(const Uuid& id, Resend what) { resends.insert_or_assign(id, what); }

    // The same at once: starts the profile anew, also a paused one. The next start of the program goes on with it if
    // this one ends before. Throws when that could not be saved; it is in force all the same.
    void sendAgain(const Uuid& id, Resend what);

    // The user wants the missing files to stay away: they are not reported again, unless they come back and vanish once
    // more. Throws when that could not be saved; it is in force all the same.
    void leaveMissing(const Uuid& id);

    // Starts every enabled profile.
    void startEnabled();

    // Has every job that waits to try something again do so at once, and wait shortly if that fails: for when the
    // reason of the failures may have gone. No job is stopped; one that does not wait goes on as it is.
    void retryNow();

    // Ends whatever runs for the profile and drops its review. Returns at once; nothing of it is heard again.
    void stopJob(const Uuid& id);

    // Stops every job and saves what is not yet saved.
    void shutdown();

    // The user's pause and resume, of which the next start of the program knows. What is so already, running or at
    // rest, stays. Throw when the change could not be saved; it is in force all the same, and saving is tried again.
    void pause(const Uuid& id);
    void resume(const Uuid& id);

    // Whichever of the two there is to do.
    void toggle(const Uuid& id);

    // Creates or changes a profile. Without a password the stored one is left as it is. `initialBaseline`, where given,
    // becomes what counts as synchronised. A change of the sync contents has them downloaded again before watching
    // resumes. Throws SyncError with nothing changed, or, when saving alone failed, with the change in force and the
    // profile stopped.
    void save(
        Profile changed, const std::optional<std::string>& password,
        std::optional<FileMap> initialBaseline = std::nullopt);

    // Has the calls of save() that `changes` makes written together, once it has returned: each write is one of the
    // whole state. Throws what save() would when writing fails, with the changes in force. `changes` throws nothing.
    void saveTogether(const std::function<void()>& changes);

    // Forgets a profile with its password; all files stay. The password goes first, however long the secret store
    // takes. Where that fails `alert` says so and nothing changes; where saving alone fails, the profile is gone.
    void remove(const Uuid& id);

    // Presents the profile's review, if it has one; closing hides it without a decision.
    void openReview(const Uuid& id);
    void closeReview();

    // "Stay paused": stops the profile and postpones its review. Does nothing when the profile's job does not await a
    // decision on this review.
    void pauseReview(Uuid id, Uuid reviewId);

    // Carries a decision on this review out: the server's version of the selected paths is downloaded, for all others
    // of the review the local version stays; then watching starts. A file that changed or vanished meanwhile is left
    // out of the download, and then the server is checked again first.
    //
    // A postponed review's profile is resumed. The decision is carried out if the new check finds the same versions;
    // otherwise the new review is shown.
    [[nodiscard]] Decision resolveReview(Uuid id, Uuid reviewId, const PathSet& selectedPaths);

    void retryCheck(const Uuid& id);

    // Watches without comparing with the server first.
    void startWithoutCheck(const Uuid& id);

private:
    // A decision on a postponed review, for the check that comes first.
    struct EarlierDecision {
        std::vector<RemoteChange> changes;
        PathSet selected;
    };
    using Earlier = std::optional<EarlierDecision>;

    // Of the jobs and the postponed reviews, as observers see it. See publishReview().
    struct Published {
        std::map<Uuid, RemoteReview> reviews;
        std::map<Uuid, std::string> failures;
    };

    // Core.
    void addSampleProfile();
    [[nodiscard]] Profile* find(const Uuid& id);
    [[nodiscard]] std::optional<PublishJournal> journalOf(const Uuid& id) const; // none where nothing is saved
    [[nodiscard]] bool isCurrent(const Uuid& id, const Uuid& generation) const;
    [[nodiscard]] std::function<void()> onlyIfCurrent(
        const Uuid& id, const Uuid& generation, std::function<void()> work);
    void changeStatus(const Uuid& id, const std::function<void(ProfileStatus&)>& change);
    void log(const Uuid& id, std::string text, Activity::Kind kind = Activity::Kind::note, std::string path = {});
    void notify(const std::function<void(ModelObserver&)>& tell) const;

    // Jobs.
    void checkStartable(const Profile& profile) const;
    void refuseStart(const Uuid& id, const std::string& message);
    void startWith(const Uuid& id, const Earlier& earlier, bool filesMayBeGone = false);
    void resumeWith(const Uuid& id, const Earlier& earlier);
    Job& openJob(const Profile& profile);
    [[nodiscard]] bool step(const Uuid& id, const std::function<bool(Job&)>& take);
    [[nodiscard]] std::stop_source startTask(const Uuid& id, BackgroundTasks::Body body);
    void launchWorker(const Uuid& id);
    void endInsteadOfWatching(const Uuid& id);
    [[nodiscard]] EventSink eventSink(const Uuid& id, const Uuid& generation, const std::stop_token& stop);
    [[nodiscard]] const Profile* runningProfileWithFolder(const Uuid& except, const std::string& localFolder) const;

    // Events and saving.
    void receive(const WorkerEvent& event, const Uuid& id);
    void apply(const event::Status& event, const Uuid& id);
    void apply(const event::Activity& event, const Uuid& id);
    void apply(const event::Uploaded& event, const Uuid& id);
    void apply(const event::Baseline& event, const Uuid& id);
    void apply(const event::Downloaded& event, const Uuid& id);
    void apply(const event::RemoteDate& event, const Uuid& id);
    void apply(const event::DownloadFinished& event, const Uuid& id);
    void apply(const event::FolderReturned& event, const Uuid& id);
    void apply(const event::ServerChanged& event, const Uuid& id);
    void apply(const event::PassEnded& event, const Uuid& id);
    void takeProgress(const TransferProgress& progress, const Uuid& id);
    void countFileDone(const Uuid& id);
    void persist();
    void persistFor(const Uuid& id);
    void saveSoon(const Uuid& id);
    void tellUnsaved(const std::set<Uuid>& ids, const std::string& message);

    // Server check and review.
    void showChecking(const Uuid& id);
    void startCheck(const Uuid& id, const Earlier& earlier);
    void finishCheck(const ServerCheck& check, const Uuid& id, const Earlier& earlier);
    void rememberComparison(const Uuid& id);
    void recordRecognised(const AnnouncedFiles& recognised, const Uuid& id);
    void acknowledgeSizes(const std::vector<RemoteChange>& kept, const Uuid& id);
    void findToSend(const ServerCheck& check, const Uuid& id);
    void forgetPublished(const PathSet& paths, const Uuid& id);
    void endResend(const Uuid& id);
    [[nodiscard]] bool sendsEverything(const Uuid& id) const;
    void askForDecision(const Uuid& id);
    void failedCheck(const std::string& message, const Uuid& id, bool willRetry);
    void showNextReview();
    void present(std::optional<RemoteReview> review);
    void publishReview(const Uuid& id);
    [[nodiscard]] Decision carryOut(const Uuid& id, const PathSet& downloads);
    void startReviewDownload(const Uuid& id, const std::vector<RemoteChange>& approved);
    void recordDownload(const Uuid& id, const RemoteChange& change, const Fingerprint& installed);
    void finishReviewDownload(const Uuid& id, const PathSet& leftOut);
    void recordRemoteDate(const std::string& path, RemoteDate date, const Uuid& id);

    // Profile operations.
    [[nodiscard]] Profile savable(Profile changed) const;
    void forgetProfile(const Uuid& id);
    void forgetServer(const Uuid& id);
    void keepSharedScope(const Profile& old, const Profile& changed);

    MainContext& context;
    const Options options;
    const JobWork jobWork;
    std::set<ModelObserver*> observers;
    SavedState state;
    bool savesLater = false; // see saveTogether()
    bool saveIsDue = false;
    std::optional<StateSaver> saver; // nothing when the saved state could not be loaded
    std::optional<std::filesystem::path> stateFolder;
    std::map<Uuid, ProfileStatus> statuses;
    std::optional<Uuid> selected;
    std::optional<std::string> alertText;
    std::map<Uuid, Job> jobs;
    std::map<Uuid, RemoteReview> postponed; // of profiles without a job
    Published published;
    std::optional<RemoteReview> presented;
    // Paths of the last review that were neither kept nor downloaded since. The next check offers them whatever the
    // dates of the local files are: an edit of the local file must not overwrite what nobody has decided on.
    std::map<Uuid, PathSet> unanswered;
    std::map<Uuid, PathSet> disputed; // by the last worker: see event::ServerChanged
    std::map<Uuid, PathSet> missing;  // see missingOnServer()
    std::map<Uuid, Resend> resends;   // requested, and not begun; see ResendRequest
    std::map<Uuid, std::shared_ptr<ServerTraits>> serverTraits;
    std::map<Uuid, std::shared_ptr<TaskLane>> lanes; // outlive the jobs: a stopped task may still be in its last step
    std::map<Uuid, std::string> passwords;
    std::vector<PrivateItem> privateItems; // see Options
    // Watched by what is posted to the main context, which may come when the model has gone.
    std::shared_ptr<AppModel*> self = std::make_shared<AppModel*>(this);
    PasswordCalls passwordCalls;
    BackgroundTasks tasks;
};

} // namespace zembrastel
