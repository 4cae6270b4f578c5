#include "model/state_store.h"

#include "model/error.h"
#include "platform/files.h"
#include "platform/folder.h"
#include "platform/standard_paths.h"

namespace zembrastel {
namespace {

constexpr const char* fileName = "profiles.json";

// What `decode` makes of the file's contents; nothing by default. What is wrong with them names the file.
template <class Decoded>
Decoded read(const std::filesystem::path& file, Decoded (*decode)(std::string json)) {
    auto json = readFile(file);
    try {
        return json ? decode(*std::move(json)) : Decoded();
    } catch (const SyncError& error) {
        throw SyncError(file.string() + ": " + error.what());
    }
}

} // namespace

StateStore::StateStore(std::optional<std::filesystem::path> folder)
    : stateFolder(folder ? *std::move(folder) : dataFolder() / "Zembrastel") {
    makePrivateFolders(stateFolder);
    realFolder = std::filesystem::canonical(stateFolder);
    removeStaleWrites(realFolder / fileName);
}

SavedState StateStore::load() const { return read(realFolder / fileName, decodeSavedState); }

std::vector<Profile> StateStore::loadProfiles() const { return read(realFolder / fileName, decodeProfiles); }

void StateStore::save(const SavedState& state) const {
    writeAtomically(Folder::open(realFolder), fileName, encode(state));
}

} // namespace zembrastel
