#include "cli/commands/profile_list.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

std::string condition(const Profile& profile) {
    std::string text = profile.enabled ? "enabled" : "not enabled";
    if (profile.needsDownload) text += ", initial download still to be done";
    if (profile.hasEmptySyncSelection()) text += ", nothing selected to sync";
    return text;
}

void show(const Profile& profile, Output& output) {
    const auto detail = [&output](std::string_view name, std::string_view value) {
        constexpr std::size_t nameWidth = 8;
        std::string padded(name);
        padded.resize(nameWidth, ' ');
        output.line("    " + padded + oneLine(value));
    };
    output.line(oneLine(profile.name) + "  (" + condition(profile) + ")");
    detail("id", profile.id.text());
    detail("server", serverName(profile) + ", " + std::string(rawValue(profile.transport)));
    detail("remote", profile.remoteFolder);
    detail("local", profile.localFolder);
}

ExitCode listProfiles(const Surroundings& around) {
    const auto profiles = loadProfiles(around.options);
    for (const auto& profile : profiles) {
        if (around.output.json()) {
            around.output.line(asJsonLine("profile", encode(profile)));
        } else {
            show(profile, around.output);
        }
    }
    if (profiles.empty()) around.output.note("There are no profiles yet; profile add makes one.");
    return ExitCode::done;
}

} // namespace

void addProfileList(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("list", "Show the saved profiles");
    command->callback([&chosen] { chosen = listProfiles; });
}

} // namespace zembrastel::cli
