// Profiles out of the files of other programs, and out of our own export.
//
// Pure but for readProfiles(), which reads one file; any thread. Nothing is saved: the caller shows what was found, has
// the user complete it, and saves profiles and passwords. Whoever wrote the file is not trusted: its size is limited,
// entities are not expanded, and no nesting is too deep. Errors are SyncErrors without a full stop at the end.
#pragma once

#include "model/profile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct ProfileCandidate {
    // Not enabled and not validated. What the source does not have is empty, the local folder above all; the remote
    // folder is then "/". The name is unlike those of the other candidates.
    Profile profile;
    std::optional<std::string> password;
    std::vector<std::string> notes; // sentences: what could not be taken over as it stands
};

// Ends the note about a remote folder that the source does not tell.
inline constexpr std::string_view rootTakenNote = "\"/\" is taken.";

struct SkippedProfile {
    std::string name;
    std::string reason; // a sentence
};

struct ProfilesFound {
    std::vector<ProfileCandidate> candidates; // in the file's order
    std::vector<SkippedProfile> skipped;
};

inline constexpr std::size_t largestImport = std::size_t{4} << 20U; // bytes

// Reads FileZilla's site manager (or what it exports), the sftp.json of a VS Code workspace, or an export of our own,
// told apart by what they hold. `file` is where the bytes are from: a workspace is the folder around its ".vscode".
[[nodiscard]] ProfilesFound findProfiles(std::string_view bytes, const std::filesystem::path& file);

// The same for a regular file. Throws std::filesystem::filesystem_error as well.
[[nodiscard]] ProfilesFound readProfiles(const std::filesystem::path& file);

// `wanted`, or with the lowest number from 2 behind it that makes it unlike all the names that are taken.
[[nodiscard]] std::string unusedName(const std::string& wanted, const std::vector<std::string>& taken);

// The parsers of single forms, for findProfiles() alone. Names may still be equal.
[[nodiscard]] ProfilesFound profilesFromSiteManager(std::string_view xml);
[[nodiscard]] ProfilesFound profilesFromWorkspace(std::string_view json, const std::filesystem::path& file);

} // namespace zembrastel
