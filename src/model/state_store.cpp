#include "model/state_store.h"

#include "platform/files.h"
#include "platform/folder.h"
#include "platform/standard_paths.h"

namespace zembrastel {
namespace {

constexpr const char* fileName = "profiles.json";

} // namespace

StateStore::StateStore(std::optional<std::filesystem::path> folder)
    : stateFolder(folder ? *std::move(folder) : dataFolder() / "Zembrastel") {
    makePrivateFolders(stateFolder);
    realFolder = std::filesystem::canonical(stateFolder);
    removeStaleWrites(realFolder / fileName);
}

SavedState StateStore::load() const {
    auto json = readFile(realFolder / fileName);
    return json ? decodeSavedState(*std::move(json)) : SavedState{};
}

std::vector<Profile> StateStore::loadProfiles() const {
    auto json = readFile(realFolder / fileName);
    return json ? decodeProfiles(*std::move(json)) : std::vector<Profile>();
}

void StateStore::save(const SavedState& state) const {
    writeAtomically(Folder::open(realFolder), fileName, encode(state));
}

} // namespace zembrastel
