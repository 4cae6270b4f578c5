// Standard folders of the desktop (XDG base directories).
#pragma once

#include <filesystem>

namespace zembrastel {

// $XDG_DATA_HOME, or .local/share in the user's home folder.
[[nodiscard]] std::filesystem::path dataFolder();

// $XDG_CONFIG_HOME, or .config in the user's home folder.
[[nodiscard]] std::filesystem::path configFolder();

// $HOME, or the home folder of the user database; "/" if neither is known.
[[nodiscard]] std::filesystem::path homeFolder();

// $TMPDIR, or /tmp.
[[nodiscard]] std::filesystem::path temporaryFolder();

} // namespace zembrastel
