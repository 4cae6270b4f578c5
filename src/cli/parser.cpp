#include "cli/parser.h"

#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

namespace zembrastel::cli {
namespace {

// CLI11 takes "[a,b]" for a list wherever more than one text may follow. File names may look like that, so such an
// argument gets this mark before parsing, and every option removes it. Users do not type it.
constexpr char bracketMark = '\x1F';

std::string withBracketMark(const std::string& argument) {
    const bool looksLikeList = argument.starts_with('[') && argument.ends_with(']');
    return looksLikeList ? bracketMark + argument : argument;
}

std::string withoutBracketMark(const std::string& argument) {
    return argument.starts_with(bracketMark) ? argument.substr(1) : argument;
}

void removeBracketMarks(CLI::App& app) {
    for (auto* option : app.get_options([](const CLI::Option* candidate) { return candidate->get_type_size() > 0; })) {
        option->transform([](const std::string& text) { return withoutBracketMark(text); });
    }
    for (auto* command : app.get_subcommands({})) removeBracketMarks(*command);
}

// Shows each option with the type of its value, and without CLI11's own rules.
class HelpText final : public CLI::Formatter {
public:
    HelpText() {
        constexpr std::size_t descriptionColumn = 32;
        column_width(descriptionColumn);
        label("Usage", translate("Usage"));
        label("OPTIONS", translate("OPTIONS"));
        label("REQUIRED", translate("REQUIRED"));
        label("Excludes", translate("Excludes"));
        label("SUBCOMMAND", translate("COMMAND"));
        label("Positionals", translate("Arguments"));
    }

    std::string make_option_opts(const CLI::Option* option) const override {
        if (option->get_type_size() == 0 || option->get_type_name().empty()) return "";
        return " " + option->get_type_name() + (option->get_allow_extra_args() ? "..." : "");
    }

