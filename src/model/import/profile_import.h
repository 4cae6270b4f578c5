// Profiles from files of other programs, and from this program's export.
//
// Pure functions, except readProfiles() and importable(), which read a file and a folder; any thread. Nothing is saved:
// the caller shows the result, lets the user complete it, and saves profiles and passwords. The file is not trusted:
// its size is limited, entities are not expanded, and deep nesting does no harm. Errors are SyncErrors without a full
// stop at the end.
#pragma once

#include "model/error.h"
#include "model/profile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct ProfileCandidate {
    // Not enabled and not validated. Fields that the source lacks are empty, often the local folder; a missing remote
    // folder is "/". The name differs from those of the other candidates.
    Profile profile;
    std::optional<std::string> password;
    std::vector<std::string> notes; // sentences about settings that could not be imported unchanged
};

// Ends the note about a missing remote folder.
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

// Reads FileZilla's site manager or its exports, the sftp.json of a VS Code workspace, or an export of this program.
// The contents decide which. `file` is the source of the bytes: a workspace is the folder above its ".vscode".
[[nodiscard]] ProfilesFound findProfiles(std::string_view bytes, const std::filesystem::path& file);

// The same for a regular file. Throws std::filesystem::filesystem_error as well.
[[nodiscard]] ProfilesFound readProfiles(const std::filesystem::path& file);

// `wanted`, with the lowest number from 2 appended if the name is taken.
[[nodiscard]] std::string unusedName(const std::string& wanted, const std::vector<std::string>& taken);

// The parsers of the single formats, for findProfiles() only. Names may still be equal.
[[nodiscard]] ProfilesFound profilesFromSiteManager(std::string_view xml);
[[nodiscard]] ProfilesFound profilesFromWorkspace(std::string_view json, const std::filesystem::path& file);

// The user must name another local folder first.
class LocalFolderWanted : public SyncError {
public:
    using SyncError::SyncError;
};

// The profile as it is saved beside the others. Throws SyncError if it cannot be saved unchanged. Reads the local
// folder, which may block.
[[nodiscard]] Profile importable(const Profile& found, const std::vector<Profile>& others);

} // namespace zembrastel
