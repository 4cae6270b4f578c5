#include "cli/commands.h"

#include "cli/session/folder_scan.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/push_in_program.h"
#include "cli/session/push_results.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/text.h"
#include "sync/sync_worker.h"
#include "sync/unchanged_contents.h"

#include <set>
#include <stop_token>

namespace zembrastel::cli {
namespace {

struct PushRequest {
    std::string name;
    bool dryRun = false;
    bool all = false;
    bool missing = false;
    bool leaveMissing = false;
    bool createsFolder = false;
    bool downloadFirst = false;
    bool wait = false;

    [[nodiscard]] bool resends() const { return all || missing; }
};

// Prints each sent file, and keeps the last failure.
class PushReport final : public ModelObserver {
public:
    PushReport(const AppModel& observed, const Profile& pushed, Output& where)
        : model(observed), profile(pushed), output(where), downloading(pushed.needsDownload) {}

    void activityLogged(const Uuid&, const Activity& activity) override {
        if (activity.error()) failure = activity.failure.value_or(Failure{.message = activity.text});
        if (activity.kind != Activity::Kind::uploaded) return;
        sentPaths.insert(activity.path);
        printUploaded(profile, activity.path, output);
    }

    // The initial download has ended when the saved profile says so.
    void profilesChanged() override {
        const Profile* now = model.profile(profile.id);
        if (!downloading || now == nullptr || now->needsDownload) return;
        downloading = false;
        const std::size_t files = model.baseline(profile.id).size();
        if (output.json()) {
            auto object = JsonLine::forProfile("initialDownload", profile);
            output.line(object.number("files", files));
        } else {
            output.line(translatePlural("Downloaded %n file.", "Downloaded %n files.", files));
        }
    }

    std::set<std::string, std::less<>> sentPaths;
    std::optional<Failure> failure; // the last one

private:
    const AppModel& model;
    const Profile& profile;
    Output& output;
    bool downloading;
};

// Nothing that is on the server already is sent again without a choice.
[[noreturn]] void refuseBeforeChoice(
    const FirstComparison& found, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context) {
    printChoice(choiceOf(found, false), profile, profiles, context);
    throw choiceWaits(profile, profiles, context, translate("Nothing was uploaded."));
}

// A push by this program.
class Push {
public:
    Push(Session& held, const Profile& pushed, const CommandContext& commandContext, const PushRequest& requested)
        : session(held), model(held.model()), profile(pushed), context(commandContext), request(requested),
          report(model, pushed, commandContext.output) {}

    void run() {
        const Observing observing(model, report);
        const ProgressReport progress(model, context.output, ProgressReport::Lines::withoutLiveLine);
        const bool ended = runToEnd();
        if (model.checkFailures().contains(profile.id)) {
            throw serverFailure(
                profile, comparisonAim(profile), model.checkFailure(profile.id), translate("Nothing was uploaded."));
        }
        if (const auto* found = model.firstComparison(profile.id)) {
            refuseBeforeChoice(*found, profile, model.profiles(), context);
        }
        const auto review = model.reviews().find(profile.id);
        if (review != model.reviews().end()) {
            refuseBecauseOf(
                review->second.changes, profile, model.profiles(), context,
                {.comparedAll = request.all, .sentSome = !report.sentPaths.empty()});
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
            return model.firstComparison(id) != nullptr || model.reviews().contains(id)
                   || model.checkFailures().contains(id) || !model.running(id);
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
                " " + translatePlural("Not sent: %n file.", "Not sent: %n files.", unsent.size()));
        }
        if (failure && failure->kind == Failure::Kind::filesMissing) {
            const std::string name = unambiguousName(model.profiles(), profile);
            throw unfinished(
                *failure,
                " " + translate("If you deleted the files: %1", {commandLine(context.options, "forget-files", name)}));
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
            context.output.line(translate("Not sent: %1", {printable(path)}));
        }
    }

