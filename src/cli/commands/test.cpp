#include "cli/commands/test.h"

#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"

#include <CLI/CLI.hpp>

namespace zembrastel::cli {
namespace {

ExitCode testConnection(const Surroundings& around, const std::string& name) {
    const auto profiles = loadProfiles(around.options);
    const Profile& profile = chooseProfile(profiles, name);
    std::size_t items = 0;
    callServer(
        profile, around, "read the remote folder", [&items](const FTPTransport& server) { items = server.test(); });
    if (around.output.json()) {
        JsonLine object("connected");
        object.text("profile", profile.name).text("id", profile.id.text()).number("items", items);
        around.output.line(object);
    } else {
        around.output.line(
            "Connected. The remote folder is readable (" + std::to_string(items)
            + " items). Upload permission is checked when a file uploads.");
    }
    return ExitCode::done;
}

} // namespace

void addTest(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("test", "Try to reach a profile's server and read its remote folder");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return testConnection(around, *name); }; });
}

} // namespace zembrastel::cli