    std::string make_footer(const CLI::App* app) const override {
        std::string text = CLI::Formatter::make_footer(app);
        if (app->get_parent() == nullptr) return text;
        if (!text.empty()) text += '\n';
        return text
               + translate("--state, --json and the password options can be given as well: see zembrastel-cli --help.")
               + "\n";
    }
};

std::vector<const CLI::App*> commandsBelow(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

// The innermost command that the user has named; the program if none.
const CLI::App& namedCommand(const CLI::App& app) {
    const auto named = app.get_subcommands();
    return named.empty() ? app : namedCommand(*named.front());
}

// "add, list or set"
std::string listedCommands(const CLI::App& app) {
    const auto commands = commandsBelow(app);
    std::string names;
    for (const auto* each : commands) {
        if (!names.empty()) names += each == commands.back() ? translate(" or ") : ", ";
        names += each->get_name();
    }
    return names;
}

// The first option of the command or of its parents that was given too often.
const CLI::Option* repeatedOption(const CLI::App* command) {
    for (; command != nullptr; command = command->get_parent()) {
        for (const auto* option : command->get_options()) {
            const auto allowed = static_cast<std::size_t>(std::max(option->get_items_expected_max(), 1));
            const bool once = option->get_multi_option_policy() == CLI::MultiOptionPolicy::Throw;
            if (once && option->get_type_size() > 0 && option->count() > allowed) return option;
        }
    }
    return nullptr;
}

CLI::Option& addOption(CLI::App& app, const char* name, auto& target, const char* type, const char* help) {
    return *app.add_option(name, target, translate(help))->type_name(type);
}

} // namespace

Option Option::optional() const {
    option->required(false);
    return *this;
}

Option Option::notEmpty(const char* words) const {
    option->check(
        [complaint = translate(words)](const std::string& text) { return text.empty() ? complaint : std::string(); },
        "");
    return *this;
}

Option Option::portNumber() const {
    option->check(
        [](const std::string& text) {
            constexpr int maxPort = 65535;
            int port = 0;
            const auto parsed = std::from_chars(text.data(), text.data() + text.size(), port);
            const bool isNumber = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
            return isNumber && port >= 1 && port <= maxPort
                       ? ""
                       : translate("must be a number from 1 to 65535, not %1", {text});
        },
        "");
    return *this;
}

Option Option::repeatable() const {
    option->take_all()->expected(1, -1)->allow_extra_args(false);
    return *this;
}

Option Option::excludes(const std::vector<Option>& others) const {
    for (const auto& other : others) option->excludes(other.option);
    return *this;
}

void excludeEachOther(const std::vector<Option>& options) {
    for (auto first = options.begin(); first != options.end(); ++first) first->excludes({first + 1, options.end()});
}

Option Syntax::argument(const char* name, std::string& target, const char* help) const {
    return Option(*addOption(*app, name, target, "", help).required());
}

Option Syntax::argument(const char* name, std::vector<std::string>& target, const char* help) const {
    return Option(*addOption(*app, name, target, "", help).required());
}

Option Syntax::profileArgument(std::string& target) const {
    return argument("NAME", target, translatable("Name or id of the profile"));
}

Option Syntax::option(const char* name, std::string& target, const char* type, const char* help) const {
    return Option(addOption(*app, name, target, type, help));
}

Option Syntax::option(const char* name, std::optional<std::string>& target, const char* type, const char* help) const {
    return Option(addOption(*app, name, target, type, help));
}

Option Syntax::option(const char* name, std::optional<std::int64_t>& target, const char* type, const char* help) const {
    return Option(addOption(*app, name, target, type, help));
}

Option Syntax::option(const char* name, std::vector<std::string>& target, const char* type, const char* help) const {
    return Option(addOption(*app, name, target, type, help));
}

Option Syntax::flag(const char* name, bool& target, const char* help) const {
    return Option(*app->add_flag(name, target, translate(help)));
}

Option Syntax::named(const char* name) const { return Option(*app->get_option(name)); }

void Syntax::footer(const char* text) const { app->footer(translate(text)); }

namespace {

CLI::App* addedCommand(CLI::App& parent, const char* name, const char* help) {
    auto* const added = parent.add_subcommand(name, translate(help))->group(translate("Commands"));
    added->get_option("--help")->group(translate("Options")); // CLI11 made it before it took over the groups
    return added;
}

} // namespace

Syntax Syntax::addCommand(const char* name, const char* help, Command run) const {
    auto* added = addedCommand(*app, name, help);
    added->callback([target = chosen, run = std::move(run)] { *target = run; });
    return {*added, *chosen};
}

Syntax Syntax::group(const char* name, const char* help) const {
    auto* added = addedCommand(*app, name, help)->require_subcommand(1);
    return {*added, *chosen};
}

Parser::Parser(const char* description) : app(std::make_unique<CLI::App>(translate(description), "zembrastel-cli")) {
    app->option_defaults()->group(translate("Options")); // commands inherit it
    app->set_help_flag("-h,--help", translate("Print this help and exit"));
    app->formatter(std::make_shared<HelpText>());
    app->require_subcommand(1);
    app->fallthrough();
}

Parser::~Parser() = default;

Syntax Parser::program() { return {*app, chosen}; }

void Parser::setVersion(const char* text) {
    app->set_version_flag("--version", text, translate("Print the version and exit"));
}

Command Parser::parse(int count, char** arguments, const char* footer) {
    app->footer(translate(footer)); // not earlier: commands inherit it
    removeBracketMarks(*app);
    std::vector<std::string> texts; // CLI11 takes them from the end
    for (int index = count - 1; index > 0; --index) texts.push_back(withBracketMark(arguments[index]));
    try {
        app->parse(std::move(texts));
    } catch (const CLI::Success& request) {
        app->exit(request);
    } catch (const CLI::ParseError& error) {
        const bool required = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
        throw CommandError(ExitCode::usage, complaint(error, required) + " " + translate("--help shows more."));
    }
    return chosen;
}

// CLI11's own words, except for the failures that are worded here.
std::string Parser::complaint(const std::exception& error, bool required) const {
    const auto unknown = app->remaining(true);
    const CLI::App& command = namedCommand(*app);
    if (!unknown.empty()) {
        const bool isCommand = &command == app.get() && !unknown.front().starts_with('-');
        const std::string given = inQuotes(withoutBracketMark(unknown.front()));
        return isCommand ? translate("There is no command %1.", {given}) : translate("Not expected: %1.", {given});
    }
    if (required && !commandsBelow(command).empty()) {
        const std::string commands = listedCommands(command);
        return &command == app.get() ? translate("Name a command: %1.", {commands})
                                     : translate("Name a command of %1: %2.", {command.get_name(), commands});
    }
    if (const auto* repeated = repeatedOption(&command)) {
        return translate("%1 was given more than once; give it once.", {repeated->get_name()});
    }
    return translateEngineText(sentence(error.what()));
}

} // namespace zembrastel::cli
