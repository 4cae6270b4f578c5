// The local file or folder of a relative path, reached without following a symbolic link.
//
// Holds the folder that the item is in, so that later steps work on the same folder even when somebody renames it or
// puts a link in its place meanwhile. Any thread.
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
    std::optional<Folder> parent; // nothing while a folder on the way is missing
    std::string name;             // in the parent

    // Throws SyncError for an unsafe path, and for a symbolic link anywhere on the way or at its end.
    [[nodiscard]] static LocalPlace resolve(const std::string& localFolder, std::string_view path);

    // The same, with the folders on the way made where they are missing, with this mode less the umask.
    [[nodiscard]] static LocalPlace resolveMakingFolders(
        const std::string& localFolder, std::string_view path, mode_t mode = 0777);

    // Of the item itself; nothing when there is none. A link is an error as in resolve().
    [[nodiscard]] std::optional<struct stat> attributes() const;

    // Throws std::filesystem::filesystem_error when there is no item.
    [[nodiscard]] Fingerprint fingerprint() const;
};

// A temporary file of the first kind holds a copy of what is elsewhere as well, and may be removed when nobody works
// with it any more; one of the second kind may hold the only copy of a local file's content.
inline constexpr std::string_view copySuffix = ".part";
inline constexpr std::string_view displacedSuffix = ".displaced";

// "." and the name of a temporary file, unique, of the kind that is never synchronised.
[[nodiscard]] std::string temporaryName(std::string_view suffix = copySuffix);

} // namespace zembrastel
