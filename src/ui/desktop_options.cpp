#include "ui/desktop_options.h"

#include <CLI/CLI.hpp>
#include <sstream>

namespace zembrastel {
namespace {

constexpr int usageError = 2;

} // namespace

ParsedOptions parseDesktopOptions(int argc, const char* const* argv) {
    DesktopOptions options;
    std::string stateFolder;
    CLI::App app("Keeps a local folder published to an FTP or FTPS server.", "zembrastel");
    app.add_flag("--demo", options.demo, "Show a sample profile; nothing is connected to or saved");
    app.add_flag("--background", options.background, "Start without a window, in the tray where there is one");
    app.add_option(
           "--state", stateFolder,
           "Where profiles are saved (default: Zembrastel in\n$XDG_DATA_HOME or ~/.local/share)")
        ->type_name("DIR");
    app.set_version_flag("--version", "zembrastel " ZEMBRASTEL_VERSION, "Print the version and exit");
    app.get_help_ptr()->description("Print this help and exit");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& told) {
        std::ostringstream text;
        app.exit(told, text, text);
        return {.options = std::nullopt, .text = text.str(), .exitCode = 0};
    } catch (const CLI::ParseError& error) {
        return {
            .options = std::nullopt,
            .text = "zembrastel: " + std::string(error.what()) + ". --help tells more.\n",
            .exitCode = usageError};
    }
    if (!stateFolder.empty()) options.stateFolder = std::filesystem::absolute(stateFolder);
    return {.options = options, .text = {}, .exitCode = 0};
}

} // namespace zembrastel
