#include "cli/session/push_in_program.h"

#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/push_results.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/translation.h"

namespace zembrastel::cli {

PausedInProgram::PausedInProgram(const Profile& profile)
    : CommandError(
        ExitCode::failed,
        translate(
            "%1 is paused in the running program. Nothing was uploaded; resume it first.", {inQuotes(profile.name)})) {}

PushInProgram::PushInProgram(RunningProgram& running, const CommandContext& commandContext, const std::string& name)
    : program(running), context(commandContext), profiles(StateFolder(context.options).loadProfiles()),
      profile(chooseProfile(profiles, name)) {}

void PushInProgram::run(bool downloadsFirst) {
    requirePushable(profile, downloadsFirst);
    std::size_t missing = 0;
    std::optional<std::int64_t> unchangedBefore;
    std::int64_t unchanged = 0;
    ProgressLines progress(context.output);
    ask(ControlRequest::Kind::push, [&](const ControlAnswer& answer) {
        if (const auto* status = std::get_if<answer::Status>(&answer)) {
            missing = static_cast<std::size_t>(status->missingOnServer);
            unchanged = status->status.contentsUnchanged;
            if (!unchangedBefore) unchangedBefore = unchanged;
            progress.show(profile, status->status.progress);
        } else if (const auto* activity = std::get_if<answer::Activity>(&answer);
                   activity != nullptr && activity->line.kind == Activity::Kind::uploaded) {
            printUploaded(profile, activity->line.path, context.output);
            sent.insert(activity->line.path);
        }
    });
    const auto sameContents = static_cast<std::size_t>(unchanged - unchangedBefore.value_or(unchanged));
    printPushed(
        profile, {.files = sent.size(), .sameContents = sameContents, .lacksFiles = missing > 0}, context.output);
    if (missing > 0) throw missingFilesError(profile, missing, profiles, context);
}

void PushInProgram::sendAgain(bool all) {
    requirePushable(profile);
    (void)askForMissing(all ? ControlRequest::Kind::sendAll : ControlRequest::Kind::sendMissing);
    if (context.output.json()) return context.output.line(JsonLine::forProfile("sending", profile));
    context.output.line(translate(
        "The running program compared %1 with the server, and now sends the files again. To watch it: status "
        "--follow",
        {inQuotes(profile.name)}));
}

void PushInProgram::leaveMissing() {
    requirePushable(profile);
    const std::uint64_t files = askForMissing(ControlRequest::Kind::leaveMissing);
    if (context.output.json()) {
        auto object = JsonLine::forProfile("missingLeft", profile);
        context.output.line(object.number("files", files));
    } else {
        context.output.line(files == 0 ? translate("No file is missing on the server.") : leftMissingText(files));
    }
}

void PushInProgram::ask(ControlRequest::Kind kind, const RunningProgram::Take& take) {
    using Reason = answer::Failed::Reason;
    std::vector<RemoteChange> changes;
    const auto failed =
        program.ask({.kind = kind, .profiles = {profile.id}}, context.interrupt, [&](const ControlAnswer& answer) {
            if (const auto* review = std::get_if<answer::Review>(&answer)) changes = review->changes;
            take(answer);
        });
    if (failed && failed->reason == Reason::server) {
        throw serverFailure(
            profile, comparisonAim(profile), failed->reported(),
            sent.empty() ? translate("Nothing was uploaded.") : "");
    }
    if (failed && failed->reason == Reason::paused) throw PausedInProgram(profile);
    if (failed && failed->reason == Reason::needsDownload) throw downloadPending(profile);
    if (failed && failed->reason == Reason::choiceWaits) {
        throw choiceWaits(profile, profiles, context, translate("Nothing was uploaded."));
    }
    if (failed) throw pushFailure(profile, failed->reported());
    if (!changes.empty()) refuseBecauseOf(changes, profile, profiles, context, {.sentSome = !sent.empty()});
}

std::uint64_t PushInProgram::askForMissing(ControlRequest::Kind kind) {
    std::uint64_t missing = 0;
    ask(kind, [&missing](const ControlAnswer& answer) {
        if (const auto* status = std::get_if<answer::Status>(&answer)) {
            missing = static_cast<std::uint64_t>(status->missingOnServer);
        }
    });
    return missing;
}

} // namespace zembrastel::cli
