// What the command line of the desktop program asks for.
//
// Pure; before the application is there, so that nothing here needs a display.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace zembrastel::ui {

struct DesktopOptions {
    bool demo = false;                                // a sample profile; no network, disk or secret store
    bool background = false;                          // no window until it is asked for
    std::optional<std::filesystem::path> stateFolder; // absolute; the user's own where nothing is named
};

// What was asked for; or, when that was only to be told something or was not understood, the text to print and the
// exit code to end with.
struct ParsedOptions {
    std::optional<DesktopOptions> options;
    std::string text;
    int exitCode = 0;
};

// The built-in checks that are asked for: those without a server, or those with one on this port.
struct ChecksAsked {
    bool withServer = false;
    std::int64_t port = 0;
};

// Looked for anywhere among the arguments and before all else there, which then counts for nothing. The port is the
// argument after the switch where that is a whole number, else the default one.
[[nodiscard]] std::optional<ChecksAsked> checksAskedFor(int argc, const char* const* argv);

[[nodiscard]] ParsedOptions parseDesktopOptions(int argc, const char* const* argv);

} // namespace zembrastel::ui
