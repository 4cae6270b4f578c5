#include "cli/session/passwords.h"

#include "app/context/main_context.h"
#include "app/password_calls.h"
#include "cli/terminal/prompt.h"
#include "cli/text/presentation.h"
#include "cli/text/shell_words.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/password_store.h"
#include "platform/child_process.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/text.h"
#include "transport/transfer_control.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

void warnIfOthersCanRead(const std::string& file, Output& output) {
    struct stat attributes {};
    if (::stat(file.c_str(), &attributes) != 0 || !S_ISREG(attributes.st_mode)) return;
    if ((attributes.st_mode & (S_IRWXG | S_IRWXO)) == 0) return;
    output.warning(
        translate("Other users of this machine may read the password file %1. To prevent that: chmod 600.", {file}));
}

std::string passwordFromFile(const std::string& file, Output& output) {
    std::optional<std::string> text;
    try {
        text = readFile(file);
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, translate("Cannot read the password file %1", {reasonText(error)}));
    }
    if (!text) throw CommandError(ExitCode::failed, translate("The password file %1 does not exist.", {file}));
    if (text->empty()) {
        throw CommandError(
            ExitCode::failed, translate("The password file %1 is empty. The password is its first line.", {file}));
    }
    warnIfOthersCanRead(file, output);
    return firstLine(*text);
}

// Finds the program as a shell does.
std::string executableFor(const std::string& name) {
    if (name.find('/') != std::string::npos) return std::filesystem::absolute(name).string();
    const char* folders = std::getenv("PATH");
    for (const auto folder : split(folders == nullptr ? "/usr/local/bin:/usr/bin:/bin" : folders, ':')) {
        // An empty entry stands for the current folder.
        const auto candidate = std::filesystem::absolute(folder.empty() ? "." : folder) / name;
        std::error_code unreadable;
        if (std::filesystem::is_regular_file(candidate, unreadable) && ::access(candidate.c_str(), X_OK) == 0) {
            return candidate.string();
        }
    }
    throw CommandError(
        ExitCode::failed,
        translate("Cannot run the password command: there is no program %1 in PATH.", {inQuotes(name)}));
}

// The file exists in memory alone: no password reaches a disk.
Descriptor openMemoryFile() {
    Descriptor file(::memfd_create("password", MFD_CLOEXEC));
    if (!file) throwFileError("memfd_create", "memory file");
    return file;
}

std::string contentsOf(int file) {
    // Its entry in /proc opens it afresh, from the beginning.
    return readFile("/proc/self/fd/" + std::to_string(file)).value_or("");
}

ChildProcess::Exit runPasswordCommand(ChildProcess& process, Interrupt& interrupt) {
    const auto control = std::make_shared<TransferControl>();
    const auto interruptible = interrupt.during([control] { control->cancel(); });
    control->launch(process);
    process.closeInput();
    process.wait();
    control->clear();
    const auto exit = process.collect();
    control->check();
    return exit;
}

// The first line of the output of a program that runs without a shell.
std::string passwordFromCommand(const std::string& commandLine, Interrupt& interrupt) {
    auto words = splitWords(commandLine);
    if (!words || words->empty()) {
        throw CommandError(
            ExitCode::usage,
            words ? translate("--password-command names no program.")
                  : translate("--password-command has a quotation mark without its partner, or ends with \\."));
    }
    const std::string name = inQuotes(words->front());
    const Descriptor output = openMemoryFile();
    ChildProcess process(
        {.executable = executableFor(words->front()),
         .arguments = {words->begin() + 1, words->end()},
         .output = output.get(),
         .errors = STDERR_FILENO});
    ChildProcess::Exit exit;
    try {
        exit = runPasswordCommand(process, interrupt);
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandError(ExitCode::failed, translate("Cannot run the password command %1", {reasonText(error)}));
    }
    if (!exit.exited || exit.code != 0) {
        throw CommandError(
            ExitCode::failed,
            exit.exited ? translate(
                "The password command %1 failed with exit code %2, so there is no password to log in with.",
                {name, std::to_string(exit.code)})
                        : translate(
                            "The password command %1 failed with signal %2, so there is no password to log in with.",
                            {name, std::to_string(exit.code)}));
    }
    const std::string printed = contentsOf(output.get());
    if (printed.empty())
        throw CommandError(ExitCode::failed, translate("The password command %1 printed nothing.", {name}));
    return firstLine(printed);
}

} // namespace

std::optional<std::string> givenPassword(const CommandContext& context) {
    const auto& options = context.options;
    if (!options.passwordFile.empty()) return passwordFromFile(options.passwordFile, context.output);
    if (!options.passwordCommand.empty()) return passwordFromCommand(options.passwordCommand, context.interrupt);
    return std::nullopt;
}

void warnNotStored(const std::string& reason, Output& output) {
    output.warning(translate(
        "No password was stored. %1 Give the password to each command with --password-file FILE or "
        "--password-command CMD.",
        {translateEngineText(reason)}));
}

std::string readStoredPassword(const Uuid& id) {
    try {
        return PasswordStore::read(id);
    } catch (const SyncError& error) {
        throw SyncError(
            std::string(error.what()) + " Give the password with --password-file or --password-command instead.");
    }
}

std::string passwordFor(const Profile& profile, const CommandContext& context) {
    if (auto given = givenPassword(context)) return *std::move(given);
    // On a thread of its own, so that an interrupt can end the wait for the user.
    MainQueue queue;
    const auto interruptible = context.interrupt.during([&queue] { queue.quit(); });
    std::optional<PasswordCalls::Result> result;
    PasswordCalls calls(queue);
    calls.ask(
        [id = profile.id] { return readStoredPassword(id); },
        [&result](PasswordCalls::Result read) { result = std::move(read); });
    queue.runUntil([&result] { return result.has_value(); });
    if (!result) throw Cancelled();
    if (result->failure) {
        throw CommandError(
            ExitCode::failed,
            translate("No password for %1: %2", {inQuotes(profile.name), translateEngineText(*result->failure)}));
    }
    return std::move(result->password);
}

} // namespace zembrastel::cli
