#include "cli/commands.h"

#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/running_program.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"

#include <algorithm>

namespace zembrastel::cli {
namespace {

struct ReviewRequest {
    std::string name;
    std::vector<std::string> download;
    std::string listed; // the list that the user decides about; empty for the present one
    bool list = false;
    bool downloadAll = false;
    bool keepAll = false;
    bool compareAll = false;

    [[nodiscard]] bool decides() const { return downloadAll || keepAll || !download.empty(); }
};

// Prints the activity of a decision, and keeps the last failure.
class DecisionReport final : public ModelObserver {
public:
    explicit DecisionReport(Output& where) : output(where) {}

    void activityLogged(const Uuid&, const Activity& activity) override {
        if (activity.error()) {
            failure = activity.text;
        } else if (!output.json()) {
            output.line(translateEngineText(oneLine(activity.text)));
        }
    }

    std::string failure; // the last one; empty if none

private:
    Output& output;
};

// The review of one profile's newer server files.
class Review {
public:
    Review(std::vector<Profile> all, Profile reviewed, const CommandContext& commandContext)
        : profile(std::move(reviewed)), context(commandContext), profiles(std::move(all)) {}
    virtual ~Review() = default;

    // Returns the changes that are newer on the server.
    virtual std::vector<RemoteChange> check() = 0;

    // Downloads the server's version of the selected paths and keeps the local one of the others.
    virtual void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) = 0;

    // The note after a decision.
    [[nodiscard]] virtual const char* afterwards() const = 0;

    void list(const std::vector<RemoteChange>& changes) {
        if (context.output.json()) {
            JsonLine object("review");
            addReviewFields(object, profile, changes, systemClock());
            context.output.line(object);
            return;
        }
        if (changes.empty()) {
            context.output.line(translate("Nothing is newer on the server."));
            return;
        }
        context.output.line(
            comparesAll
                ? translatePlural(
                    "%n file different on the server:", "%n files different on the server:", changes.size())
                : translatePlural("%n file newer on the server:", "%n files newer on the server:", changes.size()));
        for (const auto& change : changes) context.output.line("  " + describeChange(change));
        const std::string command = commandLine(
            context.options, comparesAll ? "review --compare-all" : "review", unambiguousName(profiles, profile));
        const std::string listed = " --listed " + listId(changes);
        context.output.note(translate("To decide, one of:"));
        context.output.note(command + " --download PATH..." + listed);
        context.output.note(command + " --download-all" + listed);
        context.output.note(command + " --keep-all" + listed);
    }

protected:
    static constexpr const char* restStays =
        translatable("What was downloaded already stays; the next review shows the rest.");

    [[nodiscard]] CommandError checkFailure(const Failure& failure) const {
        return serverFailure(profile, comparisonAim(profile), failure, translate("Nothing was changed."));
    }

    [[nodiscard]] CommandError choiceComesFirst() const {
        return choiceWaits(profile, profiles, context, translate("Nothing was decided."));
    }

    [[nodiscard]] CommandError checkRefused(const std::string& reason) const {
        return {
            ExitCode::failed, translate(
                                  "Cannot check the server of %1: %2 Nothing was changed.",
                                  {inQuotes(profile.name), reasonText(reason)})};
    }

    [[nodiscard]] CommandError downloadFailure(const Failure& failure) const {
        return serverFailure(
            profile, {translatable("Cannot download all that was chosen from the server of %1 (%2): %3")}, failure,
            translate(restStays));
    }

    // After a download that left files out, or could not be finished.
    [[nodiscard]] CommandError leftOutOf(const std::vector<std::string>& paths, bool reviewWaits) const {
        std::string listed;
        for (const auto& path : paths) listed += (listed.empty() ? "" : ", ") + inQuotes(path);
        const std::string next = reviewWaits ? translate("They wait for another review.")
                                             : translate("Nothing is newer on the server any more.");
        return {
            reviewWaits ? ExitCode::reviewWaiting : ExitCode::failed,
            translate("Not downloaded, because they changed or vanished meanwhile: %1.", {listed}) + " " + next};
    }

    void reportOutcome(const std::string& path, bool kept, bool downloaded) {
        if (!kept && !downloaded) leftOut.push_back(path);
        if (context.output.json()) {
            if (!kept && !downloaded) return;
            auto object = JsonLine::forProfile(kept ? "kept" : "downloaded", profile);
            object.text("path", path);
            context.output.line(object);
        } else if (kept) {
            context.output.line(translate("Kept local copy: %1", {printable(path)}));
        }
    }

