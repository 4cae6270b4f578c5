#include "cli/commands.h"

#include "app/diagnosis/failure_catalogue.h"
#include "cli/session/folder_scan.h"
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

#include <set>

namespace zembrastel::cli {
namespace {

struct PushRequest {
    std::string name;
    bool dryRun = false;
    bool all = false;
    bool missing = false;
    bool leaveMissing = false;
    bool createsFolder = false;

    [[nodiscard]] bool resends() const { return all || missing; }
};

// Prints each sent file, and keeps the last failure.
class PushReport final : public ModelObserver {
public:
    PushReport(const Profile& pushed, Output& where) : profile(pushed), output(where) {}

    void activityLogged(const Uuid&, const Activity& activity) override {
        if (activity.error()) failure = activity.failure.value_or(Failure{.message = activity.text});
        if (activity.kind != Activity::Kind::uploaded) return;
        sentPaths.insert(activity.path);
        if (output.json()) {
            auto object = JsonLine::forProfile("uploaded", profile);
            output.line(object.text("path", activity.path));
        } else {
            output.line(oneLine(activity.text));
        }
    }

    std::set<std::string, std::less<>> sentPaths;
    std::optional<Failure> failure; // the last one

private:
    const Profile& profile;
    Output& output;
};

void requirePushable(const Profile& profile) {
    requireDownloaded(profile);
    if (profile.hasEmptySyncSelection()) {
        throw CommandError(ExitCode::failed, "Nothing is selected to sync in " + inQuotes(profile.name) + ".");
    }
}

// A script must not overwrite the work of another person.
[[noreturn]] void refuseBecauseOf(
    const std::vector<RemoteChange>& changes, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context, bool comparedAll, bool sentSome = false) {
    if (context.output.json()) {
        JsonLine object("review");
        addReviewFields(object, profile, changes, systemClock());
        context.output.line(object);
    } else {
        context.output.line(
            counted(changes.size(), "file") + (comparedAll ? " different on the server:" : " newer on the server:"));
        for (const auto& change : changes) context.output.line("  " + describeChange(change));
    }
    const char* const review = comparedAll ? "review --compare-all" : "review";
    throw CommandError(
        ExitCode::reviewWaiting,
        std::string(sentSome ? "Not everything was uploaded" : "Nothing was uploaded")
            + (comparedAll ? ", because the server has other versions of files"
                           : ", because files are newer on the server")
            + ". Decide on them first: " + commandLine(context.options, review, unambiguousName(profiles, profile)));
}

CommandError pushFailure(const Profile& profile, const Failure& failure, const std::string& consequence = "") {
    return {
        serverExitCode(failure), "Cannot push all of " + inQuotes(profile.name) + " (" + serverName(profile)
                                     + "): " + explainedText(failure, profile) + consequence};
}

// A missing file is sent again only on request.
CommandError missingFilesError(
    const Profile& profile, std::size_t missing, const std::vector<Profile>& profiles, const CommandContext& context) {
    return {
        ExitCode::failed, missingText(missing) + (missing == 1 ? " and was" : " and were")
                              + " not sent, because nothing changed here. "
                              + sendMissingHint(context.options, missing, unambiguousName(profiles, profile))};
}

std::string leftMissingText(std::size_t files) {
    return counted(files, "file") + (files == 1 ? " stays" : " stay")
           + " missing on the server, and will not be reported again.";
}

// A push by this program.
class Push {
public:
    Push(Session& held, const Profile& pushed, const CommandContext& commandContext, const PushRequest& requested)
        : session(held), model(held.model()), profile(pushed), context(commandContext), request(requested),
          report(pushed, commandContext.output) {}

