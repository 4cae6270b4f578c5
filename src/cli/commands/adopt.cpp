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
#include "language/translation.h"
#include "model/error.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

struct AdoptRequest {
    std::string name;
    std::optional<std::string> by;
};

struct Wish {
    Adoption adoption = Adoption::alike;
    bool comparesContents = false;
};

std::optional<Wish> wishOf(const AdoptRequest& request) {
    if (!request.by) return std::nullopt;
    if (*request.by == "size") return Wish{};
    if (*request.by == "content") return Wish{.comparesContents = true};
    if (*request.by == "nothing") return Wish{.adoption = Adoption::nothing};
    throw CommandError(
        ExitCode::usage, translate("--by must be size, content or nothing, and not %1.", {inQuotes(*request.by)}));
}

void printNoChoice(const Profile& profile, Output& output) {
    if (output.json()) return;
    output.line(translate(
        "There is nothing to choose for %1: it was published before, or the server has none of its files.",
        {inQuotes(profile.name)}));
}

// Prints what was chosen. `now` is true if a running program uploads the others.
void printAdopted(const answer::Choice& found, Adoption adoption, const Profile& profile, Output& output, bool now) {
    const auto adopted = static_cast<std::uint64_t>(adoption == Adoption::alike ? found.alike : 0);
    const auto others = static_cast<std::uint64_t>(found.files) - adopted;
    if (output.json()) {
        auto object = JsonLine::forProfile("adopted", profile);
        output.line(object.number("files", adopted).number("others", others));
        return;
    }
    output.line(translatePlural(
        "%n file of %1 counts as published.", "%n files of %1 count as published.", adopted, {inQuotes(profile.name)}));
    if (others == 0) return;
    if (now) {
        output.note(
            adopted == 0 ? translatePlural(
                "The running program uploads all %n file now.", "The running program uploads all %n files now.", others)
                         : translatePlural(
                             "The running program uploads the other %n file now.",
                             "The running program uploads the other %n files now.", others));
    } else {
        output.note(
            adopted == 0
                ? translatePlural("push or watch uploads all %n file.", "push or watch uploads all %n files.", others)
                : translatePlural(
                    "push or watch uploads the other %n file.", "push or watch uploads the other %n files.", others));
    }
}

// By this program, if no other one is running.
class OwnAdoption {
public:
    OwnAdoption(Session& held, const Profile& adopted, const CommandContext& commandContext)
        : session(held), model(held.model()), profile(adopted), context(commandContext) {}

    ExitCode run(const std::optional<Wish>& wish) {
        model.start(profile.id);
        runUntil([this] { return found() || settled(); }, "");
        requireNoFailure(translate("Nothing was changed."));
        if (!found()) {
            if (model.status(profile.id).failed()) throw refusal(model.status(profile.id).detail);
            printNoChoice(profile, context.output);
            return ExitCode::done;
        }
        if (wish && wish->comparesContents) compare();
        const auto choice = choiceOf(*found(), false);
        if (!wish) {
            printChoice(choice, profile, model.profiles(), context);
            return ExitCode::reviewWaiting;
        }
        if (model.adopt(profile.id, wish->adoption) != Decision::accepted) throw refusal(model.alert().value_or(""));
        printAdopted(choice, wish->adoption, profile, context.output, false);
        runUntil([this] { return settled(); }, " " + translate("The choice is saved."));
        requireNoFailure(translate("The choice is saved."));
        return reportReview();
    }

private:
    [[nodiscard]] const FirstComparison* found() const { return model.firstComparison(profile.id); }

    [[nodiscard]] bool settled() const {
        const Uuid& id = profile.id;
        return model.checkFailures().contains(id) || model.reviews().contains(id) || !model.running(id);
    }

    void compare() {
        model.compareContents(profile.id);
        const auto ended = [this] { return !model.comparingContents(profile.id); };
        runUntil(ended, " " + translate("What was compared is kept: the same command continues."));
        requireNoFailure(translate("Nothing was changed. What was compared is kept: the same command continues."));
    }

    void runUntil(const std::function<bool()>& condition, const std::string& consequence) {
        if (session.runUntil(condition)) return;
        model.shutdown();
        throw CommandError(ExitCode::interrupted, translate("Interrupted.") + consequence);
    }

    void requireNoFailure(const std::string& consequence) const {
        if (!model.checkFailures().contains(profile.id)) return;
        throw serverFailure(profile, comparisonAim(profile), model.checkFailure(profile.id), consequence);
    }

    [[nodiscard]] CommandError refusal(const std::string& reason) const {
        return {
            ExitCode::failed, translate("Cannot adopt files of %1: %2", {inQuotes(profile.name), reasonText(reason)})};
    }

