#include "cli/session/folder_scan.h"

#include "cli/session/profile_choice.h"
#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/text.h"
#include "transport/transfer_control.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

std::uint64_t totalSize(const FileMap& files) {
    std::uint64_t size = 0;
    for (const auto& [path, fingerprint] : files) size += static_cast<std::uint64_t>(fingerprint.size);
    return size;
}

void showAsJson(const Profile& profile, const FileMap& files, const LocalDifferences& found, Output& output) {
    JsonLine summary("scan");
    summary.text("profile", profile.name).text("id", profile.id.text()).text("folder", profile.localFolder);
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

void showAsText(const Profile& profile, const FileMap& files, const LocalDifferences& found, Output& output) {
    output.line(
        oneLine(profile.name) + ": " + counted(files.size(), "file") + ", " + counted(totalSize(files), "byte")
        + ", in " + oneLine(profile.localFolder));
    const auto show = [&output](const std::vector<std::string>& paths, std::string_view kind) {
        for (const auto& path : paths) output.line(std::string(kind) + printable(path));
    };
    show(found.added, "  new      ");
    show(found.changed, "  changed  ");
    show(found.deleted, "  deleted  ");
    const auto waiting = found.added.size() + found.changed.size();
    if (profile.hasEmptySyncSelection()) {
        output.line("Nothing is selected to sync.");
    } else if (waiting > 0) {
        output.line("To upload: " + counted(waiting, "file") + ".");
    } else {
        output.line("Nothing to upload.");
    }
    if (!found.deleted.empty()) output.line("What is deleted here stays on the server.");
}

ExitCode scanProfile(const Surroundings& around, const std::string& name) {
    const SavedState state = loadState(around.options);
    const Profile& profile = chooseProfile(state.profiles, name);
    const auto saved = state.baselines.find(profile.id);
    const FileMap files = scanFolder(profile, around).files;
    const auto found = differences(files, saved == state.baselines.end() ? FileMap{} : saved->second);
    const auto show = around.output.json() ? showAsJson : showAsText;
    show(profile, files, found, around.output);
    return ExitCode::done;
}

} // namespace

ScannedFolder scanFolder(const Profile& profile, const Surroundings& around) {
    const auto control = std::make_shared<TransferControl>();
    const auto interruptible = around.interrupt.during([control] { control->cancel(); });
    ScannedFolder scanned;
    const auto reportUnusable = [&](std::string_view path, NameFault fault) {
        around.output.warning(scanned.leftOut.emplace_back(leftOutLine(fault, path)));
    };
    try {
        scanned.files = scan(
            profile, {.checkpoint = [control] { control->check(); },
                      .unusableName = reportUnusable,
                      .privateItems = privateItems(around.options),
                      .keptPrivate =
                          [&around](std::string_view path, const PrivateItem& item) {
                              around.output.note(leftOutText(path, item));
                          }});
        return scanned;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, "Cannot scan the local folder " + profile.localFolder + " of " + inQuotes(profile.name)
                                  + ": " + sentence(describe(error)));
    }
}

LocalDifferences differences(const FileMap& current, const FileMap& baseline) {
    LocalDifferences found;
    current.forEachDifference(baseline, [&](std::string_view path, const Fingerprint* now, const Fingerprint* before) {
        if (now != nullptr && before != nullptr && !isOtherVersion(*now, *before)) return;
        auto& kind = now == nullptr ? found.deleted : before == nullptr ? found.added : found.changed;
        kind.emplace_back(path);
    });
    for (auto* paths : {&found.added, &found.changed, &found.deleted}) std::sort(paths->begin(), paths->end());
    return found;
}

void addScan(CLI::App& parent, Command& chosen) {
    auto* command =
        parent.add_subcommand("scan", "Show which local files a profile covers and which are not uploaded yet");
    const auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "Name or id of the profile")->required()->type_name("");
    command->footer("Only the local folder is read; no server is asked, and no password is needed.");
    command->callback(
        [&chosen, name] { chosen = [name](const Surroundings& around) { return scanProfile(around, *name); }; });
}

} // namespace zembrastel::cli
