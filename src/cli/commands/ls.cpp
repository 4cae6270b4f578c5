#include "cli/commands.h"
#include "language/translation.h"
#include "platform/name_order.h"

#include "cli/session/profile_choice.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"

#include <algorithm>

namespace zembrastel::cli {
namespace {

struct LsRequest {
    std::string name;
    std::string path;
};

void printEntryAsJson(const RemoteEntry& entry, const std::string& folder, Output& output) {
    JsonLine object("entry");
    object.text("path", childPath(folder, entry.name)).text("name", entry.name).flag("directory", entry.directory);
    if (entry.modified) object.text("modified", universalTime(systemTime(sinceUnixEpoch(*entry.modified))));
    output.line(object);
}

void printEntry(const RemoteEntry& entry, Output& output) {
    std::string line = entry.modified ? dateAndTime(systemTime(sinceUnixEpoch(*entry.modified))) : "";
    constexpr std::size_t dateWidth = 21;
    line.resize(dateWidth, ' ');
    output.line(line + printable(entry.name) + (entry.directory ? "/" : ""));
}

ExitCode listFolder(const CommandContext& context, const LsRequest& request) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    const Profile& profile = chooseProfile(profiles, request.name);
    const std::string folder = relativePath(request.path);
    const ServerAim aim{
        folder.empty() ? translatable("Cannot list the remote folder of %1 (%2): %3")
                       : translatable("Cannot list the remote folder %4 of %1 (%2): %3"),
        inQuotes(folder)};
    std::vector<RemoteEntry> entries;
    callServer(profile, context, aim, [&](const FTPTransport& server) { entries = server.list(folder); });
    std::ranges::stable_sort(entries, [](const auto& a, const auto& b) { return compareNames(a.name, b.name) < 0; });
    for (const auto& entry : entries) {
        if (context.output.json()) {
            printEntryAsJson(entry, folder, context.output);
        } else {
            printEntry(entry, context.output);
        }
    }
    if (entries.empty()) context.output.note(translate("The folder is empty."));
    return ExitCode::done;
}

} // namespace

void addLs(Syntax& parent) {
    auto [command, request] = parent.command("ls", "List a folder on a profile's server", listFolder);
    command.profileArgument(request.name);
    command.argument("PATH", request.path, "Folder below the profile's remote folder (default: that\nfolder itself)")
        .optional();
    command.footer("Folders end with \"/\". The server's dates are shown if it reports them.\n"
                   "Example: zembrastel-cli ls \"My website\" images");
}

} // namespace zembrastel::cli
