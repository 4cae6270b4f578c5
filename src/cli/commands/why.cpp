#include "cli/commands.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/name_fault.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {
namespace {

struct WhyRequest {
    std::string name;
    std::string path;
};

struct SyncAnswer {
    bool synced = false;
    std::string reason{};   // one word, for programs
    std::string decider{};  // the rule or the path that decides; may be empty
    std::string sentence{}; // for the user
};

std::string quotedPath(std::string_view path) { return path.empty() ? translate("the whole folder") : inQuotes(path); }

SyncAnswer exclusionAnswer(const Exclusions::Cause& cause, const std::string& path) {
    const std::initializer_list<std::string> values{inQuotes(cause.rule), quotedPath(cause.path)};
    if (cause.reserved) {
        return {
            .reason = "reserved",
            .decider = cause.rule,
            .sentence =
                cause.path == path
                    ? translate("Names that begin with %1 are always left out, such as %2.", values)
                    : translate("Names that begin with %1 are always left out, such as %2 with all it holds.", values)};
    }
    return {
        .reason = "exclusion",
        .decider = cause.rule,
        .sentence = cause.path == path ? translate("The exclusion rule %1 leaves out %2.", values)
                                       : translate("The exclusion rule %1 leaves out %2 with all it holds.", values)};
}

// The first item on the way to the path that the scan does not read.
std::optional<SyncAnswer> unreadableAnswer(const Profile& profile, const std::string& path) {
    std::filesystem::path way = profile.localFolder;
    std::string relative;
    for (const auto component : splitNonEmpty(path, '/')) {
        way /= component;
        relative += (relative.empty() ? "" : "/") + std::string(component);
        std::error_code failed;
        const auto type = std::filesystem::symlink_status(way, failed).type();
        auto fault = nameFault(component);
        if (!fault && type == std::filesystem::file_type::directory && isTooDeep(relative)) fault = NameFault::tooDeep;
        if (fault) {
            return SyncAnswer{
                .reason = "name", .decider = relative, .sentence = translateEngineText(leftOutReason(*fault))};
        }
        if (type == std::filesystem::file_type::symlink) {
            return SyncAnswer{
                .reason = "link",
                .decider = relative,
                .sentence = translate("%1 is a symbolic link, which is never followed.", {quotedPath(relative)})};
        }
        if (std::filesystem::exists(std::filesystem::file_status(type)) && type != std::filesystem::file_type::directory
            && type != std::filesystem::file_type::regular) {
            return SyncAnswer{
                .reason = "kind",
                .decider = relative,
                .sentence = translate("%1 is no regular file.", {quotedPath(relative)})};
        }
    }
    return std::nullopt;
}

SyncAnswer selectionAnswer(const Profile& profile, const std::string& path) {
    const auto& selection = profile.effectiveSyncSelection();
    if (!selection) {
        return {
            .synced = true,
            .reason = "all",
            .sentence = translate("The profile syncs everything, and no exclusion rule matches.")};
    }
    const auto* rule = selection->governingRule(path);
    const std::string decider = rule == nullptr ? "" : rule->first.empty() ? "/" : rule->first;
    const bool synced = rule != nullptr && rule->second;
    const bool holdsSelected = !synced && selection->shouldVisit(path);
    const char* const text =
        synced            ? translatable("In what the profile syncs, %1 is selected, and no exclusion rule matches.")
        : rule == nullptr ? holdsSelected
                                ? translatable("Nothing that is selected to sync contains it; some of what it holds is "
                                               "selected.")
                                : translatable("Nothing that is selected to sync contains it.")
        : holdsSelected ? translatable("In what the profile syncs, %1 is left out; some of what it holds is selected.")
                        : translatable("In what the profile syncs, %1 is left out.");
    return {
        .synced = synced,
        .reason = rule == nullptr ? "unselected" : "selection",
        .decider = decider,
        .sentence = translate(text, {rule == nullptr ? "" : quotedPath(rule->first)})};
}

SyncAnswer answerFor(const Profile& profile, const std::string& path) {
    if (const auto cause = profile.exclusions.cause(path)) return exclusionAnswer(*cause, path);
    if (auto answer = unreadableAnswer(profile, path)) return *std::move(answer);
    return selectionAnswer(profile, path);
}

ExitCode explainPath(const CommandContext& context, const WhyRequest& request) {
    const auto profiles = StateFolder(context.options).loadProfiles();
    const Profile& profile = chooseProfile(profiles, request.name);
    const std::string path = pathInProfile(profile, request.path);
    const SyncAnswer answer = answerFor(profile, path);
    if (context.output.json()) {
        auto object = JsonLine::forProfile("why", profile);
        object.text("path", path);
        object.flag("synced", answer.synced).text("reason", answer.reason).text("decider", answer.decider);
        context.output.line(object.text("text", answer.sentence));
        return ExitCode::done;
    }
    context.output.line(
        (answer.synced ? translate("%1 is synced.", {inQuotes(path.empty() ? "/" : path)})
                       : translate("%1 is not synced.", {inQuotes(path.empty() ? "/" : path)}))
        + " " + answer.sentence);
    std::error_code failed;
    if (!std::filesystem::exists(
            std::filesystem::symlink_status(std::filesystem::path(profile.localFolder) / path, failed))) {
        context.output.note(translate("There is no such file or folder in the local folder now."));
    }
    return ExitCode::done;
}

} // namespace

void addWhy(Syntax& parent) {
    auto [command, request] =
        parent.command("why", "Explain which rule or selection makes a path synced or not", explainPath);
    command.profileArgument(request.name);
    command.argument(
        "PATH", request.path, "A path below the profile's folders, or an absolute one in the\nlocal folder");
    command.footer("The path need not exist. No server is asked.\n"
                   "Example: zembrastel-cli why \"My website\" images/logo.psd");
}

} // namespace zembrastel::cli
