// Where the desktop's conventions put things (XDG base directories).
#pragma once

#include <filesystem>

namespace zembrastel {

// $XDG_DATA_HOME, or .local/share in the user's home folder.
[[nodiscard]] std::filesystem::path dataFolder();

// $TMPDIR, or /tmp.
[[nodiscard]] std::filesystem::path temporaryFolder();

} // namespace zembrastel
