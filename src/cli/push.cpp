#include "cli/push.h"

#include "app/main_queue.h"
#include "cli/observing.h"
#include "cli/password_source.h"
#include "cli/presentation.h"
#include "cli/profile_choice.h"
#include "cli/progress_report.h"
#include "cli/review_text.h"
#include "cli/scan_command.h"
#include "cli/server_call.h"
#include "cli/state_folder.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/text.h"
#include "sync/sync_worker.h"

#include <CLI/CLI.hpp>
#include <set>

namespace zembrastel {
namespace {

struct Request {
    std::string name;
    bool dryRun = false;
};

JsonLine& addFile(JsonLine& object, const Profile& profile, std::string_view path) {
    return object.text("profile", profile.name).text("id", profile.id.text()).text("path", path);
}

// Tells what was sent as it is, and notes what went wrong besides.
class PushReport final : public ModelObserver {
public:
    PushReport(const Profile& pushed, Output& where) : profile(pushed), output(where) {}

    void activityLogged(const Uuid&, const Activity& activity) override {
        constexpr std::string_view sent = "Uploaded ";
        if (activity.error) failure = activity.text;
        if (activity.error || !activity.text.starts_with(sent)) return;
        const std::string path = activity.text.substr(sent.size());
        sentPaths.insert(path);
        if (output.json()) {
            JsonLine object("uploaded");
            output.line(addFile(object, profile, path));
        } else {
            output.line(oneLine(activity.text));
        }
    }

    std::set<std::string, std::less<>> sentPaths;
    std::string failure; // the last one; empty while all is well

private:
    const Profile& profile;
    Output& output;
};

std::string checkAim(const Profile& profile) {
    return "compare the local folder " + oneLine(profile.localFolder) + " with the server";
}

void requirePushable(const Profile& profile) {
    if (profile.needsDownload) {
        throw CommandError(
            ExitCode::failed, inQuotes(profile.name) + " still has its initial download to do; run watch first.");
    }
    if (profile.hasEmptySyncSelection()) {
        throw CommandError(ExitCode::failed, "Nothing is selected to sync in " + inQuotes(profile.name) + ".");
    }
}

// Somebody else's work is not overwritten by a script.
[[noreturn]] void refuseFor(
    const std::vector<RemoteChange>& changes, const Profile& profile, const std::vector<Profile>& profiles,
    const Surroundings& around) {
    if (around.output.json()) {
        JsonLine object("review");
        addReview(object, profile, changes, systemClock());
        around.output.line(object);
    } else {
        around.output.line(counted(changes.size(), "file") + " newer on the server:");
        for (const auto& change : changes) around.output.line("  " + describeChange(change));
    }
    throw CommandError(
        ExitCode::reviewWaiting, "Nothing was uploaded, because files are newer on the server. Decide on them first: "
                                     + reviewCommand(around.options, unambiguousName(profiles, profile)));
}

CommandError unfinished(const Profile& profile, const std::string& failure, const std::string& consequence = "") {
    return {
        exitCodeOf(failure), "Cannot push all of " + inQuotes(profile.name) + " (" + serverName(profile)
                                 + "): " + sentence(failure) + consequence};
}

// One run of the command.
class Push {
public:
    Push(AppModel& used, MainQueue& usedQueue, const Profile& pushed, const Surroundings& surroundings)
        : model(used), queue(usedQueue), profile(pushed), around(surroundings), report(pushed, surroundings.output) {}

    void run() {
        const Observing observing(model, report);
        const ProgressReport progress(model, around.output, ProgressReport::Lines::whereNotLive);
        const bool ended = runToEnd();
        const auto failedCheck = model.checkFailures().find(profile.id);
        if (failedCheck != model.checkFailures().end()) {
            throw serverFailure(profile, checkAim(profile), failedCheck->second, "Nothing was uploaded.");
        }
        const auto review = model.reviews().find(profile.id);
        if (review != model.reviews().end()) {
            refuseFor(review->second.changes, profile, model.profiles(), around);
        }
        const ProfileStatus& status = model.status(profile.id);
        interrupted = !ended;
        std::string failure = ended ? (status.failed ? status.detail : report.failure) : "It was interrupted.";
        model.shutdown();
        if (failure.empty()) failure = report.failure; // of the save
        verify(failure);
    }

private:
    // False when interrupted.
    bool runToEnd() {
        const Uuid& id = profile.id;
        const auto interruptible = around.interrupt.during([this] { queue.quit(); });
        model.start(id);
        return queue.runUntil([this, &id] {
            return model.reviews().contains(id) || model.checkFailures().contains(id) || !model.running(id);
        });
    }

