#include "ui/desktop_options.h"

#include "checks/built_in_checks.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>
#include <vector>

namespace zembrastel::ui {
namespace {

constexpr int usageError = 2;
constexpr auto selfTest = "--self-test";
constexpr auto integrationTest = "--integration-test";

// A decimal number with an optional sign, and nothing else.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto end = text.data() + text.size();
    const auto [rest, problem] = std::from_chars(text.data(), end, number);
    return problem == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<ChecksAsked> requestedChecks(int argc, const char* const* argv) {
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    if (std::find(arguments.begin(), arguments.end(), selfTest) != arguments.end()) return ChecksAsked{};
    const auto found = std::find(arguments.begin(), arguments.end(), integrationTest);
    if (found == arguments.end()) return std::nullopt;
    const auto port = found + 1 == arguments.end() ? std::nullopt : wholeNumber(found[1]);
    return ChecksAsked{.withServer = true, .port = port.value_or(defaultTestPort)};
}

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
    // Only for the help text, and to refuse "--option=value"; the correct forms were handled before.
    app.add_flag(selfTest)
        ->description("Run the built-in checks that need no server, and exit")
        ->disable_flag_override();
    app.add_option(integrationTest)
        ->description(
            "Run those that need an FTP server (127.0.0.1, port\n2121 unless given, user web, password s3cret, no\n"
            "TLS), and exit; what they upload stays on it")
        ->type_name("[PORT]")
        ->each([](const std::string&) { throw CLI::ValidationError("The port follows after a blank"); });
    app.set_version_flag("--version", "zembrastel " ZEMBRASTEL_VERSION, "Print the version and exit");
    app.get_help_ptr()->description("Print this help and exit");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        std::ostringstream text;
        app.exit(success, text, text);
        return {.options = std::nullopt, .text = text.str(), .exitCode = 0};
    } catch (const CLI::ParseError& error) {
        return {
            .options = std::nullopt,
            .text = "zembrastel: " + std::string(error.what()) + ". Run \"zembrastel --help\" for the options.\n",
            .exitCode = usageError};
    }
    if (!stateFolder.empty()) options.stateFolder = std::filesystem::absolute(stateFolder);
    return {.options = options, .text = {}, .exitCode = 0};
}

} // namespace zembrastel::ui