    const Profile profile;
    const CommandContext& context;
    bool comparesAll = false;
    std::vector<std::string> leftOut; // neither kept nor downloaded by the decision

private:
    const std::vector<Profile> profiles;
};

// The review of this program, if no other one is running.
class OwnReview final : public Review {
public:
    OwnReview(Session& held, const Profile& reviewed, const CommandContext& commandContext, bool ofAll)
        : Review(held.model().profiles(), reviewed, commandContext), session(held), model(held.model()) {
        comparesAll = ofAll;
        if (ofAll) model.planResend(reviewed.id, Resend::everything);
    }

    std::vector<RemoteChange> check() override {
        const Uuid& id = profile.id;
        const auto interruptible = session.interruptible();
        model.start(id);
        runUntil([this, &id] {
            return model.firstComparison(id) != nullptr || model.reviews().contains(id)
                   || model.checkFailures().contains(id) || !model.running(id);
        });
        if (model.firstComparison(id) != nullptr) throw choiceComesFirst();
        if (model.checkFailures().contains(id)) throw checkFailure(model.checkFailure(id));
        if (const auto found = model.reviews().find(id); found != model.reviews().end()) return found->second.changes;
        if (model.status(id).failed()) throw checkRefused(model.status(id).detail);
        return {};
    }

    void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) override {
        const Uuid& id = profile.id;
        DecisionReport report(context.output);
        const Observing observing(model, report);
        if (model.resolveReview(id, model.reviews().at(id).reviewId, selected) != Decision::accepted) {
            throw CommandError(
                ExitCode::failed, reasonText(model.alert().value_or("")) + " " + translate("Nothing was decided."));
        }
        try {
            runUntil([this, &id] {
                return model.checkFailures().contains(id) || model.reviews().contains(id) || !model.running(id);
            });
        } catch (const Cancelled&) {
            throw CommandError(ExitCode::failed, translate("Interrupted.") + " " + translate(restStays));
        }
        const Failure failure = model.checkFailure(id);
        for (const auto& change : changes) {
            reportOutcome(change.path, !selected.contains(change.path), isDownloaded(change));
        }
        const bool waitsAgain = model.reviews().contains(id);
        model.shutdown();
        if (!failure.message.empty()) throw downloadFailure(failure);
        if (!leftOut.empty()) throw leftOutOf(leftOut, waitsAgain);
        if (!report.failure.empty()) throw CommandError(ExitCode::failed, reasonText(report.failure));
    }

    [[nodiscard]] const char* afterwards() const override { return translatable("Decided. Watching can go on."); }

private:
    void runUntil(const std::function<bool()>& condition) {
        if (!session.runUntil(condition)) throw Cancelled();
    }

    [[nodiscard]] bool isDownloaded(const RemoteChange& change) const {
        const auto* known = model.remoteDates(profile.id).find(change.path);
        return known != nullptr && *known == change.remoteDate;
    }

    Session& session;
    AppModel& model;
};

// The review of the running program, which carries the decision out.
class RunningReview final : public Review {
public:
    RunningReview(
        RunningProgram& asked, std::vector<Profile> all, const Profile& reviewed, const CommandContext& commandContext)
        : Review(std::move(all), reviewed, commandContext), program(asked) {}

    std::vector<RemoteChange> check() override {
        std::vector<RemoteChange> changes;
        const auto failed = program.ask(
            {.kind = ControlRequest::Kind::review, .profiles = {profile.id}}, context.interrupt,
            [&](const ControlAnswer& answer) {
                if (const auto* review = std::get_if<answer::Review>(&answer)) {
                    changes = review->changes;
                    revision = review->revision;
                }
            });
        if (!failed) return changes;
        if (failed->reason == Reason::server) throw checkFailure(failed->reported());
        if (failed->reason == Reason::choiceWaits) throw choiceComesFirst();
        if (failed->reason == Reason::refused) throw checkRefused(failed->text);
        if (failed->reason == Reason::needsDownload) throw downloadPending(profile);
        throw CommandError(
            ExitCode::failed, translate(
                                  "%1 is paused in the running program, so its server is not compared. resume compares "
                                  "it again; check lists the newer files.",
                                  {inQuotes(profile.name)}));
    }

    void decide(const std::vector<RemoteChange>& changes, const PathSet& selected) override {
        DecisionReport report(context.output);
        ControlRequest request{.kind = ControlRequest::Kind::decide, .profiles = {profile.id}, .revision = revision};
        request.downloadAll = selected.size() == changes.size();
        if (!request.downloadAll) request.download.assign(selected.begin(), selected.end());
        std::optional<answer::Failed> failed;
        try {
            failed = program.ask(request, context.interrupt, [&](const ControlAnswer& answer) {
                if (const auto* activity = std::get_if<answer::Activity>(&answer)) {
                    report.activityLogged(activity->profile, activity->line);
                } else if (const auto* outcome = std::get_if<answer::Outcome>(&answer)) {
                    reportOutcome(outcome->path, outcome->kept, outcome->downloaded);
                }
            });
        } catch (const Cancelled&) {
            throw CommandError(
                ExitCode::failed, translate("Interrupted. The running program carries the decision out."));
        }
        if (failed) throw undecided(*failed);
        if (!leftOut.empty()) throw leftOutOf(leftOut, program.reviewWaits());
        if (!report.failure.empty()) throw CommandError(ExitCode::failed, reasonText(report.failure));
    }

