#include "cli/commands.h"

#include "app/context/main_context.h"
#include "app/context/retry_on_wake.h"
#include "app/control/control_service.h"
#include "cli/session/passwords.h"
#include "cli/session/profile_choice.h"
#include "cli/session/progress_report.h"
#include "cli/session/session.h"
#include "cli/text/choice_text.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "cli/text/status_text.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace zembrastel::cli {
namespace {

struct WatchRequest {
    std::vector<std::string> names;
};

// Prints the events of the watched profiles as they happen. Observes the model on the main context.
class WatchReport final : public ModelObserver {
public:
    WatchReport(const AppModel& observed, const CommandContext& commandContext)
        : model(observed), context(commandContext) {}

    void statusChanged(const Uuid& id) override;
    void activityLogged(const Uuid& id, const Activity& activity) override;
    void reviewChanged(const Uuid& id) override;
    void alertChanged() override;

private:
    void print(const Profile& profile, const std::vector<std::string>& lines);
    void printMissing(const Profile& profile, bool missing);
    void printMissingOnServer(const Uuid& id);
    void printWaitingChoice(const Uuid& id);
    void printReview(const Profile& profile, const std::vector<RemoteChange>& changes);
    [[nodiscard]] JsonLine& begin(JsonLine& object, const Profile& profile) const;