    void run() {
        const Observing observing(model, report);
        const ProgressReport progress(model, context.output, ProgressReport::Lines::withoutLiveLine);
        const bool ended = runToEnd();
        if (model.checkFailures().contains(profile.id)) {
            throw serverFailure(
                profile, comparisonAim(profile), model.checkFailure(profile.id), "Nothing was uploaded.");
        }
        const auto review = model.reviews().find(profile.id);
        if (review != model.reviews().end()) {
            refuseBecauseOf(
                review->second.changes, profile, model.profiles(), context, request.all, !report.sentPaths.empty());
        }
        const ProfileStatus& status = model.status(profile.id);
        interrupted = !ended;
        auto failure =
            ended ? (status.failed() ? failureOf(status) : report.failure) : Failure{.message = "It was interrupted."};
        if (request.leaveMissing && !failure) failure = leaveMissing();
        model.shutdown();
        if (!failure) failure = report.failure; // of the save
        verify(failure);
    }

private:
    // False when interrupted.
    bool runToEnd() {
        const Uuid& id = profile.id;
        const auto interruptible = session.interruptible();
        if (request.resends()) model.planResend(id, request.all ? Resend::everything : Resend::missing);
        model.start(id);
        return session.runUntil([this, &id] {
            return model.reviews().contains(id) || model.checkFailures().contains(id) || !model.running(id);
        });
    }

    [[nodiscard]] static std::optional<Failure> failureOf(const ProfileStatus& status) {
        return status.failure.value_or(Failure{.message = status.detail});
    }

    // The failure of saving that, if any.
    [[nodiscard]] std::optional<Failure> leaveMissing() {
        const auto files = model.missingOnServer(profile.id).size();
        if (files == 0) return std::nullopt;
        try {
            model.leaveMissing(profile.id);
        } catch (const std::exception& error) {
            return zembrastel::failureOf(error);
        }
        context.output.note(leftMissingText(files));
        return std::nullopt;
    }

    // Compares the folder with what was sent.
    void verify(const std::optional<Failure>& failure) {
        std::vector<std::string> unsent;
        try {
            unsent = changedPaths(
                scan(profile, {.privateItems = StateFolder(context.options).privateItems()}),
                model.baseline(profile.id));
        } catch (const std::exception& error) {
            throw unfinished(failure.value_or(zembrastel::failureOf(error)));
        }
        for (const auto& path : unsent) printUnsent(path);
        if (!unsent.empty()) {
            throw unfinished(
                failure.value_or(Failure{.message = "They were changed again meanwhile."}),
                " Not sent: " + counted(unsent.size(), "file") + ".");
        }
        if (failure && failure->kind == Failure::Kind::filesMissing) {
            const std::string name = unambiguousName(model.profiles(), profile);
            throw unfinished(
                *failure, " If you deleted the files: " + commandLine(context.options, "forget-files", name));
        }
        if (failure) throw unfinished(*failure);
        const PathSet& missing = model.missingOnServer(profile.id);
        printMissing(profile, missing, context.output);
        printDone(!missing.empty());
        if (!missing.empty()) throw missingFilesError(profile, missing.size(), model.profiles(), context);
    }

    [[nodiscard]] CommandError unfinished(const Failure& failure, const std::string& consequence = "") const {
        auto error = pushFailure(profile, failure, consequence);
        if (interrupted) error.code = ExitCode::interrupted;
        return error;
    }

    void printUnsent(const std::string& path) {
        if (context.output.json()) {
            auto object = JsonLine::forProfile("unsent", profile);
            context.output.line(object.text("path", path));
        } else {
            context.output.line("Not sent: " + printable(path));
        }
    }

    void printDone(bool lacksFiles) {
        std::size_t undated = 0;
        for (const auto& path : report.sentPaths) {
            if (!model.remoteDates(profile.id).contains(path)) ++undated;
        }
        if (undated > 0) {
            context.output.warning(
                "The server reported no date of " + counted(undated, "sent file")
                + ". They are live; the next comparison may offer them as newer on the server.");
        }
        if (context.output.json()) {
            if (lacksFiles) return;
            auto object = JsonLine::forProfile("pushed", profile);
            context.output.line(object.number("files", report.sentPaths.size()));
        } else if (report.sentPaths.empty() && lacksFiles) {
            context.output.line("Nothing has changed in " + inQuotes(profile.name) + ".");
        } else if (report.sentPaths.empty()) {
            context.output.line("Nothing to push: the server has all of " + inQuotes(profile.name) + ".");
        } else {
            context.output.line(
                "Pushed " + inQuotes(profile.name) + ": " + counted(report.sentPaths.size(), "file") + ".");
        }
    }