    // What is there must be what was sent.
    void verify(const std::string& failure) {
        std::vector<std::string> unsent;
        try {
            unsent =
                changedPaths(scan(profile, {.privateItems = privateItems(around.options)}), model.baseline(profile.id));
        } catch (const std::exception& error) {
            throw unfinished(failure.empty() ? describe(error) : failure);
        }
        for (const auto& path : unsent) tellUnsent(path);
        if (!unsent.empty()) {
            throw unfinished(
                failure.empty() ? "They were changed again meanwhile." : failure,
                " Not sent: " + counted(unsent.size(), "file") + ".");
        }
        if (failure == missingFilesProblem(profile.localFolder)) {
            const std::string name = unambiguousName(model.profiles(), profile);
            throw unfinished(
                failure, " If you deleted the files: " + commandLine(around.options, "forget-files", name));
        }
        if (!failure.empty()) throw unfinished(failure);
        tellDone();
    }

    [[nodiscard]] CommandError unfinished(const std::string& failure, const std::string& consequence = "") const {
        auto error = zembrastel::unfinished(profile, failure, consequence);
        if (interrupted) error.code = ExitCode::interrupted;
        return error;
    }

    void tellUnsent(const std::string& path) {
        if (around.output.json()) {
            JsonLine object("unsent");
            around.output.line(addFile(object, profile, path));
        } else {
            around.output.line("Not sent: " + printable(path));
        }
    }

    void tellDone() {
        std::size_t undated = 0;
        for (const auto& path : report.sentPaths) {
            if (!model.remoteDates(profile.id).contains(path)) ++undated;
        }
        if (undated > 0) {
            around.output.warning(
                "The server told no date of " + counted(undated, "sent file")
                + ". They are live; the next comparison may offer them as newer on the server.");
        }
        if (around.output.json()) {
            JsonLine object("pushed");
            object.text("profile", profile.name).text("id", profile.id.text());
            around.output.line(object.number("files", report.sentPaths.size()));
        } else if (report.sentPaths.empty()) {
            around.output.line("Nothing to push: the server has all of " + inQuotes(profile.name) + ".");
        } else {
            around.output.line(
                "Pushed " + inQuotes(profile.name) + ": " + counted(report.sentPaths.size(), "file") + ".");
        }
    }

    AppModel& model;
    MainQueue& queue;
    const Profile& profile;
    const Surroundings& around;
    PushReport report;
    bool interrupted = false;
};

ExitCode push(const Surroundings& around, const Request& request) {
    const StateStore store = openState(around.options);
    const InstanceLock held = holdState(store);
    const Output::NeverWaiting publishing(
        around.output, Output::NeverWaiting::unlimitedRoom, [&around] { return !around.interrupt.happened(); });
    MainQueue queue;
    AppModel model(
        queue, {.storeOverride = store,
                .passwordAccess = {.read = readStoredPassword},
                .work = onePass(),
                .privateItems = privateItems(around.options)});
    requireLoaded(model);
    const Profile profile = chooseProfile(model.profiles(), request.name);
    requirePushable(profile);
    if (const auto given = givenPassword(around)) model.keepForSession(profile.id, *given);
    Push(model, queue, profile, around).run();
    return ExitCode::done;
}

// What push would send; another program may hold the state folder meanwhile.
ExitCode showWhatWouldGo(const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    requirePushable(profile);
    const ServerRecord record = recordOf(state, profile.id, around.options);
    std::vector<RemoteChange> newer;
    callServer(profile, around, checkAim(profile), [&](const FTPTransport& server) {
        newer = server.newerRemoteFiles(record, [](const std::string&) {}).changes;
    });
    if (!newer.empty()) refuseFor(newer, profile, state.profiles, around);
    const auto [files, leftOut] = scanFolder(profile, around);
    const auto paths = changedPaths(files, record.baseline);
    for (const auto& path : paths) {
        const auto bytes = static_cast<std::uint64_t>(files.at(path).size);
        if (around.output.json()) {
            JsonLine object("uploadable");
            around.output.line(addFile(object, profile, path).number("bytes", bytes));
        } else {
            around.output.line("Would upload " + printable(path) + " (" + counted(bytes, "byte") + ")");
        }
    }
    if (!around.output.json()) {
        around.output.line(
            paths.empty() ? "Nothing to push: the server has all of " + inQuotes(profile.name) + "."
                          : "To push: " + counted(paths.size(), "file") + ". Nothing was uploaded.");
    }
    if (!leftOut.empty()) throw unfinished(profile, leftOut.back()); // as the push itself would end
    return ExitCode::done;
}

} // namespace

void addPush(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("push", "Upload all that changed, once, and end: for scripts");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command->add_flag(
        "--dry-run", request->dryRun, "Only show what would be uploaded; nothing is changed here or on\nthe server");
    command->footer("First the server is compared with what was last synchronised: where files are newer there,\n"
                    "nothing is uploaded, and push ends with 3 (see review). Then what two looks at the folder,\n"
                    "two seconds apart, found the same is uploaded. Nothing is tried again: push names what was\n"
                    "not sent and ends with 1, with 5 where the server refused the login, or with 8 after Ctrl-C.\n\n"
                    "Example:\n"
                    "  make site && zembrastel-cli push \"My website\" --password-file ~/.ftp-password");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) {
            return request->dryRun ? showWhatWouldGo(around, *request) : push(around, *request);
        };
    });
}

} // namespace zembrastel
