#include "cli/commands/push.h"

#include "app/context/main_queue.h"
#include "cli/session/folder_scan.h"
#include "cli/session/observing.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/text.h"
#include "sync/sync_worker.h"

#include <CLI/CLI.hpp>
#include <set>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    bool dryRun = false;
    bool all = false;
    bool missing = false;
    bool leaveMissing = false;

    [[nodiscard]] bool resends() const { return all || missing; }
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
    const Surroundings& around, bool comparedAll, bool sentSome = false) {
    if (around.output.json()) {
        JsonLine object("review");
        addReview(object, profile, changes, systemClock());
        around.output.line(object);
    } else {
        around.output.line(
            counted(changes.size(), "file") + (comparedAll ? " different on the server:" : " newer on the server:"));
        for (const auto& change : changes) around.output.line("  " + describeChange(change));
    }
    const char* const review = comparedAll ? "review --compare-all" : "review";
    throw CommandError(
        ExitCode::reviewWaiting,
        std::string(sentSome ? "Not everything was uploaded" : "Nothing was uploaded")
            + (comparedAll ? ", because the server has other versions of files"
                           : ", because files are newer on the server")
            + ". Decide on them first: " + commandLine(around.options, review, unambiguousName(profiles, profile)));
}

CommandError unfinished(const Profile& profile, const std::string& failure, const std::string& consequence = "") {
    return {
        exitCodeOf(failure), "Cannot push all of " + inQuotes(profile.name) + " (" + serverName(profile)
                                 + "): " + sentence(failure) + consequence};
}

// Nothing is sent again without being asked.
CommandError lacking(
    const Profile& profile, std::size_t missing, const std::vector<Profile>& profiles, const Surroundings& around) {
    return {
        ExitCode::failed, missingText(missing) + (missing == 1 ? " and was" : " and were")
                              + " not sent, because nothing changed here. "
                              + sendMissingHint(around.options, missing, unambiguousName(profiles, profile))};
}

// One run of the command.
class Push {
public:
    Push(
        AppModel& used, MainQueue& usedQueue, const Profile& pushed, const Surroundings& surroundings,
        const Request& requested)
        : model(used), queue(usedQueue), profile(pushed), around(surroundings), request(requested),
          report(pushed, surroundings.output) {}

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
            refuseFor(
                review->second.changes, profile, model.profiles(), around, request.all, !report.sentPaths.empty());
        }
        const ProfileStatus& status = model.status(profile.id);
        interrupted = !ended;
        std::string failure = ended ? (status.failed ? status.detail : report.failure) : "It was interrupted.";
        if (request.leaveMissing && failure.empty()) failure = leaveMissing();
        model.shutdown();
        if (failure.empty()) failure = report.failure; // of the save
        verify(failure);
    }

