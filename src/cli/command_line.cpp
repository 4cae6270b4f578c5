#include "cli/command_line.h"

#include "cli/command.h"
#include "cli/commands/backups.h"
#include "cli/commands/check.h"
#include "cli/commands/doctor.h"
#include "cli/commands/forget_files.h"
#include "cli/commands/ls.h"
#include "cli/commands/pausing.h"
#include "cli/commands/profile_add.h"
#include "cli/commands/profile_duplicate.h"
#include "cli/commands/profile_export.h"
#include "cli/commands/profile_import.h"
#include "cli/commands/profile_list.h"
#include "cli/commands/profile_remove.h"
#include "cli/commands/profile_set.h"
#include "cli/commands/profile_show.h"
#include "cli/commands/push.h"
#include "cli/commands/restore.h"
#include "cli/commands/review.h"
#include "cli/commands/status.h"
#include "cli/commands/test.h"
#include "cli/commands/watch.h"
#include "cli/commands/why.h"
#include "cli/session/folder_scan.h"
#include "cli/text/help_text.h"
#include "cli/text/option_texts.h"
#include "cli/text/presentation.h"
#include "model/error.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zembrastel::cli {
namespace {

constexpr const char* description =
    "Keeps a local folder published to an FTP or FTPS server: what you save here is live there\n"
    "a few seconds later. A profile says which folder and which server.\n";

constexpr const char* footer = "zembrastel-cli COMMAND --help tells more about a command. Passwords are read from the\n"
                               "desktop's secret store unless an option names another place.\n\n"
                               "Exit codes:\n"
                               "  0  done\n"
                               "  1  failed\n"
                               "  2  the command line is wrong\n"
                               "  3  a review is waiting: files are newer on the server\n"
                               "  4  the state folder is in use by another running program\n"
                               "  5  the server refused the login\n"
                               "  6  no program keeps profiles published now\n"
                               "  7  the running program does not answer\n"
                               "  8  interrupted before the work was done\n\n"
                               "Examples:\n"
                               "  zembrastel-cli profile add --name \"My website\" --host ftp.example.com \\\n"
                               "    --username web --remote-folder /public_html --local-folder ~/website\n"
                               "  zembrastel-cli test \"My website\"\n"
                               "  zembrastel-cli watch \"My website\"";

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    const auto text = [&app](const char* name, std::string& target, const char* type, const char* help) {
        return app.add_option(name, target, help)->type_name(type)->check(notEmpty());
    };
    text(
        "--state", options.stateFolder, "DIR",
        "Where profiles are saved (default: Zembrastel in\n$XDG_DATA_HOME or ~/.local/share)");
    app.add_flag("--json", options.json, "Print one JSON object a line, for programs");
    auto* file = text("--password-file", options.passwordFile, "FILE", "Take the password from the first line of FILE");
    text(
        "--password-command", options.passwordCommand, "CMD",
        "Take the password from the first line that CMD prints. It\nruns without a shell and cannot ask in the "
        "terminal")
        ->excludes(file);
    app.set_version_flag("--version", "zembrastel-cli " ZEMBRASTEL_VERSION, "Print the version and exit");
}

class Parser {
public:
    Parser() {
        app.set_help_flag("-h,--help", "Print this help and exit");
        app.formatter(std::make_shared<HelpText>());
        app.require_subcommand(1);
        app.fallthrough();
        addGlobalOptions(app, options);
        auto* profile = app.add_subcommand("profile", "Save, show, change, remove, export and import profiles");
        profile->require_subcommand(1);
        addProfileAdd(*profile, chosen);
        addProfileList(*profile, chosen);
        addProfileShow(*profile, chosen);
        addProfileSet(*profile, chosen);
        addProfileRemove(*profile, chosen);
        addProfileDuplicate(*profile, chosen);
        addProfileExport(*profile, chosen);
        addProfileImport(*profile, chosen);
        addTest(app, chosen);
        addLs(app, chosen);
        addScan(app, chosen);
        addWhy(app, chosen);
        addCheck(app, chosen);
        addWatch(app, chosen);
        addPush(app, chosen);
        addReviewCommand(app, chosen);
        addStatusCommand(app, chosen);
        addPause(app, chosen);
        addResume(app, chosen);
        addForgetFiles(app, chosen);
        addBackups(app, chosen);
        addRestore(app, chosen);
        addDoctor(app, chosen);
        for (auto* command : app.get_subcommands({})) command->group("Commands");
        for (auto* command : profile->get_subcommands({})) command->group("Commands");
        app.footer(footer); // last: commands made after it would have it as well
        takeBracketsAsTyped(app);
    }

