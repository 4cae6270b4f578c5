#include "cli/commands/ls.h"

#include "cli/session/profile_choice.h"
#include "cli/session/relative_path.h"
#include "cli/session/server_call.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

struct Request {
    std::string name;
    std::string path;
};

void showAsJson(const RemoteEntry& entry, const std::string& folder, Output& output) {
    JsonLine object("entry");
    object.text("path", childPath(folder, entry.name)).text("name", entry.name).flag("directory", entry.directory);
    if (entry.modified) object.text("modified", universalTime(systemTime(sinceUnixEpoch(*entry.modified))));
    output.line(object);
}

void showAsText(const RemoteEntry& entry, Output& output) {
    std::string line = entry.modified ? dateAndTime(systemTime(sinceUnixEpoch(*entry.modified))) : "";
    constexpr std::size_t dateWidth = 21;
    line.resize(dateWidth, ' ');
    output.line(line + printable(entry.name) + (entry.directory ? "/" : ""));
}

ExitCode listFolder(const Surroundings& around, const Request& request) {
    const auto profiles = loadProfiles(around.options);
    const Profile& profile = chooseProfile(profiles, request.name);
    const std::string folder = relativePath(request.path);
    const std::string aim = folder.empty() ? "list the remote folder" : "list the remote folder " + inQuotes(folder);
    std::vector<RemoteEntry> entries;
    callServer(profile, around, aim, [&](const FTPTransport& server) { entries = server.list(folder); });
    std::ranges::stable_sort(entries, [](const auto& a, const auto& b) { return compareNames(a.name, b.name) < 0; });
    for (const auto& entry : entries) {
        if (around.output.json()) {
            showAsJson(entry, folder, around.output);
        } else {
            showAsText(entry, around.output);
        }
    }
    if (entries.empty()) around.output.note("The folder is empty.");
    return ExitCode::done;
}

} // namespace

void addLs(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("ls", "List a folder on a profile's server");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command
        ->add_option("PATH", request->path, "Folder below the profile's remote folder (default: that\nfolder itself)")
        ->type_name("");
    command->footer("Folders end with \"/\". Dates are shown where the server gives them.\n"
                    "Example: zembrastel-cli ls \"My website\" images");
    command->callback([&chosen, request] {
        chosen = [request](const Surroundings& around) { return listFolder(around, *request); };
    });
}

} // namespace zembrastel::cli
