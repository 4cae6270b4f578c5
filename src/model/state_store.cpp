#include "model/state_store.h"

#include "platform/files.h"
#include "platform/standard_paths.h"

namespace zembrastel {
namespace {

std::filesystem::path stateFile(const std::filesystem::path& folder) { return folder / "profiles.json"; }

} // namespace

StateStore::StateStore(std::optional<std::filesystem::path> folder)
    : stateFolder(folder ? *std::move(folder) : dataFolder() / "Zembrastel") {
    makePrivateFolders(stateFolder);
    removeStaleWrites(stateFile(stateFolder));
}

SavedState StateStore::load() const {
    const auto json = readFile(stateFile(stateFolder));
    return json ? decodeSavedState(*json) : SavedState{};
}

void StateStore::saveEncoded(const std::string& json) const { writeAtomically(stateFile(stateFolder), json); }

} // namespace zembrastel
