#include "cli/commands/review.h"

#include "app/context/main_queue.h"
#include "cli/session/observing.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/relative_path.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    std::vector<std::string> download;
    bool list = false;
    bool downloadAll = false;
    bool keepAll = false;
    bool compareAll = false;

    [[nodiscard]] bool decides() const { return downloadAll || keepAll || !download.empty(); }
};

CommandError lacksDownload(const Profile& profile) {
    return {ExitCode::failed, inQuotes(profile.name) + " still has its initial download to do; run watch first."};
}

// Notes what a decision that is being carried out says.
class DecisionReport final : public ModelObserver {
public:
    explicit DecisionReport(Output& where) : output(where) {}

    void activityLogged(const Uuid&, const Activity& activity) override {
        if (activity.error) {
            failure = activity.text;
        } else if (!output.json()) {
            output.line(oneLine(activity.text));
        }
    }

    std::string failure; // the last one; empty while all is well

private:
    Output& output;
};

// What is known of the server's newer files, and who acts on a decision.
class Review {
public:
    Review(std::vector<Profile> all, Profile reviewed, const Surroundings& surroundings)
        : profile(std::move(reviewed)), around(surroundings), profiles(std::move(all)) {}
    virtual ~Review() = default;

    // What is newer on the server.
    virtual std::vector<RemoteChange> check() = 0;

    // Downloads the server's version of the selected paths and keeps the local one of the others.
    virtual void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) = 0;

    // How it goes on after that.
    [[nodiscard]] virtual const char* afterwards() const = 0;

    void list(const std::vector<RemoteChange>& changes) {
        if (around.output.json()) {
            JsonLine object("review");
            addReview(object, profile, changes, systemClock());
            around.output.line(object);
            return;
        }
        if (changes.empty()) {
            around.output.line("Nothing is newer on the server.");
            return;
        }
        around.output.line(
            counted(changes.size(), "file") + (comparesAll ? " different" : " newer") + " on the server:");
        for (const auto& change : changes) around.output.line("  " + describeChange(change));
        const std::string command = commandLine(
            around.options, comparesAll ? "review --compare-all" : "review", unambiguousName(profiles, profile));
        around.output.note("To decide, one of:");
        around.output.note(command + " --download PATH...");
        around.output.note(command + " --download-all");
        around.output.note(command + " --keep-all");
    }

protected:
    static constexpr const char* restStays = "What was downloaded already stays; the next review shows the rest.";

    [[nodiscard]] CommandError checkFailure(const std::string& failure) const {
        return serverFailure(
            profile, "compare the local folder " + oneLine(profile.localFolder) + " with the server", failure,
            "Nothing was changed.");
    }

    [[nodiscard]] CommandError checkRefused(const std::string& reason) const {
        return {
            ExitCode::failed,
            "Cannot check the server of " + inQuotes(profile.name) + ": " + sentence(reason) + " Nothing was changed."};
    }

    [[nodiscard]] CommandError downloadFailure(const std::string& failure) const {
        return serverFailure(profile, "download all that was chosen from the server", failure, restStays);
    }

    // After a download that left files out, or could not be finished.
    [[nodiscard]] CommandError leftOutOf(const std::vector<std::string>& paths, bool reviewWaits) const {
        std::string listed;
        for (const auto& path : paths) listed += (listed.empty() ? "" : ", ") + inQuotes(path);
        const std::string next =
            reviewWaits ? " They wait for another review." : " Nothing is newer on the server any more.";
        return {
            reviewWaits ? ExitCode::reviewWaiting : ExitCode::failed,
            "Not downloaded, because they changed or vanished meanwhile: " + listed + "." + next};
    }

    void tellOutcome(const std::string& path, bool kept, bool downloaded) {
        if (!kept && !downloaded) leftOut.push_back(path);
        if (around.output.json()) {
            if (!kept && !downloaded) return;
            JsonLine object(kept ? "kept" : "downloaded");
            object.text("profile", profile.name).text("id", profile.id.text()).text("path", path);
            around.output.line(object);
        } else if (kept) {
            around.output.line("Kept local copy: " + printable(path));
        }
    }

    const Profile profile;
    const Surroundings& around;
    bool comparesAll = false;
    std::vector<std::string> leftOut; // neither kept nor downloaded by the decision

private:
    const std::vector<Profile> profiles;
};

// The command's own, while no program runs.
class OwnReview final : public Review {
public:
    OwnReview(
        AppModel& used, MainQueue& usedQueue, const Profile& reviewed, const Surroundings& surroundings, bool ofAll)
        : Review(used.profiles(), reviewed, surroundings), model(used), queue(usedQueue) {
        comparesAll = ofAll;
        if (ofAll) model.planResend(reviewed.id, Resend::everything);
    }

