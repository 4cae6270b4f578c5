#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

struct ListRequest {};

struct ShowRequest {
    std::string name;
};

std::string conditionOf(const Profile& profile) {
    std::string text = profile.enabled ? translate("enabled") : translate("not enabled");
    if (profile.needsDownload) text += translate(", initial download still pending");
    if (profile.hasEmptySyncSelection()) text += translate(", nothing selected to sync");
    return text;
}

void printSummary(const Profile& profile, Output& output) {
    const auto detail = [&output](std::string_view name, std::string_view value) {
        constexpr std::size_t nameWidth = 8;
        output.line("    " + padded(std::string(name), nameWidth) + oneLine(value));
    };
    output.line(oneLine(profile.name) + "  (" + conditionOf(profile) + ")");
    detail(translate("id"), profile.id.text());
    detail(translate("server"), serverName(profile) + ", " + std::string(rawValue(profile.transport)));
    detail(translate("remote"), profile.remoteFolder);
    detail(translate("local"), profile.localFolder);
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
    if (profiles.empty()) context.output.note(translate("There are no profiles yet; profile add makes one."));
    return ExitCode::done;
}

class ProfileDetails {
public:
    explicit ProfileDetails(Output& where) : output(where) {}

    void add(const std::string& name, std::string_view value) {
        constexpr std::size_t nameWidth = 18;
        output.line(padded(name, nameWidth) + oneLine(value));
    }

    void add(std::string name, const DownloadSelection& selection) {
        if (!selection.hasSelection()) return add(name, translate("nothing"));
        if (selection == DownloadSelection::everything()) return add(name, translate("everything"));
        for (const auto& [path, chosen] : selection.rules) {
            add(std::exchange(name, ""),
                (chosen ? translate("with    ") : translate("without ")) + (path.empty() ? "/" : path));
        }
    }

private:
    Output& output;
};

void printDetails(const SavedState& state, const Profile& profile, Output& output) {
    ProfileDetails details(output);
    details.add(translate("Name"), profile.name);
    details.add(translate("Id"), profile.id.text());
    details.add(translate("Server"), serverName(profile));
    details.add(translate("Transport"), rawValue(profile.transport));
    details.add(translate("Remote folder"), profile.remoteFolder);
    details.add(translate("Local folder"), profile.localFolder);
    details.add(translate("Enabled"), profile.enabled ? translate("yes") : translate("no"));
    details.add(translate("Compares contents"), profile.compareContents ? translate("yes") : translate("no"));
    details.add(translate("Initial download"), profile.needsDownload ? translate("pending") : translate("not needed"));
    if (profile.needsDownload && profile.initialDownloadSelection) {
        details.add(translate("Downloads"), *profile.initialDownloadSelection);
    }
    details.add(translate("Syncs"), profile.effectiveSyncSelection().value_or(DownloadSelection::everything()));
    std::string name = translate("Excludes");
    for (const auto rule : nonEmptyLines(profile.exclusions.text())) details.add(std::exchange(name, ""), rule);
    if (const auto* trusted = profile.keyInForce()) {
        details.add(translate("Trusted key"), trusted->key.grouped());
        details.add("", translate("since %1; the certificate is not verified", {dateAndTime(trusted->since)}));
    }
    const auto baseline = state.baselines.find(profile.id);
    details.add(translate("Synchronised"), filesText(baseline == state.baselines.end() ? 0 : baseline->second.size()));
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
    auto [command, request] = parent.command("show", "Show everything that is saved about a profile", showProfile);
    command.profileArgument(request.name);
}

} // namespace zembrastel::cli