    // Nothing to run when help was asked for, and printed.
    Command parse(int count, char** arguments) {
        std::vector<std::string> texts;
        for (int index = count - 1; index > 0; --index) texts.push_back(markedBrackets(arguments[index]));
        if (count > 0) options.program = arguments[0];
        app.name("zembrastel-cli");
        try {
            app.parse(std::move(texts)); // takes them from the end
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
                throw CommandError(ExitCode::usage, complaint(error) + " --help tells more.");
            }
            app.exit(error);
        }
        return chosen;
    }

    GlobalOptions options;

private:
    // The parser's own words, but for those about commands.
    [[nodiscard]] std::string complaint(const CLI::ParseError& error) const {
        const auto unknown = app.remaining(true);
        if (!unknown.empty()) {
            const bool isCommand = app.get_subcommands().empty() && !unknown.front().starts_with('-');
            return (isCommand ? "There is no command " : "Not expected: ") + inQuotes(unmarked(unknown.front())) + ".";
        }
        if (error.what() == std::string_view("A subcommand is required")) {
            return app.got_subcommand("profile") ? "Say which profile command: " + commandsOf("profile") + "."
                                                 : "Say which command: " + commandsOf("") + ".";
        }
        return sentence(repetition(error.what()).value_or(error.what()));
    }

    // Of an option that is not to be repeated.
    static std::optional<std::string> repetition(const std::string& complaint) {
        const auto end = complaint.find(": At Most 1 required but received ");
        if (end == std::string::npos) return std::nullopt;
        return complaint.substr(0, end) + " was given more than once; give it once";
    }

    // "add, list or set": those of the command of that name, or of the program.
    [[nodiscard]] std::string commandsOf(const std::string& name) const {
        const CLI::App* command = name.empty() ? &app : app.get_subcommand(name);
        const auto commands = command->get_subcommands([](const CLI::App*) { return true; });
        std::string names;
        for (const auto* each : commands) {
            if (!names.empty()) names += each == commands.back() ? " or " : ", ";
            names += each->get_name();
        }
        return names;
    }

    CLI::App app{description};
    Command chosen;
};

// Before parsing, which may be what fails.
bool wantsJson(int count, char** arguments) {
    return std::any_of(arguments, arguments + count, [](const char* text) { return text == std::string("--json"); });
}

ExitCode runCommand(int count, char** arguments, Output& output, Interrupt& interrupt) {
    Parser parser;
    const Command command = parser.parse(count, arguments);
    if (!command) return ExitCode::done;
    const ExitCode code = command({.options = parser.options, .output = output, .interrupt = interrupt});
    if (code == ExitCode::done && output.failure()) {
        throw CommandError(ExitCode::failed, "Cannot write the output: " + output.failure().message() + ".");
    }
    return code;
}

} // namespace

ExitCode runCommandLine(int argumentCount, char** arguments, Interrupt& interrupt) {
    Output output(wantsJson(argumentCount, arguments));
    try {
        return runCommand(argumentCount, arguments, output, interrupt);
    } catch (const CommandError& error) {
        output.error(error.what());
        return error.code;
    } catch (const Cancelled&) {
        output.error("Interrupted.");
        return ExitCode::interrupted;
    } catch (const std::exception& error) {
        output.error(describe(error));
        return ExitCode::failed;
    }
}

} // namespace zembrastel::cli
