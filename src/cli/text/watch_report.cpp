#include "cli/text/watch_report.h"

#include "cli/session/profile_choice.h"
#include "cli/text/presentation.h"
#include "cli/text/review_text.h"
#include "cli/text/status_text.h"
#include "platform/text.h"

#include <algorithm>

namespace zembrastel::cli {

void WatchReport::tell(const Profile& profile, const std::string& text) {
    around.output.line(clockTime(clock.now()) + "  " + oneLine(profile.name) + "  " + text);
}

JsonLine& WatchReport::begin(JsonLine& object, const Profile& profile) const {
    return object.text("time", universalTime(clock.now())).text("profile", profile.name).text("id", profile.id.text());
}

void WatchReport::statusChanged(const Uuid& id) {
    const Profile* profile = model.profile(id);
    if (profile == nullptr) return;
    const ProfileStatus& status = model.status(id);
    if (!around.output.json()) {
        if (const auto line = narrations[id].status(status)) tell(*profile, *line);
        tellMissing(*profile, status.filesMissing());
        return;
    }
    // The model repeats it at every look at the folder.
    JsonLine known("status");
    addStatus(known, status);
    std::string told = known.finished();
    if (lastStatus[id] == told) return;
    lastStatus[id] = std::move(told);
    JsonLine object("status");
    addStatus(begin(object, *profile), status);
    around.output.line(object);
}

// How to go on without the files, once.
void WatchReport::tellMissing(const Profile& profile, bool missing) {
    if (!missing) {
        missingTold.erase(profile.id);
    } else if (missingTold.insert(profile.id).second) {
        const std::string name = unambiguousName(model.profiles(), profile);
        around.output.line(
            "  If you deleted the files, in another terminal: " + commandLine(around.options, "forget-files", name));
    }
}

void WatchReport::activityLogged(const Uuid& id, const Activity& activity) {
    const Profile* profile = model.profile(id);
    if (profile == nullptr) return;
    if (!around.output.json()) {
        if (const auto line = narrations[id].activity(activity)) tell(*profile, *line);
        return;
    }
    JsonLine object("activity");
    begin(object, *profile).text("text", activity.text).flag("error", activity.error());
    around.output.line(object);
}

void WatchReport::reviewChanged(const Uuid& id) {
    tellMissingOnServer(id);
    const auto review = model.reviews().find(id);
    if (review == model.reviews().end()) {
        reviewsTold.erase(id);
    } else if (const Profile* profile = model.profile(id); profile != nullptr && reviewsTold.insert(id).second) {
        tellReview(*profile, review->second.changes);
    }
}

void WatchReport::tellReview(const Profile& profile, const std::vector<RemoteChange>& changes) {
    if (around.output.json()) {
        JsonLine object("review");
        addReview(object, profile, changes, clock);
        around.output.line(object);
        return;
    }
    constexpr std::size_t mostPaths = 20;
    tell(profile, counted(changes.size(), "file") + " newer on the server:");
    for (std::size_t index = 0; index < std::min(changes.size(), mostPaths); ++index) {
        around.output.line("    " + printable(changes[index].path));
    }
    if (changes.size() > mostPaths) {
        around.output.line("    and " + std::to_string(changes.size() - mostPaths) + " more");
    }
    const std::string name = unambiguousName(model.profiles(), profile);
    around.output.line("  To decide, in another terminal: " + reviewCommand(around.options, name) + " --list");
}

// How to have them sent again, once.
void WatchReport::tellMissingOnServer(const Uuid& id) {
    const auto files = model.missingOnServer(id).size();
    const Profile* profile = model.profile(id);
    if (files == 0) {
        missingOnServerTold.erase(id);
    } else if (profile != nullptr && missingOnServerTold.insert(id).second && !around.output.json()) {
        const std::string name = unambiguousName(model.profiles(), *profile);
        around.output.line("  " + sendMissingHint(around.options, files, name));
    }
}

void WatchReport::alertChanged() {
    if (model.alert()) around.output.error(*model.alert());
}

} // namespace zembrastel::cli
