#include "cli/commands/profile_show.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

class Details {
public:
    explicit Details(Output& where) : output(where) {}

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

void showAsText(const SavedState& state, const Profile& profile, Output& output) {
    Details details(output);
    details.add("Name", profile.name);
    details.add("Id", profile.id.text());
    details.add("Server", serverName(profile));
    details.add("Transport", rawValue(profile.transport));
    details.add("Remote folder", profile.remoteFolder);
    details.add("Local folder", profile.localFolder);
    details.add("Enabled", profile.enabled ? "yes" : "no");
    details.add("Initial download", profile.needsDownload ? "still to be done" : "none to be done");
    if (profile.needsDownload && profile.initialDownloadSelection) {
        details.add("Downloads then", *profile.initialDownloadSelection);
    }
    details.add("Syncs", profile.effectiveSyncSelection().value_or(DownloadSelection::everything()));
    std::string name = "Leaves out";
    for (const auto rule : nonEmptyLines(profile.exclusions.text())) details.add(std::exchange(name, ""), rule);
    const auto baseline = state.baselines.find(profile.id);
    details.add("Synchronised", counted(baseline == state.baselines.end() ? 0 : baseline->second.size(), "file"));
}

ExitCode showProfile(const Surroundings& around, const std::string& name) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, name);
    if (around.output.json()) {
        around.output.line(asJsonLine("profile", encode(profile)));
    } else {
        showAsText(state, profile, around.output);
    }
    return ExitCode::done;
}

} // namespace

void addProfileShow(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("show", "Show everything that is saved of a profile");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return showProfile(around, *name); }; });
}

} // namespace zembrastel::cli
