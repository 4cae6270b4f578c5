// Describes a selection in a few words.
//
// Pure functions. Main thread, because of the translations.
#pragma once

#include "model/download_selection.h"
#include "model/fingerprint.h"
#include "model/profile.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace zembrastel::ui {

// The number of folders and files that have a tick of their own.
struct TickedKinds {
    std::size_t folders = 0;
    std::size_t files = 0;
};

// Returns whether the path is a folder; nullopt if that is unknown.
using FolderLookup = std::function<std::optional<bool>(const std::string& path)>;

// Returns nullopt if the kind of any ticked path is unknown.
[[nodiscard]] std::optional<TickedKinds> countTicked(const DownloadSelection& selection, const FolderLookup& isFolder);

// Looks paths up among files that were synchronised before. Empty folders are unknown to it.
[[nodiscard]] FolderLookup amongFiles(const FileMap& files);

// What was selected from.
enum class SelectionScope { localFolder, server };

// "Nothing selected", "All files in the local folder", "All files on the server", "3 folders and 2 files selected" or
// "5 items selected", followed by the number of exceptions inside them, if any.
[[nodiscard]] QString selectionSummary(
    const DownloadSelection& selection, const std::optional<TickedKinds>& kinds,
    SelectionScope scope = SelectionScope::localFolder);

// The sync contents of a profile.
[[nodiscard]] QString syncContentsSummary(const Profile& profile, const FileMap& synchronised);

} // namespace zembrastel::ui
