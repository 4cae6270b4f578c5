#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"

namespace zembrastel::cli {
namespace {

struct TestRequest {
    std::string name;
};

ExitCode testConnection(const CommandContext& context, const TestRequest& request) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    const Profile& profile = chooseProfile(profiles, request.name);
    std::size_t items = 0;
    callServer(
        profile, context, "read the remote folder", [&items](const FTPTransport& server) { items = server.test(); });
    if (context.output.json()) {
        auto object = JsonLine::forProfile("connected", profile);
        object.number("items", items);
        context.output.line(object);
    } else {
        context.output.line(
            "Connected. The remote folder is readable (" + std::to_string(items)
            + " items). Upload permission is checked when a file uploads.");
    }
    return ExitCode::done;
}

} // namespace

void addTest(Syntax& parent) {
    auto [command, request] =
        parent.command("test", "Connect to a profile's server and read its remote folder", testConnection);
    command.profileArgument(request.name);
}

} // namespace zembrastel::cli
