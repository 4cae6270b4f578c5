#include "platform/directory_walk.h"

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/folder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;
constexpr std::size_t maxOpenFolders = 32;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Builds the path only for an error: this runs for every file of every poll.
struct stat attributesOf(
    int folder, const char* name, const std::filesystem::path& root, std::string_view relativePath) {
    struct stat attributes {};
    if (::fstatat(folder, name, &attributes, AT_SYMLINK_NOFOLLOW) != 0) throwFileError("stat", root / relativePath);
    return attributes;
}

EntryKind kindOfMode(mode_t mode) {
    if (S_ISREG(mode)) return EntryKind::file;
    if (S_ISDIR(mode)) return EntryKind::folder;
    return S_ISLNK(mode) ? EntryKind::link : EntryKind::other;
}

class Walk {
public:
    Walk(const Folder& rootFolder, const WalkHooks& walkHooks)
        : top(rootFolder), root(rootFolder.path()), hooks(walkHooks), buffer(std::make_unique<Buffer>()) {}

    void run() {
        levels.push_back({.folder = openTop(), .pathLength = 0, .toEnter = {}});
        readLevel();
        while (!levels.empty()) {
            if (levels.back().toEnter.empty()) {
                levels.pop_back();
                if (!levels.empty()) hooks.leave();
            } else {
                descend();
            }
        }
    }

private:
    struct Buffer {
        alignas(dirent64) std::array<char, bufferSize> bytes;
    };

    // An entered folder whose items were read. Its chosen sub-folders are entered one after another.
    struct Level {
        Descriptor folder; // may be closed while the walk is far below
        std::size_t pathLength;
        std::vector<std::string> toEnter; // in descending order
    };

    void readLevel() {
        Level& level = levels.back();
        path.resize(level.pathLength);
        if (!path.empty()) path += '/';
        const std::size_t prefix = path.size();
        while (true) {
            const ssize_t size = ::getdents64(level.folder.get(), buffer->bytes.data(), bufferSize);
            if (size < 0) throwFileError("read", root / path.substr(0, level.pathLength)); // not the last item's path
            if (size == 0) break;
            for (ssize_t offset = 0; offset < size;) {
                const auto* entry = reinterpret_cast<const dirent64*>(buffer->bytes.data() + offset);
                offset += entry->d_reclen;
                const std::string_view name(entry->d_name);
                if (name == "." || name == "..") continue;
                path.resize(prefix);
                path += name;
                const WalkEntry found(path, name, kindOf(*entry, level.folder.get()), level.folder.get(), root);
                if (hooks.visit(found) && found.kind == EntryKind::folder) level.toEnter.emplace_back(name);
            }
        }
        std::sort(level.toEnter.begin(), level.toEnter.end(), std::greater<>());
    }

    EntryKind kindOf(const dirent64& entry, int folder) const {
        switch (entry.d_type) {
        case DT_REG:
            return EntryKind::file;
        case DT_DIR:
            return EntryKind::folder;
        case DT_LNK:
            return EntryKind::link;
        case DT_UNKNOWN:
            return kindOfMode(attributesOf(folder, entry.d_name, root, path).st_mode);
        default:
            return EntryKind::other;
        }
    }

    void descend() {
        Level& parent = levels.back();
        const std::string name = std::move(parent.toEnter.back());
        parent.toEnter.pop_back();
        path.resize(parent.pathLength);
        if (!parent.folder) parent.folder = reopen(path);
        if (!path.empty()) path += '/';
        path += name;
        Descriptor entered = enter(parent.folder.get(), name, path);
        if (levels.size() >= maxOpenFolders) levels[levels.size() - maxOpenFolders].folder.close();
        levels.push_back({.folder = std::move(entered), .pathLength = path.size(), .toEnter = {}});
        hooks.enter(name);
        readLevel();
    }

    Descriptor enter(int parent, const std::string& name, const std::string& relative) const {
        Descriptor entered(::openat(parent, name.c_str(), folderFlags));
        if (entered) return entered;
        const int errorNumber = errno;
        const bool swapped = (errorNumber == ENOTDIR || errorNumber == ELOOP)
                             && S_ISLNK(attributesOf(parent, name.c_str(), root, relative).st_mode);
        throwFileError("open", root / relative, swapped ? ELOOP : errorNumber);
    }

    // Opened again, since all users of the held descriptor share its read position.
    Descriptor openTop() const {
        Descriptor opened(::openat(top.descriptor(), ".", folderFlags));
        if (!opened) throwFileError("open", root);
        return opened;
    }

    // The folder at a relative path, component by component and through no link.
    Descriptor reopen(const std::string& relative) const {
        Descriptor folder = openTop();
        for (const auto& component : std::filesystem::path(relative)) {
            folder = enter(folder.get(), component.string(), relative);
        }
        return folder;
    }

    const Folder& top;
    const std::filesystem::path& root;
    const WalkHooks& hooks;
    std::unique_ptr<Buffer> buffer;
    std::vector<Level> levels;
    std::string path;
};

} // namespace

struct stat WalkEntry::attributes() const {
    return attributesOf(parent, name.data(), root, path);
}

void walkFolder(const Folder& root, const WalkHooks& hooks) { Walk(root, hooks).run(); }

void visitItems(const Folder& folder, const std::function<void(const WalkEntry&)>& visit) {
    const auto stay = [&visit](const WalkEntry& entry) {
        visit(entry);
        return false;
    };
    walkFolder(folder, {.visit = stay});
}

} // namespace zembrastel
