// The jobs of all profiles: each reads the password, checks the server, waits for decisions, and then watches.
//
// Main context. Tasks run on threads of their own, one at a time for each profile, and come back through the main
// context. What arrives from a job that was stopped or replaced meanwhile is dropped. A profile has at most one job:
// see job.h. The parts that a job reports to are those of the model and outlive this object.
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/lifetime.h"
#include "app/jobs/job.h"
#include "app/jobs/job_work.h"
#include "app/passwords.h"
#include "app/records.h"
#include "app/reviews.h"
#include "app/statuses.h"
#include "sync/worker_event.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// A decision on a postponed review, for the check that comes first.
struct EarlierDecision {
    std::vector<RemoteChange> changes;
    PathSet selected;
};

class Jobs {
public:
    struct Parts {
        MainContext& context;
        Clock& clock;
        const Observers& observers;
        Records& records;
        Statuses& statuses;
        Reviews& reviews;
        Passwords& passwords;
        std::function<void(std::string message)> alert;
    };
    struct Settings {
        JobWork work;
        std::vector<PrivateItem> privateItems; // neither published nor replaced
        bool watches = true;                   // false ends a job where its worker would start
    };
    using Earlier = std::optional<EarlierDecision>;

    Jobs(Parts toUse, Settings chosen) : parts(std::move(toUse)), settings(std::move(chosen)), tasks(parts.context) {}

    void keepPrivate(std::vector<PrivateItem> items);

    [[nodiscard]] bool running(const Uuid& id) const { return jobs.contains(id); }
    [[nodiscard]] bool watching(const Uuid& id) const;
    // A running profile with the same local folder, other than this one; nullptr if there is none.
    [[nodiscard]] const Profile* runningInFolder(const std::string& localFolder, const Uuid& except) const;
    // The review that waits for a decision; nullptr if there is none.
    [[nodiscard]] const RemoteReview* review(const Uuid& id) const;

    // Starts the profile unless it runs, and drops its postponed review. A refusal shows in the status.
    void start(const Uuid& id, const Earlier& earlier = std::nullopt, bool filesMayBeGone = false);
    // Watches without comparing with the server first.
    void startWithoutCheck(const Uuid& id);
    // Ends the job and drops the profile's review. Returns at once.
    void stop(const Uuid& id);
    void stopAll();
    // Waits for the threads of stopped jobs, which takes less than a second.
    void join() { tasks.stopAll(); }
    // Ends the waits of all jobs that try something again.
    void retryNow();
    // The same for one job, and for one file of it that waits after a failure of its own.
    void retryNow(const Uuid& id);
    void retryFile(const Uuid& id, const std::string& path);

    // Carries out the decision on the review that waits: these paths are downloaded, the others stay.
    [[nodiscard]] Decision decide(const Uuid& id, const PathSet& downloads);
    void publishReview(const Uuid& id);

    // What the first check found, until the user has chosen what counts as published; nullptr if there is no choice.
    [[nodiscard]] const FirstComparison* choice(const Uuid& id) const;
    [[nodiscard]] bool comparingContents(const Uuid& id) const;
    // Compares the contents of the files of equal size that were not compared yet. Does nothing without a choice.
    void compareContents(const Uuid& id);
    void stopComparing(const Uuid& id);
    // Records the choice and checks the server again. Stops a comparison.
    [[nodiscard]] Decision adopt(const Uuid& id, Adoption what);

    // Forgets what was learnt about the profile's server.
    void forgetServer(const Uuid& id) { serverTraits.erase(id); }
    // The profile is removed.
    void forget(const Uuid& id) { lanes.erase(id); }

private:
    // Start, steps and end.
    void checkStartable(const Profile& profile) const;
    void refuse(const Uuid& id, const std::string& message);
    void begin(const Uuid& id, const Earlier& earlier, std::string password);
    void beginWithoutCheck(const Uuid& id, std::string password);
    Job& open(const Profile& profile);
    [[nodiscard]] bool step(const Uuid& id, const std::function<bool(Job&)>& take);
    [[nodiscard]] std::stop_source startTask(const Uuid& id, BackgroundTasks::Body body);
    void launchWorker(const Uuid& id);
    [[nodiscard]] SyncWorker workerFor(const Uuid& id);
    void finishWithoutWatching(const Uuid& id);

    // Results of tasks.
    [[nodiscard]] bool isCurrent(const Uuid& id, const Uuid& generation) const;
    [[nodiscard]] std::function<void()> ifCurrent(
        const Uuid& id, const Uuid& generation, std::function<void()> work) const;
    [[nodiscard]] EventSink eventSink(const Uuid& id, const Uuid& generation, const std::stop_token& stop);

    // Events of workers.
    void receive(const WorkerEvent& event, const Uuid& id);
    [[nodiscard]] Failure withNetwork(Failure failure, const Uuid& id) const;
    void apply(const event::Status& event, const Uuid& id);
    void apply(const event::Activity& event, const Uuid& id);
    void apply(const event::FilesRefused& event, const Uuid& id);
    void apply(const event::Uploaded& event, const Uuid& id);
    void apply(const event::ContentsUnchanged& event, const Uuid& id);
    void apply(const event::Baseline& event, const Uuid& id);
    void apply(const event::Downloaded& event, const Uuid& id);
    void apply(const event::RemoteDate& event, const Uuid& id);
    void apply(const event::DownloadFinished& event, const Uuid& id);
    void apply(const event::FolderReturned& event, const Uuid& id);
    void apply(const event::ServerChanged& event, const Uuid& id);
    void apply(const event::PassEnded& event, const Uuid& id);

    // Server check.
    void showChecking(const Uuid& id);
    void startCheck(const Uuid& id, const Earlier& earlier);
    [[nodiscard]] ServerRecord recordFor(const Uuid& id);
    void finishCheck(ServerCheck check, const Uuid& id, const Earlier& earlier);
    void failCheck(const Failure& failure, const Uuid& id, bool willRetry);
    void recordRecognised(const AnnouncedFiles& recognised, const Uuid& id);
    void findToSend(ServerCheck check, const Uuid& id);
    [[nodiscard]] bool sendsEverything(const Uuid& id);
    void endResend(const Uuid& id);

    // Choice.
    void askForChoice(const ServerCheck& check, const Uuid& id);
    void showChoice(const Uuid& id);
    void addCompared(const Uuid& id, const std::string& path, bool equal);
    void finishComparing(const Uuid& id);
    void failComparing(const Failure& reported, const Uuid& id);
    void recordChoice(const Uuid& id, const ServerCheck& check, Adoption what);

    // Review.
    void askForDecision(const Uuid& id);
    void acknowledgeSizes(const std::vector<RemoteChange>& kept, const Uuid& id);
    void startReviewDownload(const Uuid& id, const std::vector<RemoteChange>& approved);
    void recordDownload(const Uuid& id, const RemoteChange& change, const Fingerprint& installed);
    void finishReviewDownload(const Uuid& id, const PathSet& leftOut);

    const Parts parts;
    Settings settings;
    std::map<Uuid, Job> jobs;
    std::map<Uuid, std::shared_ptr<ServerTraits>> serverTraits;
    std::map<Uuid, std::shared_ptr<TaskLane>> lanes; // outlive the jobs: a stopped task may still be in its last step
    Lifetime lifetime;
    BackgroundTasks tasks; // last: its threads end first
};

} // namespace zembrastel
