#include "transport/leftovers.h"

#include "model/error.h"
#include "platform/uuid.h"
#include "transport/local_place.h"

#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

constexpr std::string_view prefix = ".zembrastel-";
constexpr std::string_view suffix = ".part";

void clear(const Profile& profile, std::string_view path) {
    const auto leftover = LocalPlace::resolve(profile.localFolder, path);
    const auto item = leftover.attributes();
    if (!item || !S_ISREG(item->st_mode)) return;
    const Descriptor file = leftover.parent->openForReading(leftover.name);
    // A download holds the lock on its file for as long as it is at it.
    struct stat attributes {};
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0 || ::fstat(file.get(), &attributes) != 0) return;
    if (attributes.st_size == 0 || attributes.st_nlink > 1) {
        leftover.parent->remove(leftover.name);
        return;
    }
    const auto backup = LocalPlace::resolveMakingFolders(
        profile.localFolder, ".zembrastel-backups/" + Uuid::random().text() + "/" + std::string(path));
    leftover.parent->replace(leftover.name, *backup.parent, backup.name);
}

} // namespace

bool isTemporaryPath(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1); // of a path without "/" the whole
    return name.size() > prefix.size() + suffix.size() && name.starts_with(prefix) && name.ends_with(suffix)
           && Uuid::parse(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()));
}

void clearLeftover(const Profile& profile, std::string_view path) {
    try {
        clear(profile, path);
    } catch (const SyncError&) {
        // A link stands on the way now.
    } catch (const std::filesystem::filesystem_error&) {
        // Not ours to move, or gone.
    }
}

} // namespace zembrastel
