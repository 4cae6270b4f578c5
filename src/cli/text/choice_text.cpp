#include "cli/text/choice_text.h"

#include "app/progress_text.h"
#include "cli/session/profile_choice.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"

namespace zembrastel::cli {
namespace {

std::uint64_t figure(std::int64_t number) { return static_cast<std::uint64_t>(number); }

void printFound(const answer::Choice& choice, Output& output) {
    output.line(choiceSummary(choice));
    if (choice.different > 0) {
        output.line(
            "  "
            + translatePlural(
                "%n more file there has the same size but other contents.",
                "%n more files there have the same size but other contents.", figure(choice.different)));
    }
    if (choice.otherSizes > 0) {
        output.line(
            "  "
            + translatePlural(
                "%n more file is there with another size.", "%n more files are there with another size.",
                figure(choice.otherSizes)));
    }
    if (const auto replaced = choice.different + choice.otherSizes; replaced > 0) {
        output.line(
            "  "
            + translatePlural(
                "Uploading the others replaces %n file on the server.",
                "Uploading the others replaces %n files on the server.", figure(replaced)));
    }
    if (choice.comparing) output.line("  " + translate("The running program compares their contents now."));
}

} // namespace

std::string choiceSummary(const answer::Choice& choice) {
    const std::string files = filesText(figure(choice.files));
    if (choice.alike > 0 && choice.same == choice.alike) {
        return translatePlural(
            "%n of %1 is the same on the server: their contents were compared.",
            "%n of %1 are the same on the server: their contents were compared.", figure(choice.alike), {files});
    }
    return translatePlural(
        "%n of %1 is on the server already: names and sizes match.",
        "%n of %1 are on the server already: names and sizes match.", figure(choice.alike), {files});
}

void addChoiceFields(JsonLine& object, const answer::Choice& choice) {
    object.number("files", figure(choice.files)).number("alike", figure(choice.alike));
    object.number("others", figure(choice.others())).number("otherSizes", figure(choice.otherSizes));
    object.number("same", figure(choice.same)).number("different", figure(choice.different));
    object.number("bytesToCompare", figure(choice.bytesToCompare)).flag("comparing", choice.comparing);
}

void printChoice(
    const answer::Choice& choice, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context) {
    Output& output = context.output;
    if (output.json()) {
        auto object = JsonLine::forProfile("choice", profile);
        addChoiceFields(object, choice);
        output.line(object);
        return;
    }
    printFound(choice, output);
    const std::string command = commandLine(context.options, "adopt", unambiguousName(profiles, profile)) + " --by ";
    output.note(
        (choice.others() == 0 ? translate("To upload nothing:")
                              : translate("To upload the other %1:", {std::to_string(choice.others())}))
        + " " + command + "size");
    if (choice.bytesToCompare > 0) {
        output.note(
            translate(
                "To compare contents first, which downloads %1:",
                {translateProgress(sizeText(figure(choice.bytesToCompare)))})
            + " " + command + "content");
    }
    output.note(translate("To upload all %1:", {std::to_string(choice.files)}) + " " + command + "nothing");
}

CommandError choiceWaits(
    const Profile& profile, const std::vector<Profile>& profiles, const CommandContext& context,
    const std::string& consequence) {
    return {
        ExitCode::reviewWaiting,
        translate(
            "Files of %1 are on the server already, and it is not known whether they are the same. %2 Choose what to "
            "upload: %3",
            {inQuotes(profile.name), consequence,
             commandLine(context.options, "adopt", unambiguousName(profiles, profile))})};
}

} // namespace zembrastel::cli