    [[nodiscard]] const char* afterwards() const override { return translatable("Decided. Watching goes on."); }

private:
    using Reason = answer::Failed::Reason;

    [[nodiscard]] CommandError undecided(const answer::Failed& failed) const {
        switch (failed.reason) {
        case Reason::server:
            return downloadFailure(failed.reported());
        case Reason::otherReview:
            return {
                ExitCode::failed,
                translateEngineText(outdatedDecision) + " " + translate("--list shows what there is.")};
        case Reason::paused:
            return {
                ExitCode::failed, translate(
                                      "%1 is paused in the running program. Nothing more was done; resume compares the "
                                      "server again.",
                                      {inQuotes(profile.name)})};
        default:
            return {ExitCode::failed, reasonText(failed.text) + " " + translate("Nothing more was done.")};
        }
    }

    RunningProgram& program;
    std::string revision;
};

PathSet reviewSelection(const ReviewRequest& request, const std::vector<RemoteChange>& changes) {
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
        ExitCode::failed, translate(
                              "Not among the files that are newer on the server: %1. Nothing was decided; --list shows "
                              "what there is.",
                              {unknown}));
}

ExitCode runReview(Review& review, const ReviewRequest& request, Output& output) {
    const auto changes = review.check();
    if (!request.decides()) {
        review.list(changes);
        return changes.empty() ? ExitCode::done : ExitCode::reviewWaiting;
    }
    if (!request.listed.empty() && !changes.empty() && request.listed != listId(changes)) {
        throw CommandError(
            ExitCode::reviewWaiting, translate(
                                         "The server has other files, or other versions, than those listed as %1. "
                                         "Nothing was decided; --list shows what there is.",
                                         {inQuotes(request.listed)}));
    }
    const auto selected = reviewSelection(request, changes);
    if (changes.empty()) {
        review.list(changes);
    } else {
        review.decide(changes, selected);
        output.note(translate(review.afterwards()));
    }
    return ExitCode::done;
}

ExitCode reviewInProgram(RunningProgram& program, const CommandContext& context, const ReviewRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    RunningReview review(program, state.profiles, profile, context);
    return runReview(review, request, context.output);
}

ExitCode reviewAlone(const CommandContext& context, const ReviewRequest& request) {
    Session session(context, {.passwordAccess = {.read = readStoredPassword}, .watches = false});
    const Profile profile = chooseProfile(session.model().profiles(), request.name);
    requireDownloaded(profile);
    if (const auto given = givenPassword(context)) session.model().keepForSession(profile.id, *given);
    const ProgressReport progress(session.model(), context.output);
    OwnReview review(session, profile, context, request.compareAll);
    return runReview(review, request, context.output);
}

ExitCode reviewProfile(const CommandContext& context, const ReviewRequest& request) {
    const StateStore store = StateFolder(context.options).open();
    return RunningProgram::askOrHold(
        store, [&](RunningProgram& program) { return reviewInProgram(program, context, request); },
        [&] { return reviewAlone(context, request); });
}

} // namespace

void addReview(Syntax& parent) {
    auto [command, request] =
        parent.command("review", "Decide about files that are newer on the server; uploads nothing", reviewProfile);
    command.profileArgument(request.name);
    excludeEachOther(
        {command.flag("--list", request.list, "Only show them (the default); nothing is changed"),
         command.option(
             "--download", request.download, "PATH",
             "Replace these local files by the server's, with a backup\nunder .zembrastel-backups, and keep the local "
             "version of\nall others"),
         command.flag("--download-all", request.downloadAll, "Replace all of them by the server's, with backups"),
         command.flag("--keep-all", request.keepAll, "Keep the local version of all of them")});
    command.option(
        "--listed", request.listed, "LIST",
        "Decide only if the files and their versions on the server\nare still those that --list showed with this ID");
    command.flag(
        "--compare-all", request.compareAll,
        "Review every file that differs on the server, as push --all\nfinds them; kept local versions are uploaded "
        "next");
    command.footer("A local version that is kept is uploaded by the next watch if it was edited or never\n"
                   "uploaded before. The same server version is not offered again.\n"
                   "If a program is running, window or watch, it carries the decision out and continues.\n\n"
                   "Examples:\n"
                   "  zembrastel-cli review \"My website\"\n"
                   "  zembrastel-cli review \"My website\" --download index.html images/logo.svg");
}

} // namespace zembrastel::cli
