// The saved state of profiles whose files are all published: a baseline and the server's date for each.
#include "measure.h"
#include "model/password_store.h"
#include "model/scan.h"
#include "model/state_store.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>

namespace zembrastel::bench {
namespace {

struct Options {
    std::string folder;
    std::vector<std::string> localFolders;
    std::string host = "127.0.0.1";
    std::int64_t port = 21;
    std::string username = "web";
    bool tls = false;
    std::string remoteFolder = "/";
    bool enabled = false;
    bool nothingPublished = false;
    bool needsDownload = false;
};

Profile profileOf(const Options& options, std::size_t index) {
    const std::string number = std::to_string(index + 1);
    Profile profile;
    profile.name = "Site " + number;
    profile.host = options.host;
    profile.port = options.port;
    profile.transport = options.tls ? TransferProtocol::ftps : TransferProtocol::ftp;
    profile.username = options.username;
    profile.remoteFolder = options.remoteFolder + (options.localFolders.size() > 1 ? "/" + number : "");
    profile.localFolder = options.localFolders[index];
    profile.enabled = options.enabled;
    profile.needsDownload = options.needsDownload;
    if (options.needsDownload) profile.initialDownloadSelection = DownloadSelection::everything();
    return profile;
}

RemoteDate dateOf(const Fingerprint& file) {
    return toRemoteDate(std::chrono::sys_seconds(std::chrono::seconds(std::llround(file.modified))));
}

void makeState(const Options& options) {
    SavedState state;
    state.remoteDates.emplace();
    for (std::size_t index = 0; index < options.localFolders.size(); ++index) {
        const auto& profile = state.profiles.emplace_back(profileOf(options, index));
        if (options.nothingPublished) continue;
        auto& baseline = state.baselines[profile.id] = scan(profile);
        auto& dates = (*state.remoteDates)[profile.id];
        for (const auto& [path, file] : baseline) dates.set(path, dateOf(file));
    }
    StateStore(options.folder).save(state);
}

} // namespace

void addState(CLI::App& parent) {
    auto* const command = parent.add_subcommand("state", "Writes the saved state for some local folders");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder, "The state folder")->required();
    command->add_option("--local", options->localFolders)->required();
    command->add_option("--host", options->host);
    command->add_option("--port", options->port);
    command->add_option("--username", options->username);
    command->add_flag("--tls", options->tls, "Explicit");
    command->add_option("--remote", options->remoteFolder, "Followed by a number where there are several");
    command->add_flag("--enabled", options->enabled);
    command->add_flag("--nothing-published", options->nothingPublished);
    command->add_flag("--needs-download", options->needsDownload);
    command->callback([options] { printTimeOf([&] { makeState(*options); }); });
}

void addPasswords(CLI::App& parent) {
    auto* const command =
        parent.add_subcommand("passwords", "Puts the passwords of a state's profiles into the keyring");
    const auto folder = std::make_shared<std::string>();
    command->add_option("FOLDER", *folder, "The state folder")->required();
    command->callback([folder] {
        for (const auto& profile : StateStore(*folder).load().profiles) PasswordStore::save("s3cret", profile.id);
        Figures().print();
    });
}

} // namespace zembrastel::bench