    std::vector<RemoteChange> check() override {
        const Uuid& id = profile.id;
        model.start(id);
        runUntil([this, &id] {
            return model.reviews().contains(id) || model.checkFailures().contains(id) || !model.running(id);
        });
        if (const auto failed = model.checkFailures().find(id); failed != model.checkFailures().end()) {
            throw checkFailure(failed->second);
        }
        if (const auto found = model.reviews().find(id); found != model.reviews().end()) return found->second.changes;
        if (model.status(id).failed) throw checkRefused(model.status(id).detail);
        return {};
    }

    void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) override {
        const Uuid& id = profile.id;
        DecisionReport report(around.output);
        const Observing observing(model, report);
        if (model.resolveReview(id, model.reviews().at(id).reviewId, selected) != Decision::accepted) {
            throw CommandError(ExitCode::failed, sentence(model.alert().value_or("")) + " Nothing was decided.");
        }
        try {
            runUntil([this, &id] {
                return model.checkFailures().contains(id) || model.reviews().contains(id) || !model.running(id);
            });
        } catch (const Cancelled&) {
            throw CommandError(ExitCode::failed, std::string("Interrupted. ") + restStays);
        }
        const auto failed = model.checkFailures().find(id);
        const std::string failure = failed == model.checkFailures().end() ? "" : failed->second;
        for (const auto& change : changes) {
            tellOutcome(change.path, !selected.contains(change.path), isDownloaded(change));
        }
        const bool waitsAgain = model.reviews().contains(id);
        model.shutdown();
        if (!failure.empty()) throw downloadFailure(failure);
        if (!leftOut.empty()) throw leftOutOf(leftOut, waitsAgain);
        if (!report.failure.empty()) throw CommandError(ExitCode::failed, sentence(report.failure));
    }

    [[nodiscard]] const char* afterwards() const override { return "Decided. Watching can go on."; }

private:
    void runUntil(const std::function<bool()>& condition) {
        const auto interruptible = around.interrupt.during([this] { queue.quit(); });
        if (!queue.runUntil(condition)) throw Cancelled();
    }

    [[nodiscard]] bool isDownloaded(const RemoteChange& change) const {
        const auto* known = model.remoteDates(profile.id).find(change.path);
        return known != nullptr && *known == change.remoteDate;
    }

    AppModel& model;
    MainQueue& queue;
};

// That of the program that runs, which acts on the decision.
class RunningReview final : public Review {
public:
    RunningReview(
        RunningProgram& asked, std::vector<Profile> all, const Profile& reviewed, const Surroundings& surroundings)
        : Review(std::move(all), reviewed, surroundings), program(asked) {}

    std::vector<RemoteChange> check() override {
        std::vector<RemoteChange> changes;
        const auto failed = program.ask(
            {.kind = ControlRequest::Kind::review, .profiles = {profile.id}}, around.interrupt,
            [&](const ControlAnswer& answer) {
                if (const auto* review = std::get_if<answer::Review>(&answer)) {
                    changes = review->changes;
                    revision = review->revision;
                }
            });
        if (!failed) return changes;
        if (failed->reason == Reason::server) throw checkFailure(failed->text);
        if (failed->reason == Reason::refused) throw checkRefused(failed->text);
        if (failed->reason == Reason::needsDownload) throw lacksDownload(profile);
        throw CommandError(
            ExitCode::failed, inQuotes(profile.name)
                                  + " is paused in the running program, which then does not look at "
                                    "the server. resume has it compared again; check lists what is "
                                    "newer there.");
    }

    void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) override {
        DecisionReport report(around.output);
        ControlRequest request{.kind = ControlRequest::Kind::decide, .profiles = {profile.id}, .revision = revision};
        request.downloadAll = selected.size() == changes.size();
        if (!request.downloadAll) request.download.assign(selected.begin(), selected.end());
        std::optional<answer::Failed> failed;
        try {
            failed = program.ask(request, around.interrupt, [&](const ControlAnswer& answer) {
                if (const auto* told = std::get_if<answer::Activity>(&answer)) {
                    report.activityLogged(told->profile, told->line);
                } else if (const auto* outcome = std::get_if<answer::Outcome>(&answer)) {
                    tellOutcome(outcome->path, outcome->kept, outcome->downloaded);
                }
            });
        } catch (const Cancelled&) {
            throw CommandError(ExitCode::failed, "Interrupted. The running program goes on with what was decided.");
        }
        if (failed) throw undecided(*failed);
        if (!leftOut.empty()) throw leftOutOf(leftOut, program.reviewWaits());
        if (!report.failure.empty()) throw CommandError(ExitCode::failed, sentence(report.failure));
    }

    [[nodiscard]] const char* afterwards() const override { return "Decided. Watching goes on."; }

