// --password-command: any program that prints a password.
#include "cli/session/passwords.h"
#include "cli/text/presentation.h"
#include "cli/text/shell_words.h"
#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/text.h"
#include "transport/transfer_control.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

// Where a shell would find the program.
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
        ExitCode::failed, "Cannot run the password command: there is no program " + inQuotes(name) + " in PATH.");
}

// A file that exists in memory alone: no password reaches a disk.
Descriptor openMemoryFile() {
    Descriptor file(::memfd_create("password", MFD_CLOEXEC));
    if (!file) throwFileError("memfd_create", "memory file");
    return file;
}

std::string contents(int file) {
    // Its entry in /proc opens it afresh, from the beginning.
    return readFile("/proc/self/fd/" + std::to_string(file)).value_or("");
}

ChildProcess::Exit runToEnd(ChildProcess& process, Interrupt& interrupt) {
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

} // namespace

std::string passwordFromCommand(const std::string& commandLine, Interrupt& interrupt) {
    auto words = splitWords(commandLine);
    if (!words || words->empty()) {
        throw CommandError(
            ExitCode::usage, words ? "--password-command names no program."
                                   : "--password-command has a quotation mark without its partner, or ends with \\.");
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
        exit = runToEnd(process, interrupt);
    } catch (const std::filesystem::filesystem_error& error) {
        throw CommandError(ExitCode::failed, "Cannot run the password command " + describe(error) + ".");
    }
    if (!exit.exited || exit.code != 0) {
        throw CommandError(
            ExitCode::failed, "The password command " + name + " failed with "
                                  + (exit.exited ? "exit code " : "signal ") + std::to_string(exit.code)
                                  + ", so there is no password to log in with.");
    }
    const std::string printed = contents(output.get());
    if (printed.empty()) throw CommandError(ExitCode::failed, "The password command " + name + " printed nothing.");
    return firstLine(printed);
}

} // namespace zembrastel::cli