private:
    // False when interrupted.
    bool runToEnd() {
        const Uuid& id = profile.id;
        const auto interruptible = around.interrupt.during([this] { queue.quit(); });
        if (request.resends()) model.planResend(id, request.all ? Resend::everything : Resend::missing);
        model.start(id);
        return queue.runUntil([this, &id] {
            return model.reviews().contains(id) || model.checkFailures().contains(id) || !model.running(id);
        });
    }

    // Why that could not be saved, if so.
    [[nodiscard]] std::string leaveMissing() {
        const auto files = model.missingOnServer(profile.id).size();
        if (files == 0) return {};
        try {
            model.leaveMissing(profile.id);
        } catch (const std::exception& error) {
            return describe(error);
        }
        around.output.note(
            counted(files, "file") + (files == 1 ? " stays" : " stay")
            + " missing on the server, and will not be reported again.");
        return {};
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
        const PathSet& missing = model.missingOnServer(profile.id);
        tellMissing(profile, missing, around.output);
        tellDone(!missing.empty());
        if (!missing.empty()) throw lacking(profile, missing.size(), model.profiles(), around);
    }

    [[nodiscard]] CommandError unfinished(const std::string& failure, const std::string& consequence = "") const {
        auto error = zembrastel::cli::unfinished(profile, failure, consequence);
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

    void tellDone(bool lacksFiles) {
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
            if (lacksFiles) return;
            JsonLine object("pushed");
            object.text("profile", profile.name).text("id", profile.id.text());
            around.output.line(object.number("files", report.sentPaths.size()));
        } else if (report.sentPaths.empty() && lacksFiles) {
            around.output.line("Nothing has changed in " + inQuotes(profile.name) + ".");
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
    const Request& request;
    PushReport report;
    bool interrupted = false;
};

ExitCode pushAlone(const StateStore& store, const Surroundings& around, const Request& request) {
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
    Push(model, queue, profile, around, request).run();
    return ExitCode::done;
}

// Lets the running program send the files again. It goes on with that after the answer.
ExitCode pushInProgram(RunningProgram& program, const Surroundings& around, const Request& request) {
    const auto profiles = loadProfiles(around.options);
    const Profile& profile = chooseProfile(profiles, request.name);
    requirePushable(profile);
    using Kind = ControlRequest::Kind;
    std::vector<RemoteChange> changes;
    const auto failed = program.ask(
        {.kind = request.all ? Kind::sendAll : Kind::sendMissing, .profiles = {profile.id}}, around.interrupt,
        [&changes](const ControlAnswer& answer) {
            if (const auto* review = std::get_if<answer::Review>(&answer)) changes = review->changes;
        });
    if (failed && failed->reason == answer::Failed::Reason::server) {
        throw serverFailure(profile, checkAim(profile), failed->text, "Nothing was uploaded.");
    }
    if (failed && failed->reason == answer::Failed::Reason::paused) {
        throw CommandError(
            ExitCode::failed, inQuotes(profile.name)
                                  + " is paused in the running program. Nothing was uploaded; "
                                    "resume it first.");
    }
    if (failed) throw unfinished(profile, failed->text);
    if (!changes.empty()) refuseFor(changes, profile, profiles, around, false);
    if (around.output.json()) {
        JsonLine object("sending");
        around.output.line(object.text("profile", profile.name).text("id", profile.id.text()));
    } else {
        around.output.line(
            "The running program compared " + inQuotes(profile.name)
            + " with the server, and now uploads what is to be sent again. To see it: status --follow");
    }
    return ExitCode::done;
}

ExitCode push(const Surroundings& around, const Request& request) {
    const StateStore store = openState(around.options);
    if (!request.resends()) return pushAlone(store, around, request);
    return RunningProgram::askOrHold(
        store, [&](RunningProgram& program) { return pushInProgram(program, around, request); },
        [&] { return pushAlone(store, around, request); });
}

// What push would send; another program may hold the state folder meanwhile.
ExitCode showWhatWouldGo(const Surroundings& around, const Request& request) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, request.name);
    requirePushable(profile);
    ServerRecord recorded = recordOf(state, profile.id, around.options);
    recorded.compareAll = request.all;
    ServerCheck found;
    callServer(profile, around, checkAim(profile), [&](const FTPTransport& server) {
        found = server.newerRemoteFiles(recorded, [](const std::string&) {});
    });
    if (!found.changes.empty()) refuseFor(found.changes, profile, state.profiles, around, request.all);
    const PathSet& sentAgain = request.missing ? found.missing : found.toSend;
    for (const auto& [path, fingerprint] : found.recognised.files) recorded.baseline.set(path, fingerprint);
    recorded.baseline.eraseIf([&](std::string_view path, const Fingerprint&) { return sentAgain.contains(path); });
    const auto [files, leftOut] = scanFolder(profile, around);
    const auto paths = changedPaths(files, recorded.baseline);
    const bool lacksFiles = !request.resends() && !found.missing.empty();
    if (lacksFiles) tellMissing(profile, found.missing, around.output);
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
            !paths.empty() ? "To push: " + counted(paths.size(), "file") + ". Nothing was uploaded."
            : lacksFiles   ? "Nothing has changed in " + inQuotes(profile.name) + "."
                           : "Nothing to push: the server has all of " + inQuotes(profile.name) + ".");
    }
    if (!leftOut.empty()) throw unfinished(profile, leftOut.back()); // as the push itself would end
    if (lacksFiles) throw lacking(profile, found.missing.size(), state.profiles, around);
    return ExitCode::done;
}

} // namespace

void addPush(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("push", "Upload all that changed, once, and end: for scripts");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    auto* dryRun = command->add_flag(
        "--dry-run", request->dryRun, "Only show what would be uploaded; nothing is changed here or on\nthe server");
    auto* missing = command->add_flag(
        "--missing", request->missing, "Also send again what was uploaded before and is missing on the\nserver");
    auto* all = command
                    ->add_flag(
                        "--all", request->all,
                        "Send everything again that the server is not known to have\nwith the same contents, such as "
                        "to a new remote folder")
                    ->excludes(missing);
    command
        ->add_flag(
            "--leave-missing", request->leaveMissing,
            "Do not report the files again that are missing on the server\nnow: they were removed there on purpose")
        ->excludes(dryRun, missing, all);
    command->footer("First the server is compared with what was last synchronised: where files are newer there,\n"
                    "nothing is uploaded, and push ends with 3 (see review). Then what two looks at the folder,\n"
                    "two seconds apart, found the same is uploaded. Nothing is tried again: push names what was\n"
                    "not sent and ends with 1, with 5 where the server refused the login, or with 8 after Ctrl-C.\n"
                    "Uploaded files that are missing on the server are named, and push ends with 1, unless\n"
                    "--leave-missing is given. They are sent again with --missing or --all alone. With these\n"
                    "two, a program that runs for the profile does it.\n"
                    "--all compares the contents of up to 32 MB of files, and leaves equal ones alone.\n\n"
                    "Example:\n"
                    "  make site && zembrastel-cli push \"My website\" --password-file ~/.ftp-password");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) {
            return request->dryRun ? showWhatWouldGo(around, *request) : push(around, *request);
        };
    });
}

} // namespace zembrastel::cli
