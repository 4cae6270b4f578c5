#include "transport/download/backups.h"

#include "model/error.h"
#include "platform/directory_walk.h"
#include "platform/files.h"
#include "platform/name_order.h"
#include "platform/text.h"
#include "platform/uuid.h"
#include "transport/download/local_replacement.h"
#include "transport/publish/leftovers.h"

#include <algorithm>
#include <map>
#include <sys/stat.h>
#include <tuple>
#include <utility>

namespace zembrastel {
namespace {

using Time = std::chrono::system_clock::time_point;

Time timeOf(const timespec& time) {
    return Time(std::chrono::duration_cast<Time::duration>(
        std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec)));
}

std::string pathOf(const Backup& backup) { return std::string(backupFolder) + "/" + backup.id + "/" + backup.path; }

// Attributes of an item that was just listed; nullopt if it is gone.
std::optional<struct stat> attributesOf(const WalkEntry& entry) {
    try {
        return entry.attributes();
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
        throw;
    }
}

class Listing {
public:
    explicit Listing(const TransferControl& transferControl) : control(transferControl) {}

    // True if a folder is to be entered.
    bool visit(const WalkEntry& entry) {
        control.check();
        const auto slash = entry.path.find('/');
        const auto item =
            entry.kind == EntryKind::folder || entry.kind == EntryKind::file ? attributesOf(entry) : std::nullopt;
        if (!item || !isValidUtf8(entry.name)) return false;
        if (slash == std::string_view::npos) return beginBackup(entry, *item);
        if (entry.kind == EntryKind::file) {
            found.push_back(
                {.path = std::string(entry.path.substr(slash + 1)),
                 .id = std::string(entry.path.substr(0, slash)),
                 .kept = {},
                 .modified = timeOf(item->st_mtim),
                 .size = static_cast<std::uint64_t>(item->st_size)});
        }
        return entry.kind == EntryKind::folder;
    }

    [[nodiscard]] std::vector<Backup> sorted() && {
        std::vector<std::pair<std::string, Backup>> keyed;
        keyed.reserve(found.size());
        for (auto& backup : found) {
            backup.kept = kept.at(backup.id);
            keyed.emplace_back(nameSortKey(backup.path), std::move(backup));
        }
        std::ranges::sort(keyed, [](const auto& a, const auto& b) {
            return std::tie(a.first, a.second.path, b.second.kept, a.second.id)
                   < std::tie(b.first, b.second.path, a.second.kept, b.second.id);
        });
        std::vector<Backup> result;
        result.reserve(keyed.size());
        for (auto& [key, backup] : keyed) result.push_back(std::move(backup));
        return result;
    }

private:
    // The folder of a backup is changed once, when the backup is made. The file itself keeps its dates.
    bool beginBackup(const WalkEntry& entry, const struct stat& item) {
        if (entry.kind != EntryKind::folder || !Uuid::parse(entry.name)) return false;
        kept.insert_or_assign(std::string(entry.name), timeOf(item.st_mtim));
        return true;
    }

    const TransferControl& control;
    std::map<std::string, Time, std::less<>> kept; // by the id of the backup
    std::vector<Backup> found;
};

LocalPlace existing(const std::string& localFolder, const Backup& backup) {
    auto place = LocalPlace::resolve(localFolder, pathOf(backup));
    const auto item = place.attributes();
    if (!item || !S_ISREG(item->st_mode)) {
        throw SyncError("This version of " + backup.path + " is no longer in " + std::string(backupFolder) + ".");
    }
    return place;
}

[[noreturn]] void refuseChanged(const std::string& path) {
    throw SyncError(path + " changed while it was being restored. The local file was kept; restore it again.");
}

} // namespace

std::vector<Backup> listBackups(const std::string& localFolder, const TransferControl& control) {
    const auto place = LocalPlace::resolve(localFolder, backupFolder);
    if (!place.parent) throwFileError("open", localFolder, ENOENT);
    const auto folder = place.parent->enter(place.name);
    if (!folder) return {};
    Listing listing(control);
    walkFolder(*folder, {.visit = [&listing](const WalkEntry& entry) { return listing.visit(entry); }});
    return std::move(listing).sorted();
}

BackupTotals totalsOf(const std::vector<Backup>& backups) {
    BackupTotals totals{.versions = backups.size()};
    const std::string* last = nullptr;
    for (const auto& backup : backups) {
        if (last == nullptr || *last != backup.path) ++totals.files;
        last = &backup.path;
        totals.bytes += backup.size;
    }
    return totals;
}

std::filesystem::path placeOf(const std::string& localFolder, const Backup& backup) {
    return existing(localFolder, backup).url;
}

Restored restoreBackup(const std::string& localFolder, const Backup& backup, const TransferControl& control) {
    control.check();
    if (isTemporaryPath(backup.path)) {
        throw SyncError(
            "This is what an interrupted download left, under a temporary name. Open it, and save it under the name it "
            "should have: "
            + placeOf(localFolder, backup).string());
    }
    const LocalPlace version = existing(localFolder, backup);
    const auto local = LocalPlace::resolveMakingFolders(localFolder, backup.path);
    const auto current = local.attributes();
    if (current && !S_ISREG(current->st_mode)) {
        throw SyncError(backup.path + " is no file in the local folder now. It was left as it is.");
    }
    StagedFile staged(*local.parent);
    const Descriptor from = version.parent->openForReading(version.name);
    copyContents(from.get(), staged.descriptor(), version.url, [&control] { control.check(); });
    if (!current) {
        staged.settleLike(from.get());
        const auto now = staged.fingerprint();
        if (!local.parent->install(staged.name(), local.name)) refuseChanged(backup.path);
        return {.now = now};
    }
    const auto replaced = Fingerprint::of(*local.parent, *current);
    const auto kept = makeBackup(localFolder, local, control);
    control.check();
    const auto now = staged.fingerprint();
    if (!replaceKeeping(staged, local, replaced, kept, localFolder)) refuseChanged(backup.path);
    return {.now = now, .replaced = true};
}

} // namespace zembrastel