    Session& session;
    AppModel& model;
    const Profile& profile;
    const CommandContext& context;
    const PushRequest& request;
    PushReport report;
    bool interrupted = false;
};

ExitCode pushAlone(const CommandContext& context, const PushRequest& request) {
    const Output::NeverWaiting publishing(
        context.output, Output::NeverWaiting::unlimitedRoom, [&context] { return !context.interrupt.happened(); });
    Session session(
        context, {.passwordAccess = {.read = readStoredPassword},
                  .work = onePass(),
                  .privateItems = StateFolder(context.options).privateItems()});
    const Profile profile = chooseProfile(session.model().profiles(), request.name);
    requirePushable(profile);
    if (const auto given = givenPassword(context)) session.model().keepForSession(profile.id, *given);
    Push(session, profile, context, request).run();
    return ExitCode::done;
}

// A push by the running program.
class PushInProgram {
public:
    PushInProgram(RunningProgram& running, const CommandContext& commandContext, const std::string& name)
        : program(running), context(commandContext), profiles(StateFolder(context.options).loadProfiles()),
          profile(chooseProfile(profiles, name)) {
        requirePushable(profile);
    }

    // The program sends the files after its answer.
    void sendAgain(bool all) {
        ask(all ? ControlRequest::Kind::sendAll : ControlRequest::Kind::sendMissing);
        if (context.output.json()) return context.output.line(JsonLine::forProfile("sending", profile));
        context.output.line(
            "The running program compared " + inQuotes(profile.name)
            + " with the server, and now sends the files again. To watch it: status --follow");
    }

    void leaveMissing() {
        const std::uint64_t files = ask(ControlRequest::Kind::leaveMissing);
        if (context.output.json()) {
            auto object = JsonLine::forProfile("missingLeft", profile);
            context.output.line(object.number("files", files));
        } else {
            context.output.line(files == 0 ? "No file is missing on the server." : leftMissingText(files));
        }
    }

private:
    // Returns how many files the answer reports as missing on the server.
    std::uint64_t ask(ControlRequest::Kind kind) {
        using Reason = answer::Failed::Reason;
        std::vector<RemoteChange> changes;
        std::uint64_t missing = 0;
        const auto failed =
            program.ask({.kind = kind, .profiles = {profile.id}}, context.interrupt, [&](const ControlAnswer& answer) {
                if (const auto* review = std::get_if<answer::Review>(&answer)) changes = review->changes;
                if (const auto* status = std::get_if<answer::Status>(&answer)) {
                    missing = static_cast<std::uint64_t>(status->missingOnServer);
                }
            });
        if (failed && failed->reason == Reason::server) {
            throw serverFailure(profile, comparisonAim(profile), failed->reported(), "Nothing was uploaded.");
        }
        if (failed && failed->reason == Reason::paused) {
            throw CommandError(
                ExitCode::failed,
                inQuotes(profile.name) + " is paused in the running program. Nothing was uploaded; resume it first.");
        }
        if (failed) throw pushFailure(profile, failed->reported());
        if (!changes.empty()) refuseBecauseOf(changes, profile, profiles, context, false);
        return missing;
    }

