// What is said of a selection in a few words.
//
// Pure functions. Main thread, for the translations.
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

// How many folders and files are ticked themselves.
struct TickedKinds {
    std::size_t folders = 0;
    std::size_t files = 0;
};

// Is what lies at this path a folder? Nothing where that is not known.
using FolderLookup = std::function<std::optional<bool>(const std::string& path)>;

// Nothing when it is not known of one of those that are ticked.
[[nodiscard]] std::optional<TickedKinds> countTicked(const DownloadSelection& selection, const FolderLookup& isFolder);

// Asks the files that were synchronised once, which have no empty folders among them.
[[nodiscard]] FolderLookup amongFiles(const FileMap& files);

// "Nothing selected", "Everything selected", "3 folders and 2 files selected", "5 items selected", with the number of
// exceptions that were made inside, if there are any.
[[nodiscard]] QString selectionSummary(const DownloadSelection& selection, const std::optional<TickedKinds>& kinds);

// What stands for the sync contents of a profile: "All files in the local folder", or a summary of what was chosen.
[[nodiscard]] QString syncContentsSummary(const Profile& profile, const FileMap& synchronised);

} // namespace zembrastel::ui