    const AppModel& model;
    const CommandContext& context;
    Clock& clock = systemClock();
    std::map<Uuid, Narration> narrations;
    std::map<Uuid, std::string> lastStatus;
    // Those about which a hint was printed.
    std::set<Uuid> reviewsPrinted;
    std::set<Uuid> missingPrinted;
    std::set<Uuid> missingOnServerPrinted;
    std::set<Uuid> choicesPrinted;
};

void WatchReport::print(const Profile& profile, const std::vector<std::string>& lines) {
    std::string begin = clockTime(clock.now()) + "  " + oneLine(profile.name) + "  ";
    for (const auto& line : lines) context.output.line(std::exchange(begin, "") + line);
}

JsonLine& WatchReport::begin(JsonLine& object, const Profile& profile) const {
    return object.text("time", universalTime(clock.now())).text("profile", profile.name).text("id", profile.id.text());
}

void WatchReport::statusChanged(const Uuid& id) {
    const Profile* profile = model.profile(id);
    if (profile == nullptr) return;
    const ProfileStatus& status = model.status(id);
    if (!context.output.json()) {
        print(*profile, narrations[id].status(status, profile));
        printMissing(*profile, status.filesMissing());
        return;
    }
    // The model repeats it at every scan of the folder.
    JsonLine known("status");
    addStatusFields(known, status);
    std::string fields = known.finished();
    if (lastStatus[id] == fields) return;
    lastStatus[id] = std::move(fields);
    JsonLine object("status");
    addStatusFields(begin(object, *profile), status);
    context.output.line(object);
}

// Prints once how to continue without the files.
void WatchReport::printMissing(const Profile& profile, bool missing) {
    if (!missing) {
        missingPrinted.erase(profile.id);
    } else if (missingPrinted.insert(profile.id).second) {
        const std::string name = unambiguousName(model.profiles(), profile);
        context.output.line(
            "  "
            + translate(
                "If you deleted the files, in another terminal: %1",
                {commandLine(context.options, "forget-files", name)}));
    }
}

void WatchReport::activityLogged(const Uuid& id, const Activity& activity) {
    const Profile* profile = model.profile(id);
    if (profile == nullptr) return;
    if (!context.output.json()) {
        print(*profile, narrations[id].activity(activity, profile));
        return;
    }
    JsonLine object("activity");
    begin(object, *profile).text("text", activity.text).flag("error", activity.error());
    context.output.line(object);
}

void WatchReport::reviewChanged(const Uuid& id) {
    printMissingOnServer(id);
    printWaitingChoice(id);
    const auto review = model.reviews().find(id);
    if (review == model.reviews().end()) {
        reviewsPrinted.erase(id);
    } else if (const Profile* profile = model.profile(id); profile != nullptr && reviewsPrinted.insert(id).second) {
        printReview(*profile, review->second.changes);
    }
}

void WatchReport::printReview(const Profile& profile, const std::vector<RemoteChange>& changes) {
    if (context.output.json()) {
        JsonLine object("review");
        addReviewFields(object, profile, changes, clock);
        context.output.line(object);
        return;
    }
    constexpr std::size_t maxPaths = 20;
    print(profile, {translatePlural("%n file newer on the server:", "%n files newer on the server:", changes.size())});
    for (std::size_t index = 0; index < std::min(changes.size(), maxPaths); ++index) {
        context.output.line("    " + printable(changes[index].path));
    }
    if (changes.size() > maxPaths) {
        context.output.line("    " + translate("and %1 more", {std::to_string(changes.size() - maxPaths)}));
    }
    const std::string name = unambiguousName(model.profiles(), profile);
    context.output.line(
        "  " + translate("To decide, in another terminal: %1", {reviewCommand(context.options, name)}) + " --list");
}

// Prints once how to send the files again.
void WatchReport::printMissingOnServer(const Uuid& id) {
    const auto files = model.missingOnServer(id).size();
    const Profile* profile = model.profile(id);
    if (files == 0) {
        missingOnServerPrinted.erase(id);
    } else if (profile != nullptr && missingOnServerPrinted.insert(id).second && !context.output.json()) {
        const std::string name = unambiguousName(model.profiles(), *profile);
        context.output.line("  " + sendMissingHint(context.options, files, name));
    }
}

// Prints once how to choose.
void WatchReport::printWaitingChoice(const Uuid& id) {
    const auto* found = model.firstComparison(id);
    const Profile* profile = model.profile(id);
    if (found == nullptr) {
        choicesPrinted.erase(id);
    } else if (profile != nullptr && choicesPrinted.insert(id).second) {
        printChoice(choiceOf(*found, model.comparingContents(id)), *profile, model.profiles(), context);
    }
}

void WatchReport::alertChanged() {
    if (model.alert()) context.output.error(translateEngineText(*model.alert()));
}

std::vector<Profile> enabledProfiles(const std::vector<Profile>& profiles) {
    std::vector<Profile> enabled;
    std::ranges::copy_if(profiles, std::back_inserter(enabled), &Profile::enabled);
    if (!enabled.empty()) return enabled;
    throw CommandError(
        ExitCode::nothingToWatch,
        profiles.empty()
            ? translate("There is no profile to watch yet; profile add makes one.")
            : translate("No profile is enabled. Name the profiles to watch: %1.", {listedNames(profiles)}));
}

std::vector<Profile> profilesToWatch(const std::vector<Profile>& profiles, const std::vector<std::string>& names) {
    return names.empty() ? enabledProfiles(profiles) : chooseProfiles(profiles, names);
}

// Returns when the user interrupts; throws when no profile is left to watch.
void watchUntilInterrupted(
    Session& session, const ControlService& control, const std::vector<Profile>& profiles, const Interrupt& interrupt) {
    AppModel& model = session.model();
    const auto interruptible = session.interruptible();
    for (const auto& profile : profiles) model.start(profile.id);
    const bool ended = session.runUntil([&] {
        const auto runs = [&model](const Profile& profile) { return model.running(profile.id); };
        return !control.holdsPaused() && std::ranges::none_of(model.profiles(), runs);
    });
    if (!ended || interrupt.happened()) return;
    throw CommandError(
        ExitCode::failed, profiles.size() == 1
                              ? translate("Watching ended: %1 cannot go on.", {inQuotes(profiles.front().name)})
                              : translate("Watching ended: none of the profiles can go on."));
}

ExitCode watchProfiles(const CommandContext& context, const WatchRequest& request) {
    const Output::NeverWaiting publishing(context.output, Output::NeverWaiting::usualRoom);
    Session session(
        context,
        {.passwordAccess = {.read = readStoredPassword}, .privateItems = StateFolder(context.options).privateItems()});
    AppModel& model = session.model();
    const auto profiles = profilesToWatch(model.profiles(), request.names);
    try {
        if (const auto given = givenPassword(context)) {
            for (const auto& profile : profiles) model.keepForSession(profile.id, *given);
        }
    } catch (const Cancelled&) {
        return ExitCode::done;
    }
    WatchReport report(model, context);
    const Observing observing(model, report);
    const ControlService control(model, session.queue(), session.folder());
    if (control.failure()) {
        context.output.warning(
            translate("Other commands cannot reach this program: %1", {reasonText(*control.failure())}));
    }
    const ProgressReport progress(model, context.output);
    context.output.note(translate("Watching %1. Ctrl-C stops.", {listedNames(profiles)}));
    const RetryOnWake retryOnWake(session.queue(), model);
    watchUntilInterrupted(session, control, profiles, context.interrupt);
    model.shutdown();
    context.output.note(translate("Stopped."));
    return ExitCode::done;
}

} // namespace

void addWatch(Syntax& parent) {
    auto [command, request] = parent.command("watch", "Keep profiles published until Ctrl-C", watchProfiles);
    command.argument("NAME", request.names, "Names or ids of profiles (default: every enabled profile)").optional();
    command.footer("First the server is compared with the last synchronised state. Files that another person made\n"
                   "newer there wait for a decision (see review), and nothing is uploaded until then.\n"
                   "After that every new or changed file is uploaded a few seconds after it was saved.\n"
                   "Nothing is ever deleted on the server. Failures are reported and retried, and at once when the\n"
                   "machine wakes from sleep or its network returns.\n"
                   "Meanwhile status, pause, resume and review work from another terminal.\n\n"
                   "Example:\n"
                   "  zembrastel-cli watch \"My website\" --password-file ~/.ftp-password");
}

} // namespace zembrastel::cli
