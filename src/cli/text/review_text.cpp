#include "cli/text/review_text.h"

#include "cli/text/presentation.h"
#include "cli/text/shell_words.h"
#include "language/translation.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

SystemTime remoteTimeOf(const RemoteChange& change) { return systemTime(sinceUnixEpoch(change.remoteDate)); }

SystemTime localTimeOf(const RemoteChange& change) {
    return systemTime(std::chrono::duration<double>(change.local.modified));
}

} // namespace

std::string describeChange(const RemoteChange& change) {
    const std::initializer_list<std::string> values{
        printable(change.path), dateAndTime(remoteTimeOf(change)), dateAndTime(localTimeOf(change))};
    return change.bothChanged ? translate("%1  server %2, here %3, changed on both sides", values)
                              : translate("%1  server %2, here %3", values);
}

std::string missingText(std::size_t files) {
    return translatePlural("%n file is missing on the server", "%n files are missing on the server", files);
}

std::string sendMissingHint(const GlobalOptions& options, std::size_t files, const std::string& profileName) {
    return translatePlural("To send it again:", "To send them again:", files) + " "
           + commandLine(options, "push --missing", profileName);
}

void printMissing(const Profile& profile, const PathSet& missing, Output& output) {
    if (missing.empty()) return;
    if (!output.json()) output.line(missingText(missing.size()) + ":");
    for (const auto& path : missing) {
        if (output.json()) {
            auto object = JsonLine::forProfile("missing", profile);
            output.line(object.text("path", path));
        } else {
            output.line("  " + printable(path));
        }
    }
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

std::string describeSizes(const RemoteChange& change, const ServerVersions& seen) {
    const auto* version = seen.find(change.path);
    const auto here = static_cast<std::uint64_t>(change.local.size);
    if (version == nullptr || !version->size || *version->size == here) return "";
    return translate(", %1 there and %2 here", {bytesText(*version->size), std::to_string(here)});
}

std::string listId(const std::vector<RemoteChange>& changes) {
    constexpr std::size_t digits = 8;
    std::string versions;
    for (const auto& change : changes) {
        const auto date = universalTime(remoteTimeOf(change));
        versions.append(change.path).append(1, '\0').append(date).append(1, '\0');
    }
    return sha256(versions).substr(0, digits);
}

void addReviewFields(
    JsonLine& object, const Profile& profile, const std::vector<RemoteChange>& changes, Clock& clock,
    const ServerVersions& seen) {
    object.text("time", universalTime(clock.now())).text("profile", profile.name).text("id", profile.id.text());
    object.text("list", listId(changes));
    object.list("files", changes, [&seen](JsonLine& file, const RemoteChange& change) {
        file.text("path", change.path);
        file.text("remoteDate", universalTime(remoteTimeOf(change)));
        file.text("localDate", universalTime(localTimeOf(change)));
        file.flag("bothChanged", change.bothChanged);
        const auto* version = seen.find(change.path);
        if (version == nullptr || !version->size) return;
        file.number("remoteSize", *version->size);
        file.number("localSize", static_cast<std::uint64_t>(change.local.size));
    });
}

} // namespace zembrastel::cli
