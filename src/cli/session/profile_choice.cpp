#include "cli/session/profile_choice.h"

#include "cli/command.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

[[noreturn]] void refuseUnknown(const std::vector<Profile>& profiles, const std::string& wanted) {
    const std::string known = profiles.empty() ? translate("There are none yet; profile add makes one.")
                                               : translate("There is %1.", {listedNames(profiles)});
    throw CommandError(ExitCode::failed, translate("No profile has the name or id %1. %2", {inQuotes(wanted), known}));
}

[[noreturn]] void refuseAmbiguous(const std::vector<const Profile*>& named) {
    std::string ids;
    for (const auto* profile : named) ids += (ids.empty() ? "" : ", ") + profile->id.text();
    throw CommandError(
        ExitCode::failed, translate(
                              "Several profiles have the name %1. Give the id of one instead: %2.",
                              {inQuotes(named.front()->name), ids}));
}

std::vector<const Profile*> profilesNamed(const std::vector<Profile>& profiles, const std::string& name) {
    std::vector<const Profile*> found;
    for (const auto& profile : profiles) {
        if (profile.name == name) found.push_back(&profile);
    }
    return found;
}

} // namespace

const Profile& chooseProfile(const std::vector<Profile>& profiles, const std::string& nameOrId) {
    if (const auto id = Uuid::parse(nameOrId)) {
        const auto found = std::ranges::find(profiles, *id, &Profile::id);
        if (found != profiles.end()) return *found;
    }
    const auto named = profilesNamed(profiles, nameOrId);
    if (named.empty()) refuseUnknown(profiles, nameOrId);
    if (named.size() > 1) refuseAmbiguous(named);
    return *named.front();
}

std::vector<Profile> chooseProfiles(const std::vector<Profile>& profiles, const std::vector<std::string>& namesOrIds) {
    std::vector<Profile> chosen;
    for (const auto& nameOrId : namesOrIds) {
        const Profile& profile = chooseProfile(profiles, nameOrId);
        if (std::ranges::find(chosen, profile.id, &Profile::id) == chosen.end()) chosen.push_back(profile);
    }
    return chosen;
}

std::string unambiguousName(const std::vector<Profile>& profiles, const Profile& profile) {
    const bool alone = profilesNamed(profiles, profile.name).size() == 1;
    // A name in the form of an id could be the id of another profile; a name with invisible characters cannot be typed.
    const bool typable = printable(profile.name) == profile.name;
    return alone && typable && !Uuid::parse(profile.name) ? profile.name : profile.id.text();
}

std::string serverName(const Profile& profile) {
    return profile.username + "@" + profile.host + ":" + std::to_string(profile.port);
}

std::string listedNames(const std::vector<Profile>& profiles) {
    std::string names;
    for (std::size_t index = 0; index < profiles.size(); ++index) {
        if (index > 0) names += index + 1 == profiles.size() ? translate(" and ") : ", ";
        names += inQuotes(profiles[index].name);
    }
    return names;
}

std::string relativePath(std::string_view typed) {
    auto components = splitNonEmpty(typed, '/');
    std::erase(components, ".");
    return join(components, '/');
}

std::string pathInProfile(const Profile& profile, const std::string& typed) {
    const auto refuse = [&typed, &profile] {
        throw CommandError(
            ExitCode::usage,
            translate(
                "The path %1 is not below the local folder %2.", {inQuotes(typed), oneLine(profile.localFolder)}));
    };
    std::string path = typed;
    if (typed.starts_with('/') && !relativePath(typed).empty()) {
        const auto inside = std::filesystem::path(typed).lexically_normal().lexically_relative(profile.localFolder);
        path = inside.string();
        if (path.empty()) refuse();
    }
    path = relativePath(path);
    const auto components = splitNonEmpty(path, '/');
    if (std::ranges::find(components, "..") != components.end()) refuse();
    return path;
}

} // namespace zembrastel::cli
