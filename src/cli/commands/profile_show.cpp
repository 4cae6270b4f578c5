#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

struct ListRequest {};

struct ShowRequest {
    std::string name;
};

std::string conditionOf(const Profile& profile) {
    std::string text = profile.enabled ? "enabled" : "not enabled";
    if (profile.needsDownload) text += ", initial download still pending";
    if (profile.hasEmptySyncSelection()) text += ", nothing selected to sync";
    return text;
}

void printSummary(const Profile& profile, Output& output) {
    const auto detail = [&output](std::string_view name, std::string_view value) {
        constexpr std::size_t nameWidth = 8;
        std::string padded(name);
        padded.resize(nameWidth, ' ');
        output.line("    " + padded + oneLine(value));
    };
    output.line(oneLine(profile.name) + "  (" + conditionOf(profile) + ")");
    detail("id", profile.id.text());
    detail("server", serverName(profile) + ", " + std::string(rawValue(profile.transport)));
    detail("remote", profile.remoteFolder);
    detail("local", profile.localFolder);
}

ExitCode listProfiles(const CommandContext& context, const ListRequest&) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    for (const auto& profile : profiles) {
        if (context.output.json()) {
            context.output.line(asJsonLine("profile", encode(profile)));
        } else {
            printSummary(profile, context.output);
        }
    }
    if (profiles.empty()) context.output.note("There are no profiles yet; profile add makes one.");
    return ExitCode::done;
}

class ProfileDetails {
public:
    explicit ProfileDetails(Output& where) : output(where) {}

    void add(std::string name, std::string_view value) {
        constexpr std::size_t nameWidth = 18;
        name.resize(nameWidth, ' ');
        output.line(name + oneLine(value));
    }

    void add(std::string name, const DownloadSelection& selection) {
        if (!selection.hasSelection()) return add(std::move(name), "nothing");
        if (selection == DownloadSelection::everything()) return add(std::move(name), "everything");
        for (const auto& [path, chosen] : selection.rules) {
            add(std::exchange(name, ""), (chosen ? "with    " : "without ") + (path.empty() ? "/" : path));
        }
    }

private:
    Output& output;
};

void printDetails(const SavedState& state, const Profile& profile, Output& output) {
    ProfileDetails details(output);
    details.add("Name", profile.name);
    details.add("Id", profile.id.text());
    details.add("Server", serverName(profile));
    details.add("Transport", rawValue(profile.transport));
    details.add("Remote folder", profile.remoteFolder);
    details.add("Local folder", profile.localFolder);
    details.add("Enabled", profile.enabled ? "yes" : "no");
    details.add("Compares contents", profile.compareContents ? "yes" : "no");
    details.add("Initial download", profile.needsDownload ? "pending" : "not needed");
    if (profile.needsDownload && profile.initialDownloadSelection) {
        details.add("Downloads", *profile.initialDownloadSelection);
    }
    details.add("Syncs", profile.effectiveSyncSelection().value_or(DownloadSelection::everything()));
    std::string name = "Excludes";
    for (const auto rule : nonEmptyLines(profile.exclusions.text())) details.add(std::exchange(name, ""), rule);
    if (const auto* trusted = profile.keyInForce()) {
        details.add("Trusted key", trusted->key.grouped());
        details.add("", "since " + dateAndTime(trusted->since) + "; the certificate is not verified");
    }
    const auto baseline = state.baselines.find(profile.id);
    details.add("Synchronised", counted(baseline == state.baselines.end() ? 0 : baseline->second.size(), "file"));
}

ExitCode showProfile(const CommandContext& context, const ShowRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    if (context.output.json()) {
        context.output.line(asJsonLine("profile", encode(profile)));
    } else {
        printDetails(state, profile, context.output);
    }
    return ExitCode::done;
}

} // namespace

void addProfileList(Syntax& parent) { parent.command("list", "List the saved profiles", listProfiles); }

void addProfileShow(Syntax& parent) {
    auto [command, request] = parent.command("show", "Show everything that is saved of a profile", showProfile);
    command.profileArgument(request.name);
}

} // namespace zembrastel::cli
