#include "cli/review_text.h"

#include "cli/presentation.h"
#include "cli/shell_words.h"
#include "platform/text.h"

namespace zembrastel {
namespace {

SystemTime remoteTime(const RemoteChange& change) { return systemTime(sinceUnixEpoch(change.remoteDate)); }

SystemTime localTime(const RemoteChange& change) {
    return systemTime(std::chrono::duration<double>(change.local.modified));
}

} // namespace

std::string describeChange(const RemoteChange& change) {
    return printable(change.path) + "  server " + dateAndTime(remoteTime(change)) + ", here "
           + dateAndTime(localTime(change)) + (change.bothChanged ? ", changed on both sides" : "");
}

std::string commandLine(const GlobalOptions& options, const char* name, const std::string& profileName) {
    std::string command = shellQuoted(options.program);
    const auto add = [&command](const char* option, const std::string& value) {
        if (!value.empty()) command += std::string(" ") + option + " " + shellQuoted(value);
    };
    add("--state", options.stateFolder);
    add("--password-file", options.passwordFile);
    add("--password-command", options.passwordCommand);
    return command + " " + name + " " + shellQuoted(profileName);
}

std::string reviewCommand(const GlobalOptions& options, const std::string& profileName) {
    return commandLine(options, "review", profileName);
}

void addReview(JsonLine& object, const Profile& profile, const std::vector<RemoteChange>& changes, Clock& clock) {
    object.text("time", universalTime(clock.now())).text("profile", profile.name).text("id", profile.id.text());
    object.list("files", changes, [](JsonLine& file, const RemoteChange& change) {
        file.text("path", change.path);
        file.text("remoteDate", universalTime(remoteTime(change)));
        file.text("localDate", universalTime(localTime(change)));
        file.flag("bothChanged", change.bothChanged);
    });
}

} // namespace zembrastel
