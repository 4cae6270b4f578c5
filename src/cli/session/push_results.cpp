#include "cli/session/push_results.h"

#include "app/diagnosis/failure_catalogue.h"
#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "sync/unchanged_contents.h"

namespace zembrastel::cli {

void requirePushable(const Profile& profile, bool downloadsFirst) {
    if (!downloadsFirst) requireDownloaded(profile);
    if (profile.hasEmptySyncSelection()) {
        throw CommandError(ExitCode::failed, translate("Nothing is selected to sync in %1.", {inQuotes(profile.name)}));
    }
}

void printUploaded(const Profile& profile, const std::string& path, Output& output) {
    if (output.json()) {
        auto object = JsonLine::forProfile("uploaded", profile);
        output.line(object.text("path", path));
    } else {
        output.line(translate("Uploaded %1", {printable(path)}));
    }
}

void printPushed(const Profile& profile, const Pushed& pushed, Output& output) {
    const auto [files, sameContents, lacksFiles] = pushed;
    if (output.json()) {
        if (lacksFiles) return;
        auto object = JsonLine::forProfile("pushed", profile);
        object.number("files", files);
        if (sameContents > 0) object.number("sameContents", sameContents);
        return output.line(object);
    }
    if (sameContents > 0) output.line(translateEngineText(unchangedContentsLine(sameContents)));
    if (files == 0 && lacksFiles) {
        output.line(translate("Nothing has changed in %1.", {inQuotes(profile.name)}));
    } else if (files == 0) {
        output.line(translate("Nothing to push: the server has all of %1.", {inQuotes(profile.name)}));
    } else {
        output.line(translatePlural("Pushed %1: %n file.", "Pushed %1: %n files.", files, {inQuotes(profile.name)}));
    }
}

std::string leftMissingText(std::size_t files) {
    return translatePlural(
        "%n file stays missing on the server, and will not be reported again.",
        "%n files stay missing on the server, and will not be reported again.", files);
}

CommandError pushFailure(const Profile& profile, const Failure& failure, const std::string& consequence) {
    return {
        serverExitCode(failure),
        translate(
            "Cannot push all of %1 (%2): %3",
            {inQuotes(profile.name), serverName(profile), explainedForCommand(failure, profile) + consequence}),
        explain(failure, profile).details};
}

CommandError missingFilesError(
    const Profile& profile, std::size_t missing, const std::vector<Profile>& profiles, const CommandContext& context) {
    return {
        ExitCode::failed,
        translatePlural(
            "%n file is missing on the server and was not sent, because nothing changed here.",
            "%n files are missing on the server and were not sent, because nothing changed here.", missing)
            + " " + sendMissingHint(context.options, missing, unambiguousName(profiles, profile))};
}

namespace {

const char* unpushedText(PushProgress reached) {
    if (reached.comparedAll) {
        return reached.sentSome
                   ? translatable("Not everything was uploaded, because the server has other versions of files. Decide "
                                  "on them first: %1")
                   : translatable("Nothing was uploaded, because the server has other versions of files. Decide on "
                                  "them first: %1");
    }
    return reached.sentSome
               ? translatable("Not everything was uploaded, because files are newer on the server. Decide on them "
                              "first: %1")
               : translatable("Nothing was uploaded, because files are newer on the server. Decide on them first: %1");
}

} // namespace

void refuseBecauseOf(
    const std::vector<RemoteChange>& changes, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context, PushProgress reached) {
    if (context.output.json()) {
        JsonLine object("review");
        addReviewFields(object, profile, changes, systemClock());
        context.output.line(object);
    } else {
        context.output.line(
            reached.comparedAll
                ? translatePlural(
                    "%n file different on the server:", "%n files different on the server:", changes.size())
                : translatePlural("%n file newer on the server:", "%n files newer on the server:", changes.size()));
        for (const auto& change : changes) context.output.line("  " + describeChange(change));
    }
    const char* const review = reached.comparedAll ? "review --compare-all" : "review";
    throw CommandError(
        ExitCode::reviewWaiting,
        translate(unpushedText(reached), {commandLine(context.options, review, unambiguousName(profiles, profile))}));
}

} // namespace zembrastel::cli
