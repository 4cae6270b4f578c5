#include "cli/session/kept_versions.h"

#include "cli/text/presentation.h"
#include "model/error.h"
#include "platform/text.h"

namespace zembrastel::cli {
namespace {

constexpr std::size_t shortIdLength = 8;

bool isBelow(std::string_view path, std::string_view folder) {
    return folder.empty() || path == folder
           || (path.starts_with(folder) && path.substr(folder.size()).starts_with('/'));
}

} // namespace

std::vector<Backup> keptVersions(const Profile& profile, std::string_view path, const Surroundings& around) {
    TransferControl control;
    const auto interruptible = around.interrupt.during([&control] { control.cancel(); });
    try {
        auto versions = listBackups(profile.localFolder, control);
        std::erase_if(versions, [path](const Backup& each) { return !isBelow(each.path, path); });
        return versions;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError(
            ExitCode::failed,
            "Cannot read the backups of " + inQuotes(profile.name) + ": " + sentence(describe(error)));
    }
}

std::string shortId(const Backup& backup) { return backup.id.substr(0, shortIdLength); }

bool isMeant(const Backup& backup, std::string_view when) {
    return dateAndTime(backup.kept).starts_with(when) || universalTime(backup.kept).starts_with(when)
           || asciiLowercase(backup.id).starts_with(asciiLowercase(when));
}

} // namespace zembrastel::cli
