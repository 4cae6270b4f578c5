// The command line of the desktop program.
//
// Pure. Runs before the application exists, so nothing here needs a display.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace zembrastel::ui {

struct DesktopOptions {
    bool demo = false;                                // a sample profile; no network, disk or secret store
    bool background = false;                          // no window until the user asks for it
    std::optional<std::filesystem::path> stateFolder; // absolute; nullopt for the user's own state folder
};

// The parsed options; or, if the arguments only request a text or are invalid, the text to print and the exit code.
struct ParsedOptions {
    std::optional<DesktopOptions> options;
    std::string text;
    int exitCode = 0;
};

// The built-in checks to run: those without a server, or those with a server on this port.
struct ChecksAsked {
    bool withServer = false;
    std::int64_t port = 0;
};

// Finds the switch anywhere among the arguments; all other arguments are then ignored. The port is the argument after
// the switch if that is a whole number, else the default port.
[[nodiscard]] std::optional<ChecksAsked> requestedChecks(int argc, const char* const* argv);

[[nodiscard]] ParsedOptions parseDesktopOptions(int argc, const char* const* argv);

} // namespace zembrastel::ui