    // Files that are newer on the server wait for another decision.
    [[nodiscard]] ExitCode reportReview() const {
        const auto review = model.reviews().find(profile.id);
        if (review == model.reviews().end()) return ExitCode::done;
        context.output.note(translatePlural(
            "%n file newer on the server. To decide: %1", "%n files newer on the server. To decide: %1",
            review->second.changes.size(),
            {reviewCommand(context.options, unambiguousName(model.profiles(), profile))}));
        return ExitCode::reviewWaiting;
    }

    Session& session;
    AppModel& model;
    const Profile& profile;
    const CommandContext& context;
};

ExitCode adoptAlone(const CommandContext& context, const AdoptRequest& request) {
    Session session(
        context, {.passwordAccess = {.read = readStoredPassword},
                  .privateItems = StateFolder(context.options).privateItems(),
                  .watches = false});
    const Profile profile = chooseProfile(session.model().profiles(), request.name);
    requireDownloaded(profile);
    if (const auto given = givenPassword(context)) session.model().keepForSession(profile.id, *given);
    const ProgressReport progress(session.model(), context.output, ProgressReport::Lines::withoutLiveLine);
    return OwnAdoption(session, profile, context).run(wishOf(request));
}

// By the running program.
class AdoptionInProgram {
public:
    AdoptionInProgram(RunningProgram& running, const CommandContext& commandContext, const std::string& name)
        : program(running), context(commandContext), profiles(StateFolder(context.options).loadProfiles()),
          profile(chooseProfile(profiles, name)) {}

    ExitCode show() {
        const auto choice = ask({.kind = ControlRequest::Kind::status});
        if (!choice) {
            printNoChoice(profile, context.output);
            return ExitCode::done;
        }
        printChoice(*choice, profile, profiles, context);
        return ExitCode::reviewWaiting;
    }

    ExitCode carryOut(const Wish& wish) {
        if (wish.comparesContents) {
            context.output.note(translate("The running program compares the contents. To watch it: status --follow"));
        }
        const auto choice = ask(
            {.kind = ControlRequest::Kind::adopt,
             .adoption = wish.adoption,
             .comparesContents = wish.comparesContents});
        if (choice) {
            printAdopted(*choice, wish.adoption, profile, context.output, true);
        } else {
            printNoChoice(profile, context.output);
        }
        return ExitCode::done;
    }

private:
    // The choice that the answer reports.
    std::optional<answer::Choice> ask(ControlRequest request) {
        using Reason = answer::Failed::Reason;
        request.profiles = {profile.id};
        std::optional<answer::Choice> choice;
        const auto failed = program.ask(request, context.interrupt, [&](const ControlAnswer& answer) {
            if (const auto* status = std::get_if<answer::Status>(&answer)) choice = status->choice;
        });
        if (!failed) return choice;
        if (failed->reason == Reason::server) {
            throw serverFailure(profile, comparisonAim(profile), failed->reported(), translate("Nothing was changed."));
        }
        if (failed->reason == Reason::needsDownload) throw downloadPending(profile);
        if (failed->reason == Reason::paused) {
            throw CommandError(
                ExitCode::failed, translate(
                                      "%1 is paused in the running program. Nothing was changed; resume it first.",
                                      {inQuotes(profile.name)}));
        }
        throw CommandError(
            ExitCode::failed,
            translate("Cannot adopt files of %1: %2", {inQuotes(profile.name), reasonText(failed->text)}));
    }

    RunningProgram& program;
    const CommandContext& context;
    const std::vector<Profile> profiles;
    const Profile& profile;
};

ExitCode adoptProfile(const CommandContext& context, const AdoptRequest& request) {
    const auto wish = wishOf(request);
    return RunningProgram::askOrHold(
        StateFolder(context.options).open(),
        [&](RunningProgram& program) {
            AdoptionInProgram adoption(program, context, request.name);
            return wish ? adoption.carryOut(*wish) : adoption.show();
        },
        [&] { return adoptAlone(context, request); });
}

} // namespace

void addAdopt(Syntax& parent) {
    auto [command, request] = parent.command(
        "adopt", "Choose what to upload if the site is on the server already; uploads nothing", adoptProfile);
    command.profileArgument(request.name);
    command.option(
        "--by", request.by, "WHAT",
        "size: files with the same name and size count as published;\ncontent: the same after their contents were "
        "compared;\nnothing: all files are uploaded. Without this option, adopt\nonly shows what it found");
    command.footer("Before the first upload of a profile the server is compared. If it has files with the same names\n"
                   "and sizes, nothing is uploaded until you choose: push ends with 3, and watch waits. Files that\n"
                   "count as published are not uploaded until they change here. Files that are newer on the server\n"
                   "and differ are left for review in any case; adopt then ends with 3.\n"
                   "An interrupted comparison of contents continues where it ended.\n"
                   "If a program is running, window or watch, it carries the choice out and continues.\n\n"
                   "Examples:\n"
                   "  zembrastel-cli adopt \"My website\"\n"
                   "  zembrastel-cli adopt \"My website\" --by size && zembrastel-cli push \"My website\"");
}

} // namespace zembrastel::cli
