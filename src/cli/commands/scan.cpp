#include "cli/commands.h"

#include "cli/session/folder_scan.h"
#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/translation.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

struct ScanRequest {
    std::string name;
};

std::uint64_t totalSize(const FileMap& files) {
    std::uint64_t size = 0;
    for (const auto& [path, fingerprint] : files) size += static_cast<std::uint64_t>(fingerprint.size);
    return size;
}

void printScanAsJson(const Profile& profile, const FileMap& files, const LocalDifferences& found, Output& output) {
    auto summary = JsonLine::forProfile("scan", profile);
    summary.text("folder", profile.localFolder);
    summary.number("files", files.size()).number("bytes", totalSize(files));
    summary.number("new", found.added.size()).number("changed", found.changed.size());
    summary.number("deleted", found.deleted.size());
    output.line(summary);
    const auto show = [&output](const std::vector<std::string>& paths, std::string_view kind) {
        for (const auto& path : paths) {
            JsonLine difference("difference");
            output.line(difference.text("path", path).text("kind", kind));
        }
    };
    show(found.added, "new");
    show(found.changed, "changed");
    show(found.deleted, "deleted");
}

void printScan(const Profile& profile, const FileMap& files, const LocalDifferences& found, Output& output) {
    output.line(translate(
        "%1: %2, %3, in %4",
        {oneLine(profile.name), filesText(files.size()), bytesText(totalSize(files)), oneLine(profile.localFolder)}));
    const auto show = [&output](const std::vector<std::string>& paths, std::string_view kind) {
        for (const auto& path : paths) output.line(std::string(kind) + printable(path));
    };
    show(found.added, translate("  new      "));
    show(found.changed, translate("  changed  "));
    show(found.deleted, translate("  deleted  "));
    const auto waiting = found.added.size() + found.changed.size();
    if (profile.hasEmptySyncSelection()) {
        output.line(translate("Nothing is selected to sync."));
    } else if (waiting > 0) {
        output.line(translatePlural("To upload: %n file.", "To upload: %n files.", waiting));
    } else {
        output.line(translate("Nothing to upload."));
    }
    if (!found.deleted.empty()) output.line(translate("What is deleted here stays on the server."));
}

ExitCode scanProfile(const CommandContext& context, const ScanRequest& request) {
    const SavedState state = StateFolder(context.options).load();
    const Profile& profile = chooseProfile(state.profiles, request.name);
    const auto saved = state.baselines.find(profile.id);
    const FileMap files = scanFolder(profile, context).files;
    const auto found = differences(files, saved == state.baselines.end() ? FileMap{} : saved->second);
    const auto show = context.output.json() ? printScanAsJson : printScan;
    show(profile, files, found, context.output);
    return ExitCode::done;
}

} // namespace

void addScan(Syntax& parent) {
    auto [command, request] =
        parent.command("scan", "Show which local files a profile covers and which are not uploaded yet", scanProfile);
    command.profileArgument(request.name);
    command.footer("Only the local folder is read; no server is asked, and no password is needed.");
}

} // namespace zembrastel::cli
