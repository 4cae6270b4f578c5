#include "cli/session/folder_scan.h"

#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/scan.h"
#include "platform/text.h"
#include "transport/transfer_control.h"

#include <algorithm>

namespace zembrastel::cli {

ScannedFolder scanFolder(const Profile& profile, const CommandContext& context) {
    const auto control = std::make_shared<TransferControl>();
    const auto interruptible = context.interrupt.during([control] { control->cancel(); });
    ScannedFolder scanned;
    const auto reportUnusable = [&](std::string_view path, NameFault fault) {
        context.output.warning(translateEngineText(scanned.leftOut.emplace_back(leftOutLine(fault, path))));
    };
    try {
        scanned.files = scan(
            profile, {.checkpoint = [control] { control->check(); },
                      .unusableName = reportUnusable,
                      .privateItems = StateFolder(context.options).privateItems(),
                      .keptPrivate =
                          [&context](std::string_view path, const PrivateItem& item) {
                              context.output.note(translateEngineText(leftOutText(path, item)));
                          }});
        return scanned;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed, translate(
                                  "Cannot scan the local folder %1 of %2: %3",
                                  {profile.localFolder, inQuotes(profile.name), reasonText(error)}));
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

} // namespace zembrastel::cli
