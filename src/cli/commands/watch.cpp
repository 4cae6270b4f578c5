#include "cli/commands/watch.h"

#include "app/context/main_queue.h"
#include "app/context/retry_on_wake.h"
#include "app/control/control_service.h"
#include "cli/session/observing.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "cli/text/watch_report.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

std::vector<Profile> enabledProfiles(const std::vector<Profile>& profiles) {
    std::vector<Profile> enabled;
    std::ranges::copy_if(profiles, std::back_inserter(enabled), &Profile::enabled);
    if (!enabled.empty()) return enabled;
    throw CommandError(
        ExitCode::failed, profiles.empty()
                              ? "There is no profile to watch yet; profile add makes one."
                              : "No profile is enabled. Say which to watch, by name: " + listedNames(profiles) + ".");
}

std::vector<Profile> chosenProfiles(const std::vector<Profile>& profiles, const std::vector<std::string>& names) {
    if (names.empty()) return enabledProfiles(profiles);
    std::vector<Profile> chosen;
    for (const auto& name : names) {
        const Profile& profile = chooseProfile(profiles, name);
        if (std::ranges::find(chosen, profile.id, &Profile::id) == chosen.end()) chosen.push_back(profile);
    }
    return chosen;
}

// Returns when interrupted; throws when nothing is left to watch.
void watchUntilInterrupted(
    AppModel& model, MainQueue& queue, const ControlService& control, const std::vector<Profile>& profiles,
    const Surroundings& around) {
    const auto interruptible = around.interrupt.during([&queue] { queue.quit(); });
    for (const auto& profile : profiles) model.start(profile.id);
    const auto isOver = [&] {
        const auto runs = [&model](const Profile& profile) { return model.running(profile.id); };
        return !control.holdsPaused() && std::ranges::none_of(model.profiles(), runs);
    };
    const bool ended = queue.runUntil(isOver);
    if (!ended || around.interrupt.happened()) return;
    throw CommandError(
        ExitCode::failed, profiles.size() == 1 ? "Watching ended: " + inQuotes(profiles.front().name) + " cannot go on."
                                               : "Watching ended: none of the profiles can go on.");
}

ExitCode watch(const Surroundings& around, const std::vector<std::string>& names) {
    const StateStore store = openState(around.options);
    const InstanceLock held = holdState(store);
    const Output::NeverWaiting publishing(around.output, Output::NeverWaiting::usualRoom);
    MainQueue queue;
    AppModel model(
        queue, {.storeOverride = store,
                .passwordAccess = {.read = readStoredPassword},
                .privateItems = privateItems(around.options)});
    requireLoaded(model);
    const auto profiles = chosenProfiles(model.profiles(), names);
    try {
        if (const auto given = givenPassword(around)) {
            for (const auto& profile : profiles) model.keepForSession(profile.id, *given);
        }
    } catch (const Cancelled&) {
        return ExitCode::done;
    }
    WatchReport report(model, around);
    const Observing observing(model, report);
    const ControlService control(model, queue, store.folder());
    if (control.failure()) {
        around.output.warning("Other commands cannot reach this program: " + sentence(*control.failure()));
    }
    const ProgressReport progress(model, around.output);
    around.output.note("Watching " + listedNames(profiles) + ". Ctrl-C stops.");
    const RetryOnWake retryOnWake(queue, model);
    watchUntilInterrupted(model, queue, control, profiles, around);
    model.shutdown();
    around.output.note("Stopped.");
    return ExitCode::done;
}

} // namespace

void addWatch(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("watch", "Keep profiles published until Ctrl-C");
    const auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, "Names or ids of profiles; every enabled profile when left out")->type_name("");
    command->footer("First the server is compared with what was last synchronised. Files that somebody else\n"
                    "made newer there wait for a decision (see review), and nothing is uploaded until then.\n"
                    "After that every new or changed file is uploaded a few seconds after it was saved.\n"
                    "Nothing is ever deleted on the server. Failures are told and tried again, at once when the\n"
                    "machine has woken from sleep or its network is back.\n"
                    "Meanwhile status, pause, resume and review work from another terminal.\n\n"
                    "Example:\n"
                    "  zembrastel-cli watch \"My website\" --password-file ~/.ftp-password");
    command->callback(
        [&chosen, names] { chosen = [names](const Surroundings& around) { return watch(around, *names); }; });
}

} // namespace zembrastel::cli