    RunningProgram& program;
    const CommandContext& context;
    const std::vector<Profile> profiles;
    const Profile& profile;
};

ExitCode pushOnce(const CommandContext& context, const PushRequest& request) {
    const StateStore store = StateFolder(context.options).open();
    const auto alone = [&] { return pushAlone(context, request); };
    if (!request.resends() && !request.leaveMissing) return alone();
    const auto inProgram = [&](RunningProgram& program) {
        PushInProgram push(program, context, request.name);
        request.leaveMissing ? push.leaveMissing() : push.sendAgain(request.all);
        return ExitCode::done;
    };
    return RunningProgram::askOrHold(store, inProgram, alone);
}

// Prints what push would send. Another program may hold the state folder meanwhile.
ExitCode previewPush(const CommandContext& context, const PushRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    requirePushable(profile);
    ServerRecord recorded = StateFolder(context.options).recordOf(state, profile.id);
    recorded.compareAll = request.all;
    ServerCheck found;
    callServer(profile, context, comparisonAim(profile), [&](const FTPTransport& server) {
        found = server.newerRemoteFiles(recorded, [](const std::string&) {});
    });
    if (!found.changes.empty()) refuseBecauseOf(found.changes, profile, state.profiles, context, request.all);
    const PathSet& sentAgain = request.missing ? found.missing : found.toSend;
    for (const auto& [path, fingerprint] : found.recognised.files) recorded.baseline.set(path, fingerprint);
    recorded.baseline.eraseIf([&](std::string_view path, const Fingerprint&) { return sentAgain.contains(path); });
    const auto [files, leftOut] = scanFolder(profile, context);
    const auto paths = changedPaths(files, recorded.baseline);
    const bool lacksFiles = !request.resends() && !found.missing.empty();
    if (lacksFiles) printMissing(profile, found.missing, context.output);
    for (const auto& path : paths) {
        const auto bytes = static_cast<std::uint64_t>(files.at(path).size);
        if (context.output.json()) {
            auto object = JsonLine::forProfile("uploadable", profile);
            context.output.line(object.text("path", path).number("bytes", bytes));
        } else {
            context.output.line("Would upload " + printable(path) + " (" + counted(bytes, "byte") + ")");
        }
    }
    if (!context.output.json()) {
        context.output.line(
            !paths.empty() ? "To push: " + counted(paths.size(), "file") + ". Nothing was uploaded."
            : lacksFiles   ? "Nothing has changed in " + inQuotes(profile.name) + "."
                           : "Nothing to push: the server has all of " + inQuotes(profile.name) + ".");
    }
    if (!leftOut.empty()) throw pushFailure(profile, {.message = leftOut.back()}); // the push itself would end so, too
    if (lacksFiles) throw missingFilesError(profile, found.missing.size(), state.profiles, context);
    return ExitCode::done;
}

ExitCode pushProfile(const CommandContext& context, const PushRequest& request) {
    if (request.createsFolder) {
        const auto profiles = StateFolder(context.options).loadProfiles();
        createRemoteFolder(chooseProfile(profiles, request.name), std::nullopt, context);
    }
    return request.dryRun ? previewPush(context, request) : pushOnce(context, request);
}

} // namespace

void addPush(Syntax& parent) {
    auto [command, request] = parent.command("push", "Upload all changes once, and end: for scripts", pushProfile);
    command.profileArgument(request.name);
    const auto dryRun = command.flag(
        "--dry-run", request.dryRun, "Only show what would be uploaded; nothing is changed here or on\nthe server");
    command
        .flag(
            "--create-remote-folder", request.createsFolder,
            "First create the profile's folder on the server if it does not exist")
        .excludes({dryRun});
    const auto missing = command.flag(
        "--missing", request.missing, "Also send files again that were uploaded before and are missing\non the server");
    const auto all = command
                         .flag(
                             "--all", request.all,
                             "Send all files again except those that the server is known to\nhave with the same "
                             "contents, for example to a new remote folder")
                         .excludes({missing});
    command
        .flag(
            "--leave-missing", request.leaveMissing,
            "Do not report the files again that are missing on the server\nnow: they were removed there on purpose")
        .excludes({dryRun, missing, all});
    command.footer("First the server is compared with the last synchronised state: if files are newer there,\n"
                   "nothing is uploaded, and push ends with 3 (see review). Then every change that two scans of the\n"
                   "folder, two seconds apart, find alike is uploaded. Nothing is tried again: push names the files\n"
                   "that were not sent and ends with 1, with 5 if the server refused the login, or with 8 after\n"
                   "Ctrl-C. Uploaded files that are missing on the server are named, and push ends with 1, unless\n"
                   "--leave-missing is given. Only --missing and --all send them again. If a program is running for\n"
                   "the profile, it does the work for these three options.\n"
                   "--all compares the contents of up to 32 MB of files, and skips equal ones.\n\n"
                   "Example:\n"
                   "  make site && zembrastel-cli push \"My website\" --password-file ~/.ftp-password");
}

} // namespace zembrastel::cli
