#include "cli/session/session.h"

#include "app/record_of.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/publish_journal.h"

namespace zembrastel::cli {
namespace {

[[noreturn]] void failLoading(const std::exception& error) { throw CommandError(ExitCode::failed, loadFailure(error)); }

std::optional<std::filesystem::path> namedFolder(const GlobalOptions& options) {
    if (options.stateFolder.empty()) return std::nullopt;
    return std::filesystem::absolute(options.stateFolder);
}

void requireNamedFolder(const GlobalOptions& options) {
    const auto named = namedFolder(options);
    std::error_code failed;
    if (!named || std::filesystem::exists(*named, failed) || failed)
        return; // another failure is told when it is opened
    throw CommandError(
        ExitCode::failed, "There is no such state folder: " + named->string() + ". Check what --state names.");
}

template <class Loaded>
Loaded loadBy(Loaded (StateStore::*load)() const, const GlobalOptions& options) {
    requireNamedFolder(options);
    try {
        const auto store = StateStore::find(namedFolder(options));
        return store ? ((*store).*load)() : Loaded{};
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

} // namespace

StateStore openState(const GlobalOptions& options) {
    requireNamedFolder(options);
    return openOrMakeState(options);
}

StateStore openOrMakeState(const GlobalOptions& options) {
    try {
        return StateStore(namedFolder(options));
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

SavedState loadState(const GlobalOptions& options) { return loadBy(&StateStore::load, options); }

std::vector<Profile> loadProfiles(const GlobalOptions& options) { return loadBy(&StateStore::loadProfiles, options); }

ServerRecord recordOf(const SavedState& state, const Uuid& profile, const GlobalOptions& options) {
    ServerRecord record = recordOf(state, profile);
    if (const auto store = StateStore::find(namedFolder(options))) {
        record.announced = PublishJournal(store->folder(), profile).read();
    }
    return record;
}

std::vector<PrivateItem> privateItems(const GlobalOptions& options) {
    std::vector<PrivateItem> items;
    try {
        if (const auto store = StateStore::find(namedFolder(options))) items = store->privateItems();
    } catch (const std::filesystem::filesystem_error&) {
        // Gone meanwhile.
    }
    if (!options.passwordFile.empty()) {
        items.push_back({.path = std::filesystem::absolute(options.passwordFile), .reason = "it holds the password"});
    }
    return items;
}

InstanceLock holdState(const StateStore& store) {
    std::optional<InstanceLock> lock;
    try {
        lock = InstanceLock::acquire(store.folder());
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, "Cannot lock the state folder: " + describe(error) + ".");
    }
    if (!lock) {
        throw CommandError(
            ExitCode::stateInUse, "The state folder " + store.folder().string()
                                      + " is in use by another running program. Nothing was changed; stop that program "
                                        "first, or name another folder with --state.");
    }
    return *std::move(lock);
}

void requireLoaded(const AppModel& model) {
    if (model.alert()) throw CommandError(ExitCode::failed, *model.alert());
}

} // namespace zembrastel::cli