private:
    using Reason = answer::Failed::Reason;

    [[nodiscard]] CommandError undecided(const answer::Failed& failed) const {
        switch (failed.reason) {
        case Reason::server:
            return downloadFailure(failed.text);
        case Reason::otherReview:
            return {ExitCode::failed, std::string(outdatedDecision) + " --list shows what there is."};
        case Reason::paused:
            return {
                ExitCode::failed, inQuotes(profile.name)
                                      + " is paused in the running program. Nothing more was done; "
                                        "resume has the server compared again."};
        default:
            return {ExitCode::failed, sentence(failed.text) + " Nothing more was done."};
        }
    }

    RunningProgram& program;
    std::string revision;
};

PathSet selectedPaths(const Request& request, const std::vector<RemoteChange>& changes) {
    PathSet offered;
    for (const auto& change : changes) offered.insert(change.path);
    if (request.downloadAll) return offered;
    PathSet selected;
    std::string unknown;
    for (const auto& typed : request.download) {
        const std::string path = relativePath(typed);
        if (!offered.contains(path)) unknown += (unknown.empty() ? "" : ", ") + inQuotes(typed);
        selected.insert(path);
    }
    if (unknown.empty()) return selected;
    throw CommandError(
        ExitCode::failed, "Not among the files that are newer on the server: " + unknown
                              + ". Nothing was decided; --list shows what there is.");
}

ExitCode carryOut(Review& review, const Request& request, Output& output) {
    const auto changes = review.check();
    if (!request.decides()) {
        review.list(changes);
        return changes.empty() ? ExitCode::done : ExitCode::reviewWaiting;
    }
    const auto selected = selectedPaths(request, changes);
    if (changes.empty()) {
        review.list(changes);
    } else {
        review.decide(changes, selected);
        output.note(review.afterwards());
    }
    return ExitCode::done;
}

ExitCode reviewInProgram(RunningProgram& program, const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    RunningReview review(program, state.profiles, profile, around);
    return carryOut(review, request, around.output);
}

ExitCode reviewAlone(const StateStore& store, const Surroundings& around, const Request& request) {
    const InstanceLock held = holdState(store);
    MainQueue queue;
    AppModel model(queue, {.storeOverride = store, .passwordAccess = {.read = readStoredPassword}, .watches = false});
    requireLoaded(model);
    const Profile profile = chooseProfile(model.profiles(), request.name);
    if (profile.needsDownload) throw lacksDownload(profile);
    if (const auto given = givenPassword(around)) model.keepForSession(profile.id, *given);
    const ProgressReport progress(model, around.output);
    OwnReview review(model, queue, profile, around, request.compareAll);
    return carryOut(review, request, around.output);
}

ExitCode reviewProfile(const Surroundings& around, const Request& request) {
    const StateStore store = openState(around.options);
    return RunningProgram::askOrHold(
        store, [&](RunningProgram& program) { return reviewInProgram(program, around, request); },
        [&] { return reviewAlone(store, around, request); });
}

} // namespace

void addReviewCommand(CLI::App& parent, Command& chosen) {
    auto* command =
        parent.add_subcommand("review", "Decide what to do with files that are newer on the server; uploads nothing");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    auto* list = command->add_flag("--list", request->list, "Only show them (the default); nothing is changed");
    auto* download =
        command
            ->add_option(
                "--download", request->download,
                "Replace these local files by the server's, with a backup\nunder .zembrastel-backups, and keep "
                "the local version of\nall others")
            ->type_name("PATH");
    auto* downloadAll =
        command->add_flag("--download-all", request->downloadAll, "Replace all of them by the server's, with backups");
    auto* keepAll = command->add_flag("--keep-all", request->keepAll, "Keep the local version of all of them");
    command->add_flag(
        "--compare-all", request->compareAll,
        "Review every file that differs on the server, as push --all\nfinds them; what is kept is uploaded next");
    const std::vector<CLI::Option*> choices{list, download, downloadAll, keepAll};
    for (auto* choice : choices) {
        for (auto* other : choices) {
            if (choice != other) choice->excludes(other);
        }
    }
    command->footer("A local version that is kept is uploaded by the next watch if it was edited or never\n"
                    "uploaded before. The same server version is not offered again.\n"
                    "A running program, window or watch, acts on the decision and goes on.\n\n"
                    "Examples:\n"
                    "  zembrastel-cli review \"My website\"\n"
                    "  zembrastel-cli review \"My website\" --download index.html images/logo.svg");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return reviewProfile(around, *request); };
    });
}

} // namespace zembrastel::cli
