// Where the desktop's conventions put things (XDG base directories).
#pragma once

#include <filesystem>

namespace zembrastel {

// $XDG_DATA_HOME, or .local/share in the user's home folder.
[[nodiscard]] std::filesystem::path dataFolder();

// $XDG_CONFIG_HOME, or .config in the user's home folder.
[[nodiscard]] std::filesystem::path configFolder();

// $HOME, or what the system knows as the user's; "/" where neither is known.
[[nodiscard]] std::filesystem::path homeFolder();

// $TMPDIR, or /tmp.
[[nodiscard]] std::filesystem::path temporaryFolder();

} // namespace zembrastel
