#include "cli/review.h"

#include "app/main_queue.h"
#include "cli/observing.h"
#include "cli/password_source.h"
#include "cli/presentation.h"
#include "cli/profile_choice.h"
#include "cli/progress_report.h"
#include "cli/relative_path.h"
#include "cli/review_text.h"
#include "cli/server_call.h"
#include "cli/state_folder.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel {
namespace {

struct Request {
    std::string name;
    std::vector<std::string> download;
    bool list = false;
    bool downloadAll = false;
    bool keepAll = false;

    [[nodiscard]] bool decides() const { return downloadAll || keepAll || !download.empty(); }
};

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

// One run of the command, on a profile.
class Review {
public:
    Review(AppModel& used, MainQueue& usedQueue, const Profile& reviewed, const Surroundings& surroundings)
        : model(used), queue(usedQueue), profile(reviewed), around(surroundings) {}

    // What is newer on the server.
    std::vector<RemoteChange> check() {
        const Uuid& id = profile.id;
        model.start(id);
        runUntil([this, &id] {
            return model.reviews().contains(id) || model.checkFailures().contains(id) || !model.running(id);
        });
        if (const auto failed = model.checkFailures().find(id); failed != model.checkFailures().end()) {
            throw serverFailure(
                profile, "compare the local folder " + oneLine(profile.localFolder) + " with the server",
                failed->second, "Nothing was changed.");
        }
        if (const auto found = model.reviews().find(id); found != model.reviews().end()) return found->second.changes;
        if (model.status(id).failed) {
            throw CommandError(
                ExitCode::failed, "Cannot check the server of " + inQuotes(profile.name) + ": "
                                      + sentence(model.status(id).detail) + " Nothing was changed.");
        }
        return {};
    }

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
        around.output.line(counted(changes.size(), "file") + " newer on the server:");
        for (const auto& change : changes) around.output.line("  " + describeChange(change));
        const std::string command = reviewCommand(around.options, unambiguousName(model.profiles(), profile));
        around.output.note("To decide, one of:");
        around.output.note(command + " --download PATH...");
        around.output.note(command + " --download-all");
        around.output.note(command + " --keep-all");
    }

    // Downloads the server's version of the selected paths and keeps the local one of the others.
    void decide(const std::vector<RemoteChange>& changes, const std::set<std::string, std::less<>>& selected) {
        const Uuid& id = profile.id;
        DecisionReport report(around.output);
        const Observing observing(model, report);
        model.resolveReview(id, selected);
        if (model.alert()) throw CommandError(ExitCode::failed, sentence(*model.alert()) + " Nothing was decided.");
        try {
            runUntil([this, &id] { return model.checkFailures().contains(id) || !model.running(id); });
        } catch (const Cancelled&) {
            throw CommandError(
                ExitCode::failed, "Interrupted. What was downloaded already stays; the next review shows the rest.");
        }
        const auto failed = model.checkFailures().find(id);
        const std::string failure = failed == model.checkFailures().end() ? "" : failed->second;
        tellOutcome(changes, selected);
        model.shutdown();
        if (!failure.empty())
            throw serverFailure(
                profile, "download all that was chosen from the server", failure,
                "What was downloaded already stays; the next review shows the rest.");
        if (!report.failure.empty()) throw CommandError(ExitCode::failed, sentence(report.failure));
    }

private:
    void runUntil(const std::function<bool()>& condition) {
        const auto interruptible = around.interrupt.during([this] { queue.quit(); });
        if (!queue.runUntil(condition)) throw Cancelled();
    }

    void tellOutcome(const std::vector<RemoteChange>& changes, const std::set<std::string, std::less<>>& selected) {
        for (const auto& change : changes) {
            const bool kept = !selected.contains(change.path);
            if (around.output.json()) {
                if (!kept && !isDownloaded(change)) continue;
                JsonLine object(kept ? "kept" : "downloaded");
                object.text("profile", profile.name).text("id", profile.id.text()).text("path", change.path);
                around.output.line(object);
            } else if (kept) {
                around.output.line("Kept local copy: " + printable(change.path));
            }
        }
    }

    [[nodiscard]] bool isDownloaded(const RemoteChange& change) const {
        const auto* known = model.remoteDates(profile.id).find(change.path);
        return known != nullptr && *known == change.remoteDate;
    }

    AppModel& model;
    MainQueue& queue;
    const Profile& profile;
    const Surroundings& around;
};

std::set<std::string, std::less<>> selectedPaths(const Request& request, const std::vector<RemoteChange>& changes) {
    std::set<std::string, std::less<>> offered;
    for (const auto& change : changes) offered.insert(change.path);
    if (request.downloadAll) return offered;
    std::set<std::string, std::less<>> selected;
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
        output.note("Decided. Watching can go on.");
    }
    return ExitCode::done;
}

ExitCode reviewProfile(const Surroundings& around, const Request& request) {
    const StateStore store = openState(around.options);
    const InstanceLock held = holdState(store);
    MainQueue queue;
    AppModel model(queue, {.storeOverride = store, .passwordAccess = {.read = readStoredPassword}, .watches = false});
    requireLoaded(model);
    const Profile profile = chooseProfile(model.profiles(), request.name);
    if (profile.needsDownload) {
        throw CommandError(
            ExitCode::failed, inQuotes(profile.name) + " still has its initial download to do; run watch first.");
    }
    if (const auto given = givenPassword(around)) model.keepForSession(profile.id, *given);
    const ProgressReport progress(model, around.output);
    Review review(model, queue, profile, around);
    return carryOut(review, request, around.output);
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
    const std::vector<CLI::Option*> choices{list, download, downloadAll, keepAll};
    for (auto* choice : choices) {
        for (auto* other : choices) {
            if (choice != other) choice->excludes(other);
        }
    }
    command->footer("A local version that is kept is uploaded by the next watch if it was edited or never\n"
                    "uploaded before. The same server version is not offered again.\n\n"
                    "Examples:\n"
                    "  zembrastel-cli review \"My website\"\n"
                    "  zembrastel-cli review \"My website\" --download index.html images/logo.svg");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return reviewProfile(around, *request); };
    });
}

} // namespace zembrastel
