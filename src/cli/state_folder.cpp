#include "cli/state_folder.h"

#include "cli/presentation.h"
#include "model/error.h"

namespace zembrastel {
namespace {

[[noreturn]] void failLoading(const std::exception& error) { throw CommandError(ExitCode::failed, loadFailure(error)); }

} // namespace

StateStore openState(const GlobalOptions& options) {
    try {
        if (options.stateFolder.empty()) return StateStore();
        return StateStore(std::filesystem::absolute(options.stateFolder));
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

SavedState loadState(const GlobalOptions& options) {
    const StateStore store = openState(options);
    try {
        return store.load();
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

std::vector<Profile> loadProfiles(const GlobalOptions& options) {
    const StateStore store = openState(options);
    try {
        return store.loadProfiles();
    } catch (const std::exception& error) {
        failLoading(error);
    }
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

} // namespace zembrastel
