#include "cli/commands/why.h"

#include "cli/session/profile_choice.h"
#include "cli/session/profile_path.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/name_fault.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

namespace fs = std::filesystem;

struct Request {
    std::string name;
    std::string path;
};

struct Answer {
    bool synced = false;
    std::string reason{};   // one word for programs
    std::string decider{};  // the rule, or the path that decides; empty for none
    std::string sentence{}; // for a person
};

std::string readable(std::string_view path) { return path.empty() ? "the whole folder" : inQuotes(path); }

Answer excluded(const Exclusions::Cause& cause, const std::string& path) {
    std::string text =
        cause.reserved
            ? "Names that begin with " + inQuotes(cause.rule) + " are always left out, such as " + readable(cause.path)
            : "The exclusion rule " + inQuotes(cause.rule) + " leaves out " + readable(cause.path);
    if (cause.path != path) text += " with all it holds";
    return {.reason = cause.reserved ? "reserved" : "exclusion", .decider = cause.rule, .sentence = text + "."};
}

// What the scan cannot or will not read, on the way to the path.
std::optional<Answer> unreadable(const Profile& profile, const std::string& path) {
    fs::path way = profile.localFolder;
    std::string relative;
    for (const auto component : splitNonEmpty(path, '/')) {
        way /= component;
        relative += (relative.empty() ? "" : "/") + std::string(component);
        std::error_code failed;
        const auto type = fs::symlink_status(way, failed).type();
        auto fault = nameFault(component);
        if (!fault && type == fs::file_type::directory && isTooDeep(relative)) fault = NameFault::tooDeep;
        if (fault) {
            return Answer{.reason = "name", .decider = relative, .sentence = leftOutReason(*fault)};
        }
        if (type == fs::file_type::symlink) {
            return Answer{
                .reason = "link",
                .decider = relative,
                .sentence = readable(relative) + " is a symbolic link, which is never followed."};
        }
        if (fs::exists(fs::file_status(type)) && type != fs::file_type::directory && type != fs::file_type::regular) {
            return Answer{
                .reason = "kind", .decider = relative, .sentence = readable(relative) + " is no regular file."};
        }
    }
    return std::nullopt;
}

Answer selected(const Profile& profile, const std::string& path) {
    const auto& selection = profile.effectiveSyncSelection();
    if (!selection) {
        return {
            .synced = true,
            .reason = "all",
            .sentence = "The profile syncs everything, and no exclusion rule matches."};
    }
    const auto* rule = selection->governingRule(path);
    const std::string decider = rule == nullptr ? "" : rule->first.empty() ? "/" : rule->first;
    const bool synced = rule != nullptr && rule->second;
    std::string text = rule == nullptr ? "Nothing that is selected to sync contains it"
                                       : "In what the profile syncs, " + readable(rule->first) + " is "
                                             + (synced ? "selected" : "left out");
    if (synced) text += ", and no exclusion rule matches";
    if (!synced && selection->shouldVisit(path)) text += "; some of what it holds is selected";
    return {
        .synced = synced,
        .reason = rule == nullptr ? "unselected" : "selection",
        .decider = decider,
        .sentence = text + "."};
}

Answer answerFor(const Profile& profile, const std::string& path) {
    if (const auto cause = profile.exclusions.cause(path)) return excluded(*cause, path);
    if (auto answer = unreadable(profile, path)) return *std::move(answer);
    return selected(profile, path);
}

ExitCode explain(const Surroundings& around, const Request& request) {
    const auto profiles = loadProfiles(around.options);
    const Profile& profile = chooseProfile(profiles, request.name);
    const std::string path = pathInProfile(profile, request.path);
    const Answer answer = answerFor(profile, path);
    if (around.output.json()) {
        JsonLine object("why");
        object.text("profile", profile.name).text("id", profile.id.text()).text("path", path);
        object.flag("synced", answer.synced).text("reason", answer.reason).text("decider", answer.decider);
        around.output.line(object.text("text", answer.sentence));
        return ExitCode::done;
    }
    around.output.line(
        inQuotes(path.empty() ? "/" : path) + (answer.synced ? " is synced. " : " is not synced. ") + answer.sentence);
    std::error_code failed;
    if (!fs::exists(fs::symlink_status(fs::path(profile.localFolder) / path, failed))) {
        around.output.note("There is nothing of that name in the local folder now.");
    }
    return ExitCode::done;
}

} // namespace

void addWhy(CLI::App& parent, Command& chosen) {
    auto* command = parent.add_subcommand("why", "Tell which rule or selection has a path synced or left out");
    const auto request = std::make_shared<Request>();
    command->add_option("NAME", request->name, "Name or id of the profile")->required()->type_name("");
    command
        ->add_option(
            "PATH", request->path, "A path below the profile's folders, or an absolute one in the\nlocal folder")
        ->required()
        ->type_name("");
    command->footer("Nothing needs to be there under that path. No server is asked.\n"
                    "Example: zembrastel-cli why \"My website\" images/logo.psd");
    command->callback(
        [&chosen, request] { chosen = [request](const Surroundings& around) { return explain(around, *request); }; });
}

} // namespace zembrastel::cli
