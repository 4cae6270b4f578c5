// The model of the program: the profiles, what each does, and what the user does with them.
//
// Main context: every call comes from there, and none blocks on a server. The parts are Records (what is saved), Jobs
// (what runs), Reviews, Statuses and Passwords; this class adds what the user does with profiles, and is all that the
// rest of the program sees.
#pragma once

#include "app/demo.h"
#include "app/jobs/jobs.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// What the user reads when the saved state could not be loaded.
[[nodiscard]] std::string loadFailure(const std::exception& error);

// The user's answer to the question what a new place on a server holds. It is asked when a profile with uploaded files
// moves there.
enum class NewPlace {
    unknown,   // nothing: the next check is a first comparison, which asks
    sameFiles, // the files were moved: they count as uploaded
    otherFiles // they are all uploaded, and replace files of the same name that are not newer
};

class AppModel {
public:
    using PasswordAccess = zembrastel::PasswordAccess;

    struct Options {
        std::optional<Demonstration> demonstration = std::nullopt; // in place of a store, a secret store and servers
        std::optional<StateStore> storeOverride = std::nullopt;
        // Why there is no store to load from, if there is none: counts as a failure to load.
        std::exception_ptr storeFailure = nullptr;
        std::map<Uuid, std::string> sessionPasswords = {}; // known before, never stored
        PasswordAccess passwordAccess = {};
        JobWork work = serverWork();
        Clock& clock = systemClock();
        // Never published, in addition to the private items of the saved state.
        std::vector<PrivateItem> privateItems = {};
        // False ends each job where its worker would start: for a program that only checks and reviews.
        bool watches = true;
    };

    // Loads the saved state. If that fails there are no profiles, `alert` says why, and nothing is ever saved.
    AppModel(MainContext& mainContext, Options chosen);
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;
    // Shuts down and waits for the threads, which takes less than a second.
    ~AppModel();

    // The observer must outlive the model or be removed.
    void observe(ModelObserver& observer) { observers.add(observer); }
    void forget(ModelObserver& observer) { observers.remove(observer); }

    [[nodiscard]] const std::vector<Profile>& profiles() const { return records.profiles(); }
    // nullptr if there is none.
    [[nodiscard]] const Profile* profile(const Uuid& id) const { return records.profile(id); }
    [[nodiscard]] const ProfileStatus& status(const Uuid& id) const { return statuses.of(id); }
    [[nodiscard]] const std::optional<Uuid>& selection() const { return selected; }
    [[nodiscard]] const std::optional<std::string>& alert() const { return alertText; }
    // Those of jobs that await a decision, and the postponed ones.
    [[nodiscard]] const std::map<Uuid, RemoteReview>& reviews() const { return pendingReviews.all(); }
    [[nodiscard]] const std::optional<RemoteReview>& presentedReview() const { return pendingReviews.presented(); }
    // Why uploads of these profiles do not start: a server check, or a review's download, that failed.
    [[nodiscard]] const std::map<Uuid, std::string>& checkFailures() const { return pendingReviews.failures(); }
    // The same failure with its kind; that of a profile without one has no message.
    [[nodiscard]] Failure checkFailure(const Uuid& id) const;
    // Published files that the last server check did not find on the server. They are sent again only on request.
    [[nodiscard]] const PathSet& missingOnServer(const Uuid& id) const { return pendingReviews.missing(id); }
    [[nodiscard]] const FileMap& baseline(const Uuid& id) const { return records.baseline(id); }
    [[nodiscard]] const RemoteDates& remoteDates(const Uuid& id) const { return records.remoteDates(id); }

    void select(std::optional<Uuid> id);
    // Shows the user a message in an alert.
    void setAlert(std::string text);
    void dismissAlert();

    // See Passwords.
    void keepForSession(const Uuid& id, const std::string& password) { passwords.keep(id, password); }
    void withPassword(const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed) {
        passwords.read(id, std::move(then), std::move(failed));
    }
    void storePassword(const Uuid& id, const std::string& password, Passwords::Done done) {
        passwords.store(id, password, std::move(done));
    }

    // Removes what was stored for a profile that does not exist, such as one that was removed while the secret store
    // waited. If that fails, `alert` says so.
    void removeStrayPassword(const Uuid& id);

    // Throws the reason for which save() would refuse this profile. Changes nothing.
    void checkSavable(const Profile& changed) const { (void)savable(changed); }

    // A demonstration touches no network, disk or secret store.
    [[nodiscard]] bool isDemo() const { return options.demonstration.has_value(); }

    // Whether there is a job.
    [[nodiscard]] bool running(const Uuid& id) const { return jobs.running(id); }

    // Whether the job is past the server check and all decisions, so that files are uploaded (or downloaded initially).
    [[nodiscard]] bool watching(const Uuid& id) const { return jobs.watching(id); }

    // Starts watching: the password is read, then the server is checked, or the initial download begins if one is due.
    // Drops a postponed review. A refusal shows in the status.
    void start(const Uuid& id) { jobs.start(id); }

    // The user confirms that the files of status().filesMissing() are gone: the profile restarts, and they no longer
    // count as synchronised. Those that exist again by then stay. Does nothing without that status.
    void forgetMissingFiles(const Uuid& id);

