#include "cli/text/choice_text.h"

#include "app/progress_text.h"
#include "cli/session/profile_choice.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"

namespace zembrastel::cli {
namespace {

std::uint64_t figure(std::int64_t number) { return static_cast<std::uint64_t>(number); }

std::string isOrAre(std::int64_t files) { return files == 1 ? " is" : " are"; }

void printFound(const answer::Choice& choice, Output& output) {
    output.line(choiceSummary(choice));
    if (choice.different > 0) {
        output.line(
            "  " + counted(figure(choice.different), "more file") + " there"
            + (choice.different == 1 ? " has" : " have") + " the same size but other contents.");
    }
    if (choice.otherSizes > 0) {
        output.line(
            "  " + counted(figure(choice.otherSizes), "more file") + isOrAre(choice.otherSizes)
            + " there with another size.");
    }
    if (choice.comparing) output.line("  The running program compares their contents now.");
}

} // namespace

std::string choiceSummary(const answer::Choice& choice) {
    const std::string some = std::to_string(choice.alike) + " of " + counted(figure(choice.files), "file");
    if (choice.alike > 0 && choice.same == choice.alike) {
        return some + isOrAre(choice.alike) + " the same on the server: their contents were compared.";
    }
    return some + isOrAre(choice.alike) + " on the server already: names and sizes match.";
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
    const std::string others = choice.others() == 0 ? "nothing" : "the other " + std::to_string(choice.others());
    output.note("To upload " + others + ": " + command + "size");
    if (choice.bytesToCompare > 0) {
        output.note(
            "To compare contents first, which downloads " + sizeText(figure(choice.bytesToCompare)) + ": " + command
            + "content");
    }
    output.note("To upload all " + std::to_string(choice.files) + ": " + command + "nothing");
}

CommandError choiceWaits(
    const Profile& profile, const std::vector<Profile>& profiles, const CommandContext& context,
    const std::string& consequence) {
    return {
        ExitCode::reviewWaiting,
        "Files of " + inQuotes(profile.name)
            + " are on the server already, and it is not known whether they are the same. " + consequence
            + " Choose what to upload: " + commandLine(context.options, "adopt", unambiguousName(profiles, profile))};
}

} // namespace zembrastel::cli
