// The local file or folder of a relative path, opened without following symbolic links.
//
// Holds the item's folder open, so that later steps work on the same folder even if another program renames it or puts
// a link in its place. Any thread.
#pragma once

#include "model/fingerprint.h"
#include "platform/folder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

struct LocalPlace {
    std::filesystem::path url;
    std::string path;             // relative to the local folder
    std::optional<Folder> parent; // nullopt if a folder on the way is missing
    std::string name;             // in the parent

    // Throws SyncError for an unsafe path, and if a symbolic link is on the way or at its end.
    [[nodiscard]] static LocalPlace resolve(const std::string& localFolder, std::string_view path);

    // The same, but makes missing folders on the way, with this mode less the umask.
    [[nodiscard]] static LocalPlace resolveMakingFolders(
        const std::string& localFolder, std::string_view path, mode_t mode = 0777);

    // Of the item itself; nullopt if there is none. A link is an error as in resolve().
    [[nodiscard]] std::optional<struct stat> attributes() const;

    // Throws std::filesystem::filesystem_error if there is no item.
    [[nodiscard]] Fingerprint fingerprint() const;
};

// A temporary file of the first kind holds a copy of content that exists elsewhere, and can be removed when no program
// uses it. One of the second kind may hold the only copy of a local file.
inline constexpr std::string_view copySuffix = ".part";
inline constexpr std::string_view displacedSuffix = ".displaced";

// A unique name for a temporary file, with a leading dot; such files are never synchronised.
[[nodiscard]] std::string temporaryName(std::string_view suffix = copySuffix);

} // namespace zembrastel