    // The next successful server check determines the files to send again. They are sent when watching starts, and stay
    // in the baseline until then. A file on the server that this program has not uploaded there, and that is not equal,
    // is offered for review first. The request is not saved: for a program that ends when this work is done.
    void planResend(const Uuid& id, Resend what) { pendingReviews.unsettled(id).resend = what; }

    // The same at once: restarts the profile, even a paused one. The request is saved: if the program ends first, its
    // next start continues. Throws if the request could not be saved; it still takes effect.
    void sendAgain(const Uuid& id, Resend what);

    // The user accepts that the missing files are gone: they are not reported again, unless they come back and vanish
    // once more. Throws if this could not be saved; it still takes effect.
    void leaveMissing(const Uuid& id);

    // Starts every enabled profile.
    void startEnabled();

    // Every job that waits for a retry retries at once, and begins again with a short wait if that fails. Called when
    // the cause of the failures may be gone. No job is stopped; jobs that do not wait are not affected.
    void retryNow() { jobs.retryNow(); }
    // The same for one profile, and for one file of status().refused.
    void retryNow(const Uuid& id) { jobs.retryNow(id); }
    void retryFile(const Uuid& id, const std::string& path) { jobs.retryFile(id, path); }

    // Ends the profile's job and drops its review. Returns at once; no result of the job arrives afterwards.
    void stopJob(const Uuid& id) { jobs.stop(id); }

    // Stops every job and saves what is not yet saved.
    void shutdown();

    // The user's pause and resume, which the next start of the program remembers. A profile that runs already, or is
    // paused already, stays so. Throw if the change could not be saved; it still takes effect, and saving is retried.
    void pause(const Uuid& id);
    void resume(const Uuid& id);

    // Pauses a running profile, and resumes any other.
    void toggle(const Uuid& id);

    // Creates or changes a profile. Without a password the stored one stays. `initialBaseline`, if given, becomes what
    // counts as synchronised. After a change of the sync contents they are downloaded again before watching resumes.
    // Throws SyncError with nothing changed, or, if only the writing failed, with the change in force and the
    // profile stopped.
    void save(
        Profile changed, const std::optional<std::string>& password,
        std::optional<FileMap> initialBaseline = std::nullopt);

    // Changes a profile with uploaded files that now has another place on a server. Failures as above.
    void saveMoved(const Profile& changed, NewPlace found);

    // Writes the state once for all calls of save() that `changes` makes. Throws what save() would if writing fails,
    // with the changes in force. `changes` throws nothing.
    void saveTogether(const std::function<void()>& changes) { records.persistOnce(changes); }

    // Removes a profile and its password; all files stay. The password is removed first, however long the secret store
    // takes. If that fails, `alert` says so and nothing changes; if only saving fails, the profile is gone.
    void remove(const Uuid& id);

    // Presents the profile's review, if it has one; closing hides it without a decision.
    void openReview(const Uuid& id) { pendingReviews.open(id); }
    void closeReview() { pendingReviews.close(); }

    // "Stay paused": stops the profile and postpones its review. Does nothing if the profile's job does not await a
    // decision on this review.
    void pauseReview(Uuid id, Uuid reviewId);

    // Carries out a decision on this review: the server's version of the selected paths is downloaded, for all others
    // of the review the local version stays; then watching starts. A file that changed or vanished meanwhile is not
    // downloaded, and then the server is checked again first.
    //
    // The profile of a postponed review is resumed. The decision is carried out if the new check finds the same
    // versions; otherwise the new review is shown.
    [[nodiscard]] Decision resolveReview(Uuid id, Uuid reviewId, const PathSet& selectedPaths);

    // What the first check found of a site that is already on the server: nothing is uploaded before the user chose.
    // nullptr if there is no such choice. The comparison of the contents adds to it; observers get reviewChanged().
    [[nodiscard]] const FirstComparison* firstComparison(const Uuid& id) const { return jobs.choice(id); }
    [[nodiscard]] bool comparingContents(const Uuid& id) const { return jobs.comparingContents(id); }
    void compareContents(const Uuid& id) { jobs.compareContents(id); }
    void stopComparing(const Uuid& id) { jobs.stopComparing(id); }
    // The choice. The server is checked again before anything is uploaded.
    [[nodiscard]] Decision adopt(const Uuid& id, Adoption what) { return jobs.adopt(id, what); }

    void retryCheck(const Uuid& id);

    // Watches without comparing with the server first.
    void startWithoutCheck(const Uuid& id) { jobs.startWithoutCheck(id); }

private:
    void load();
    void resumeWith(const Uuid& id, const Jobs::Earlier& earlier);
    [[nodiscard]] Profile savable(Profile changed) const;
    void forgetProfile(const Uuid& id);
    void forgetServer(const Uuid& id);

    const Options options;
    Observers observers;
    Statuses statuses;
    Records records;
    Reviews pendingReviews;
    Passwords passwords;
    std::optional<Uuid> selected;
    std::optional<std::string> alertText;
    Jobs jobs; // last: its threads end before what they use
};

} // namespace zembrastel
