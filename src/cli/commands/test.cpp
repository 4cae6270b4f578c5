#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "language/translation.h"

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
        profile, context, {translatable("Cannot read the remote folder of %1 (%2): %3")},
        [&items](const FTPTransport& server) { items = server.test(); });
    if (context.output.json()) {
        auto object = JsonLine::forProfile("connected", profile);
        object.number("items", items);
        context.output.line(object);
    } else {
        context.output.line(translate(
            "Connected. The remote folder is readable (%1 items). Upload permission is checked when a file uploads.",
            {std::to_string(items)}));
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
