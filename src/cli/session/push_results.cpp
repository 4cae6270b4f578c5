#include "cli/session/push_results.h"

#include "app/diagnosis/failure_catalogue.h"
#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "sync/unchanged_contents.h"

namespace zembrastel::cli {

void requirePushable(const Profile& profile, bool downloadsFirst) {
    if (!downloadsFirst) requireDownloaded(profile);
    if (profile.hasEmptySyncSelection()) {
        throw CommandError(ExitCode::failed, "Nothing is selected to sync in " + inQuotes(profile.name) + ".");
    }
}

void printUploaded(const Profile& profile, const std::string& path, Output& output) {
    if (output.json()) {
        auto object = JsonLine::forProfile("uploaded", profile);
        output.line(object.text("path", path));
    } else {
        output.line("Uploaded " + printable(path));
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
    if (sameContents > 0) output.line(unchangedContentsLine(sameContents));
    if (files == 0 && lacksFiles) {
        output.line("Nothing has changed in " + inQuotes(profile.name) + ".");
    } else if (files == 0) {
        output.line("Nothing to push: the server has all of " + inQuotes(profile.name) + ".");
    } else {
        output.line("Pushed " + inQuotes(profile.name) + ": " + counted(files, "file") + ".");
    }
}

std::string leftMissingText(std::size_t files) {
    return counted(files, "file") + (files == 1 ? " stays" : " stay")
           + " missing on the server, and will not be reported again.";
}

CommandError pushFailure(const Profile& profile, const Failure& failure, const std::string& consequence) {
    return {
        serverExitCode(failure), "Cannot push all of " + inQuotes(profile.name) + " (" + serverName(profile)
                                     + "): " + explainedText(failure, profile) + consequence};
}

CommandError missingFilesError(
    const Profile& profile, std::size_t missing, const std::vector<Profile>& profiles, const CommandContext& context) {
    return {
        ExitCode::failed, missingText(missing) + (missing == 1 ? " and was" : " and were")
                              + " not sent, because nothing changed here. "
                              + sendMissingHint(context.options, missing, unambiguousName(profiles, profile))};
}

void refuseBecauseOf(
    const std::vector<RemoteChange>& changes, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context, PushProgress reached) {
    if (context.output.json()) {
        JsonLine object("review");
        addReviewFields(object, profile, changes, systemClock());
        context.output.line(object);
    } else {
        context.output.line(
            counted(changes.size(), "file")
            + (reached.comparedAll ? " different on the server:" : " newer on the server:"));
        for (const auto& change : changes) context.output.line("  " + describeChange(change));
    }
    const char* const review = reached.comparedAll ? "review --compare-all" : "review";
    throw CommandError(
        ExitCode::reviewWaiting,
        std::string(reached.sentSome ? "Not everything was uploaded" : "Nothing was uploaded")
            + (reached.comparedAll ? ", because the server has other versions of files"
                                   : ", because files are newer on the server")
            + ". Decide on them first: " + commandLine(context.options, review, unambiguousName(profiles, profile)));
}

} // namespace zembrastel::cli