    void printDone(bool lacksFiles) {
        std::size_t undated = 0;
        for (const auto& path : report.sentPaths) {
            if (!model.remoteDates(profile.id).contains(path)) ++undated;
        }
        if (undated > 0) {
            context.output.warning(translatePlural(
                "The server reported no date of %n sent file. They are live; the next comparison may offer them as "
                "newer on the server.",
                "The server reported no date of %n sent files. They are live; the next comparison may offer them "
                "as newer on the server.",
                undated));
        }
        const auto unchanged = static_cast<std::size_t>(model.status(profile.id).contentsUnchanged);
        printPushed(
            profile, {.files = report.sentPaths.size(), .sameContents = unchanged, .lacksFiles = lacksFiles},
            context.output);
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
    requirePushable(profile, request.downloadFirst);
    if (const auto given = givenPassword(context)) session.model().keepForSession(profile.id, *given);
    Push(session, profile, context, request).run();
    return ExitCode::done;
}

ExitCode pushInProgram(RunningProgram& program, const CommandContext& context, const PushRequest& request) {
    PushInProgram push(program, context, request.name);
    if (request.leaveMissing) {
        push.leaveMissing();
    } else if (request.resends()) {
        push.sendAgain(request.all);
    } else {
        push.run(request.downloadFirst);
    }
    return ExitCode::done;
}

void waitBeforeTrying(Interrupt& interrupt) {
    std::stop_source ending;
    const auto interruptible = interrupt.during([&ending] { ending.request_stop(); });
    if (!systemClock().sleep(ending.get_token(), std::chrono::milliseconds(500))) throw Cancelled();
}

ExitCode pushOnce(const CommandContext& context, const PushRequest& request) {
    const StateStore store = StateFolder(context.options).open();
    return RunningProgram::askOrHold(
        store, [&](RunningProgram& program) { return pushInProgram(program, context, request); },
        [&] { return pushAlone(context, request); });
}

// Tries again while another program holds the state folder and does not push this profile itself.
ExitCode pushWhenFree(const CommandContext& context, const PushRequest& request) {
    for (bool noted = false;; noted = true) {
        try {
            return pushOnce(context, request);
        } catch (const PausedInProgram&) {
            if (context.interrupt.happened()) throw;
        } catch (const CommandError& error) {
            if (error.code != ExitCode::stateInUse || context.interrupt.happened()) throw;
        }
        if (!noted)
            context.output.note(
                translate("Another program uses the state folder. Waiting until it ends. Ctrl-C stops."));
        waitBeforeTrying(context.interrupt);
    }
}

// Takes the files out of `paths` that push would not send because only their dates are new. Returns how many.
std::size_t leaveOutUnchanged(
    std::vector<std::string>& paths, const Profile& profile, const FileMap& files, const FileMap& baseline,
    const ServerCheck& found, const CommandContext& context) {
    const auto contents = StateFolder(context.options).contentsOf(profile);
    if (!contents) return 0;
    TransferControl control;
    const auto interruptible = context.interrupt.during([&control] { control.cancel(); });
    const auto unchanged = findUnchangedContents(
        profile, paths, files, {.baseline = baseline, .onServer = found.seen, .contents = *contents}, control);
    std::erase_if(paths, [&unchanged](const std::string& path) { return unchanged.contains(path); });
    return unchanged.size();
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
    if (found.first) refuseBeforeChoice(*found.first, profile, state.profiles, context);
    if (!found.changes.empty())
        refuseBecauseOf(found.changes, profile, state.profiles, context, {.comparedAll = request.all});
    const PathSet& sentAgain = request.missing ? found.missing : found.toSend;
    for (const auto& [path, fingerprint] : found.recognised.files) recorded.baseline.set(path, fingerprint);
    recorded.baseline.eraseIf([&](std::string_view path, const Fingerprint&) { return sentAgain.contains(path); });
    const auto [files, leftOut] = scanFolder(profile, context);
    auto paths = changedPaths(files, recorded.baseline);
    const auto sameContents = leaveOutUnchanged(paths, profile, files, recorded.baseline, found, context);
    const bool lacksFiles = !request.resends() && !found.missing.empty();
    if (lacksFiles) printMissing(profile, found.missing, context.output);
    for (const auto& path : paths) {
        const auto bytes = static_cast<std::uint64_t>(files.at(path).size);
        if (context.output.json()) {
            auto object = JsonLine::forProfile("uploadable", profile);
            context.output.line(object.text("path", path).number("bytes", bytes));
        } else {
            context.output.line(translate("Would upload %1 (%2)", {printable(path), bytesText(bytes)}));
        }
    }
    if (!context.output.json()) {
        if (sameContents > 0) context.output.line(unchangedContentsLine(sameContents));
        context.output.line(
            !paths.empty() ? translatePlural(
                "To push: %n file. Nothing was uploaded.", "To push: %n files. Nothing was uploaded.", paths.size())
            : lacksFiles ? translate("Nothing has changed in %1.", {inQuotes(profile.name)})
                         : translate("Nothing to push: the server has all of %1.", {inQuotes(profile.name)}));
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
    if (request.dryRun) return previewPush(context, request);
    return request.wait ? pushWhenFree(context, request) : pushOnce(context, request);
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
    command
        .flag(
            "--download-first", request.downloadFirst,
            "If the profile's initial download is still to be done, do that\nfirst")
        .excludes({dryRun, missing, all});
    command
        .flag(
            "--wait", request.wait,
            "If another program uses the state folder and does not push this\nprofile itself, wait until it ends")
        .excludes({dryRun});
    command.footer("First the server is compared with the last synchronised state: if files are newer there,\n"
                   "nothing is uploaded, and push ends with 3 (see review). Then the changed files are uploaded that\n"
                   "two scans, two seconds apart, found in the same version. Failures are not retried: push names the\n"
                   "files that were not sent and ends with 1, with 5 if the server refused the login, or with 8 after\n"
                   "Ctrl-C. If uploaded files are missing on the server, push names them and ends with 1, unless\n"
                   "--leave-missing is given. Only --missing and --all send them again.\n"
                   "If a program is running for the profile, it does the work.\n"
                   "--all compares the contents of up to 32 MB of files, and skips equal ones.\n\n"
                   "Example:\n"
                   "  make site && zembrastel-cli push \"My website\" --password-file ~/.ftp-password");
}

} // namespace zembrastel::cli
