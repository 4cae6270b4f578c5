#include "model/state_store.h"

#include "model/error.h"
#include "platform/directory_walk.h"
#include "platform/files.h"
#include "platform/standard_paths.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr const char* fileName = "profiles.json";
constexpr const char* lockName = "lock"; // see instance_lock.h

std::filesystem::path namedOrOwn(std::optional<std::filesystem::path> folder) {
    return folder ? *std::move(folder) : dataFolder() / "Zembrastel";
}

// The file, leftovers of its writes, the lock, the socket, journals, requests and hashes (publish_journal.h,
// temporary_journal.h, resend_request.h, published_contents.h).
bool isOwnName(std::string_view name) {
    return name.starts_with(fileName) || name == lockName || name == "socket" || name.starts_with("publishing-")
           || name.starts_with("sending-") || name.starts_with("resend-") || name.starts_with("contents-");
}

} // namespace

StateStore::StateStore(std::filesystem::path named, Folder opened)
    : stateFolder(std::move(named)), held(std::make_shared<const Folder>(std::move(opened))) {}

StateStore::StateStore(std::optional<std::filesystem::path> folder) : stateFolder(namedOrOwn(std::move(folder))) {
    makePrivateFolders(stateFolder);
    held = std::make_shared<const Folder>(Folder::open(std::filesystem::canonical(stateFolder)));
    keepToOwner();
    removeStaleWrites(held->path() / fileName);
}

std::optional<StateStore> StateStore::find(std::optional<std::filesystem::path> folder) {
    auto named = namedOrOwn(std::move(folder));
    if (!std::filesystem::exists(named)) return std::nullopt;
    auto real = std::filesystem::canonical(named);
    return StateStore(std::move(named), Folder::open(real));
}

void StateStore::keepToOwner() const {
    const auto attributes = held->attributes(".");
    if (!attributes || attributes->st_uid != ::geteuid() || (attributes->st_mode & ACCESSPERMS) == S_IRWXU) return;
    bool sharedWithOthers = false;
    visitItems(*held, [&](const WalkEntry& entry) { sharedWithOthers = sharedWithOthers || !isOwnName(entry.name); });
    // File systems without modes need no change.
    if (!sharedWithOthers) (void)::fchmod(held->descriptor(), S_IRWXU);
}

std::optional<std::string> StateStore::contents() const {
    const auto path = held->path() / fileName;
    // Not blocking: it may be a FIFO without a writer.
    const Descriptor file(::openat(held->descriptor(), fileName, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file && errno == ENOENT) return std::nullopt;
    struct stat attributes {};
    if (!file || ::fstat(file.get(), &attributes) != 0) throwFileError("open", path);
    if (!S_ISREG(attributes.st_mode)) throw SyncError(path.string() + ": It is not a file");
    return readContents(file.get(), path);
}

template <class Decoded>
Decoded StateStore::read(Decoded (*decode)(std::string json)) const {
    auto json = contents();
    try {
        return json ? decode(*std::move(json)) : Decoded{};
    } catch (const SyncError& error) {
        throw SyncError((held->path() / fileName).string() + ": " + error.what());
    }
}

SavedState StateStore::load() const { return read(decodeSavedState); }

std::vector<Profile> StateStore::loadProfiles() const { return read(decodeProfiles); }

void StateStore::save(const SavedState& state) const {
    struct stat now {};
    const auto locked = held->attributes(".");
    if (::lstat(held->path().c_str(), &now) != 0 || !locked || now.st_dev != locked->st_dev
        || now.st_ino != locked->st_ino) {
        throw SyncError(
            "The state folder " + stateFolder.string()
            + " was moved away or replaced while the program ran. Nothing is saved until it is back, or the program is "
              "started again");
    }
    writeAtomically(*held, fileName, encode(state));
}

std::vector<PrivateItem> StateStore::privateItems() const {
    constexpr const char* reason = "it is the state folder of this program";
    std::vector<PrivateItem> items{{.path = held->path(), .reason = reason}};
    // The folder may be the local folder itself.
    for (const auto* name : {fileName, lockName}) items.push_back({.path = held->path() / name, .reason = reason});
    return items;
}

} // namespace zembrastel
