#include "cli/session/passwords.h"

#include "app/context/main_queue.h"
#include "app/password_calls.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "model/password_store.h"
#include "platform/descriptor.h"
#include "platform/files.h"

#include <sys/stat.h>

namespace zembrastel::cli {
namespace {

void warnWhenOpenToOthers(const std::string& file, Output& output) {
    struct stat attributes {};
    if (::stat(file.c_str(), &attributes) != 0 || !S_ISREG(attributes.st_mode)) return;
    if ((attributes.st_mode & (S_IRWXG | S_IRWXO)) == 0) return;
    output.warning("Other users of this machine may read the password file " + file + ". chmod 600 keeps it to you.");
}

std::string passwordFromFile(const std::string& file, Output& output) {
    std::optional<std::string> text;
    try {
        text = readFile(file);
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, "Cannot read the password file " + describe(error) + ".");
    }
    if (!text) throw CommandError(ExitCode::failed, "The password file " + file + " does not exist.");
    if (text->empty()) {
        throw CommandError(
            ExitCode::failed, "The password file " + file + " is empty. The password is its first line.");
    }
    warnWhenOpenToOthers(file, output);
    return firstLine(*text);
}

} // namespace

std::string firstLine(std::string_view text) {
    auto line = text.substr(0, text.find('\n'));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return std::string(line);
}

std::optional<std::string> givenPassword(const Surroundings& around) {
    const auto& options = around.options;
    if (!options.passwordFile.empty()) return passwordFromFile(options.passwordFile, around.output);
    if (!options.passwordCommand.empty()) return passwordFromCommand(options.passwordCommand, around.interrupt);
    return std::nullopt;
}

std::string readStoredPassword(const Uuid& id) {
    try {
        return PasswordStore::read(id);
    } catch (const SyncError& error) {
        throw SyncError(
            std::string(error.what()) + " Give the password with --password-file or --password-command instead.");
    }
}

std::string passwordFor(const Profile& profile, const Surroundings& around) {
    if (auto given = givenPassword(around)) return *std::move(given);
    // On a thread of its own: only so does an interrupt end the wait for a person.
    MainQueue queue;
    const auto interruptible = around.interrupt.during([&queue] { queue.quit(); });
    std::optional<PasswordCalls::Result> result;
    PasswordCalls calls(queue);
    calls.ask(
        [id = profile.id] { return readStoredPassword(id); },
        [&result](PasswordCalls::Result read) { result = std::move(read); });
    queue.runUntil([&result] { return result.has_value(); });
    if (!result) throw Cancelled();
    if (result->failure) {
        throw CommandError(ExitCode::failed, "No password for " + inQuotes(profile.name) + ": " + *result->failure);
    }
    return std::move(result->password);
}

} // namespace zembrastel::cli
