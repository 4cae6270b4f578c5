#include "cli/command.h"

#include "cli/commands.h"
#include "cli/parser.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"

#include <algorithm>

namespace zembrastel::cli {
namespace {

constexpr const char* programDescription =
    translatable("Keeps a local folder published to an FTP or FTPS server: what you save here is live there\n"
                 "a few seconds later. A profile names the folder and the server.\n");

constexpr const char* programFooter =
    translatable("zembrastel-cli COMMAND --help explains a command. Passwords are read from the\n"
                 "desktop's secret store unless an option names another source.\n\n"
                 "Exit codes:\n"
                 "  0  done\n"
                 "  1  failed\n"
                 "  2  the command line is wrong\n"
                 "  3  a decision waits: files are newer on the server, or there already\n"
                 "  4  the state folder is in use by another running program\n"
                 "  5  the server refused the login\n"
                 "  6  Zembrastel is not running, or has ended\n"
                 "  7  the running program does not answer\n"
                 "  8  interrupted before the work was done\n"
                 "  9  watch: there is no profile, or none is enabled\n\n"
                 "Examples:\n"
                 "  zembrastel-cli profile add --name \"My website\" --host ftp.example.com \\\n"
                 "    --username web --remote-folder /public_html --local-folder ~/website\n"
                 "  zembrastel-cli test \"My website\"\n"
                 "  zembrastel-cli watch \"My website\"");

void addGlobalOptions(Syntax& program, GlobalOptions& options) {
    program
        .option(
            "--state", options.stateFolder, "DIR",
            "Where profiles are saved (default: Zembrastel in\n$XDG_DATA_HOME or ~/.local/share)")
        .notEmpty();
    program.flag("--json", options.json, "Print one JSON object per line, for programs");
    const auto file =
        program.option("--password-file", options.passwordFile, "FILE", "Use the first line of FILE as the password")
            .notEmpty();
    program
        .option(
            "--password-command", options.passwordCommand, "CMD",
            "Use the first line of the output of CMD as the password.\nCMD runs without a shell and cannot ask in the "
            "terminal")
        .notEmpty()
        .excludes({file});
}

void addCommands(Syntax& program) {
    auto profile = program.group("profile", "Save, show, change, remove, export and import profiles");
    addProfileAdd(profile);
    addProfileList(profile);
    addProfileShow(profile);
    addProfileSet(profile);
    addProfileRemove(profile);
    addProfileDuplicate(profile);
    addProfileTrust(profile);
    addProfileExport(profile);
    addProfileImport(profile);
    addTest(program);
    addLs(program);
    addScan(program);
    addWhy(program);
    addCheck(program);
    addWatch(program);
    addPush(program);
    addAdopt(program);
    addReview(program);
    addStatus(program);
    addPause(program);
    addResume(program);
    addForgetFiles(program);
    addBackups(program);
    addRestore(program);
    addDoctor(program);
}

// Used before parsing, which may fail.
bool wantsJson(int count, char** arguments) {
    return std::any_of(arguments, arguments + count, [](const char* text) { return text == std::string("--json"); });
}

ExitCode runCommand(int count, char** arguments, Output& output, Interrupt& interrupt) {
    GlobalOptions options;
    if (count > 0) options.program = arguments[0];
    Parser parser(programDescription);
    auto program = parser.program();
    addGlobalOptions(program, options);
    parser.setVersion("zembrastel-cli " ZEMBRASTEL_VERSION);
    addCommands(program);
    const Command command = parser.parse(count, arguments, programFooter);
    if (!command) return ExitCode::done;
    const ExitCode code = command({.options = options, .output = output, .interrupt = interrupt});
    if (code == ExitCode::done && output.failure()) {
        throw CommandError(
            ExitCode::failed,
            translate("Cannot write the output: %1.", {translateEngineText(output.failure().message())}));
    }
    return code;
}

// Details are for a person who helps: on a line of their own, and at the end of the message for programs.
void printError(const CommandError& error, Output& output) {
    const bool inMessage = output.json() && !error.details.empty();
    output.error(inMessage ? std::string(error.what()) + " (" + error.details + ")" : error.what());
    if (!error.details.empty()) output.note(translate("Details: %1", {error.details}));
}

} // namespace

ExitCode runCommandLine(int argumentCount, char** arguments, Interrupt& interrupt) {
    const bool json = wantsJson(argumentCount, arguments);
    if (!json) startTranslation();
    Output output(json);
    try {
        return runCommand(argumentCount, arguments, output, interrupt);
    } catch (const CommandError& error) {
        printError(error, output);
        return error.code;
    } catch (const Cancelled&) {
        output.error(translate("Interrupted."));
        return ExitCode::interrupted;
    } catch (const std::exception& error) {
        output.error(translateEngineText(describe(error)));
        return ExitCode::failed;
    }
}

} // namespace zembrastel::cli
