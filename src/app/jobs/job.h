// The job of one profile from its start to its end: its state, and the steps to the next state.
//
// Main context. A job has at most one task, which belongs to its state, and at most one review, which belongs to the
// state that waits for the decision. Each step is allowed in certain states. In any other state it changes nothing,
// starts no task and returns false: a late result or decision has no effect, and a running task is never replaced by
// another.
#pragma once

#include "app/remote_review.h"
#include "model/profile.h"
#include "model/server_version.h"
#include "sync/retry_wait.h"
#include "transport/compare/server_check.h"
#include "transport/server_traits.h"
#include "transport/transfer_control.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <variant>

namespace zembrastel {

// The values that the tasks of one job use.
struct Assignment {
    explicit Assignment(Profile assigned) : profile(std::move(assigned)) {}

    Profile profile;
    std::string password = {};
    Uuid generation = Uuid::random(); // results of another one are dropped
    std::shared_ptr<TransferControl> control = std::make_shared<TransferControl>();
    std::shared_ptr<RetryWait> retryWait = std::make_shared<RetryWait>();
    std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>();
    ServerVersions seen = {};    // by the server check
    PathSet toSend = {};         // published files that are sent again
    bool checkSkipped = false;   // by the user
    bool filesMayBeGone = false; // see SyncWorker
};

class Job {
public:
    struct ReadingPassword {};
    struct Checking {
        std::stop_source task;
    };
    // The server check, which its task tries again.
    struct CheckFailed {
        std::stop_source task;
        std::string message;
    };
    // The first check found files that the server has already.
    struct AwaitingChoice {
        ServerCheck check; // with `first`
    };
    // Their contents are compared before the choice. The control is its own: the job goes on if it is stopped.
    struct ComparingContents {
        std::stop_source task;
        ServerCheck check;
        std::shared_ptr<TransferControl> control;
    };
    struct AwaitingDecision {
        RemoteReview review;
    };
    struct DownloadingReview {
        std::stop_source task;
    };
    // The download after a review, or the comparison of contents. Only the user can continue.
    struct DownloadFailed {
        std::string message;
    };
    struct InitialDownload {
        std::stop_source task;
    };
    struct Watching {
        std::stop_source task;
    };
    struct Ended {};

    using State = std::variant<
        ReadingPassword, Checking, CheckFailed, AwaitingChoice, ComparingContents, AwaitingDecision, DownloadingReview,
        DownloadFailed, InitialDownload, Watching, Ended>;

    // Starts the task of the next state. If it throws, the state stays.
    using StartTask = std::function<std::stop_source()>;

    // The traits of the server outlive the job.
    explicit Job(const Profile& profile, std::shared_ptr<ServerTraits> traits = std::make_shared<ServerTraits>())
        : assignment(profile) {
        assignment.traits = std::move(traits);
    }

    [[nodiscard]] const Assignment& work() const { return assignment; }
    [[nodiscard]] const State& state() const { return current; }
    template <class Wanted>
    [[nodiscard]] bool is() const {
        return std::holds_alternative<Wanted>(current);
    }

    // The review that waits for a decision; nullptr in any other state.
    [[nodiscard]] const RemoteReview* review() const;

    // What the first check found, until the user has chosen; nullptr in any other state.
    [[nodiscard]] const ServerCheck* firstCheck() const;

    // Why no upload starts; nullptr in any other state.
    [[nodiscard]] const std::string* failure() const;

    // The user confirms that the files of an empty local folder are deleted.
    void letFilesBeGone() { assignment.filesMayBeGone = true; }

    // Keeps the password for the tasks.
    [[nodiscard]] bool takePassword(std::string password);

    // Compares with the server: first, and again after a choice or a review's download that left files out.
    [[nodiscard]] bool check(const StartTask& start);

    // Keeps what the check saw, for the worker.
    void keepSeen(ServerVersions versions) { assignment.seen = std::move(versions); }

    // Keeps the published files that are sent again once the worker starts.
    void keepToSend(PathSet paths) { assignment.toSend = std::move(paths); }

    // The user starts the worker without a check.
    void skipCheck() { assignment.checkSkipped = true; }

    // The check failed; its task goes on.
    [[nodiscard]] bool failCheck(std::string message);

    // The first check found files that the server has already.
    [[nodiscard]] bool awaitChoice(ServerCheck check);

    // Compares contents before the choice. Its transfers use `control`.
    [[nodiscard]] bool compareContents(const StartTask& start, std::shared_ptr<TransferControl> control);

    // Adds a result to what the user chooses from. Ignored without such a choice.
    void addCompared(const std::string& path, bool equal);

    // Whether the comparison with this control runs.
    [[nodiscard]] bool comparesWith(const std::shared_ptr<TransferControl>& control) const;

    // Ends that comparison: the choice waits again. Returns without waiting.
    [[nodiscard]] bool endComparison();

    // The check found files that are newer on the server.
    [[nodiscard]] bool awaitDecision(RemoteReview review);

    // Downloads what was decided on.
    [[nodiscard]] bool download(const StartTask& start);
    [[nodiscard]] bool failDownload(std::string message);

    // Downloads the profile's contents before the first check.
    [[nodiscard]] bool downloadInitially(const StartTask& start);

    // Uploads what changes: nothing was newer, all was decided and carried out, or the user skipped the check.
    [[nodiscard]] bool watch(const StartTask& start);

    // Stops the task and cancels its transfers, from any state. Returns without waiting.
    void end();

private:
    template <class... From>
    [[nodiscard]] bool isOneOf() const {
        return (is<From>() || ...);
    }
    [[nodiscard]] std::stop_source* task();
    [[nodiscard]] ServerCheck* choice();

    Assignment assignment;
    State current;
};

} // namespace zembrastel
