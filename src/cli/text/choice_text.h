// The choice that a first check waits for, in words, and the commands that choose.
#pragma once

#include "app/control/control_messages.h"
#include "cli/command.h"
#include "cli/terminal/json_line.h"
#include "cli/terminal/output.h"
#include "model/profile.h"

#include <string>
#include <vector>

namespace zembrastel::cli {

// "612 of 640 files are on the server already."
[[nodiscard]] std::string choiceSummary(const answer::Choice& choice);

// Adds the figures as members.
void addChoiceFields(JsonLine& object, const answer::Choice& choice);

// Prints what was found and the commands that choose, or a "choice" event.
void printChoice(
    const answer::Choice& choice, const Profile& profile, const std::vector<Profile>& profiles,
    const CommandContext& context);

// The end of a command that would upload, or needs the choice for another reason. `consequence` is a sentence.
[[nodiscard]] CommandError choiceWaits(
    const Profile& profile, const std::vector<Profile>& profiles, const CommandContext& context,
    const std::string& consequence);

} // namespace zembrastel::cli
