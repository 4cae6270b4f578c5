// The real executable, run by a test in a folder of its own: nothing of the user's is read or changed.
#pragma once

#include "cli/text/shell_words.h"
#include "model/saved_state.h"
#include "model/state_store.h"
#include "support/file_tree.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <source_location>
#include <string>
#include <vector>

namespace zembrastel::testing {

using Texts = std::vector<std::string>;

[[nodiscard]] inline ::testing::AssertionResult contains(const std::string& text, const std::string& words) {
    const bool found = text.find(words) != std::string::npos;
    return (found ? ::testing::AssertionSuccess() : ::testing::AssertionFailure()) << '"' << words << "\" in: " << text;
}

// A command line as a user types it.
[[nodiscard]] inline Texts words(const std::string& typed) { return cli::splitWords(typed).value(); }

// One line, and perhaps a second one with the details.
[[nodiscard]] inline bool isOneFailure(const std::string& text) {
    const auto message = text.substr(0, text.find("Details: "));
    const auto details = text.substr(message.size());
    const auto isLine = [](const std::string& part) { return part.find('\n') == part.size() - 1 && part.size() > 1; };
    return isLine(message) && (details.empty() || isLine(details));
}

struct CliResult {
    int status = 0;
    std::string output; // standard output
    std::string errors; // standard error
};

class CliPlace {
public:
    CliPlace() {
        for (const auto& made : {home(), state(), temporary()}) std::filesystem::create_directory(made);
    }

    [[nodiscard]] std::filesystem::path path(const std::string& name) const { return folder / name; }
    [[nodiscard]] std::filesystem::path home() const { return folder / "home"; }
    [[nodiscard]] std::filesystem::path state() const { return folder / "state"; }
    [[nodiscard]] std::filesystem::path temporary() const { return folder / "tmp"; }
    [[nodiscard]] std::filesystem::path stateFile() const { return state() / "profiles.json"; }
    [[nodiscard]] std::filesystem::path passwordFile() const { return folder / "password"; }
    [[nodiscard]] std::string errors() const { return readFile(folder / "errors"); }
    [[nodiscard]] SavedState saved() const { return StateStore(state()).load(); }
    [[nodiscard]] Profile profile() const { return saved().profiles.front(); }

    // In place of all that was saved before.
    void saveProfile(const Profile& profile) const {
        StateStore(state()).save({.profiles = {profile}, .baselines = {}, .remoteDates = {}});
    }

    // Saves the password, and gives it to every command.
    void savePassword(const std::string& text) {
        std::filesystem::remove(passwordFile());
        writeFile(passwordFile(), text + "\n");
        std::filesystem::permissions(passwordFile(), std::filesystem::perms::owner_read);
        password = {"--password-file", passwordFile().string()};
    }

    // Runs to the end, with empty input. `redirections` are the shell's, such as "< file".
    [[nodiscard]] CliResult run(const Texts& arguments, const std::string& redirections = "") const {
        const auto result = runProgram(command(arguments, redirections), environment());
        return {.status = result.status, .output = result.output, .errors = errors()};
    }
    [[nodiscard]] CliResult run(const std::string& typed, const std::string& redirections = "") const {
        return run(words(typed), redirections);
    }

    // Runs a typed command line. Fails the test unless it ends with this status and prints all the texts, and unless a
    // failure without any output is one line, with another one for its details at most.
    CliResult expect(
        int status, const std::string& typed, const Texts& texts = {},
        const std::source_location& where = std::source_location::current()) const {
        const ::testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), typed);
        const auto result = run(typed);
        EXPECT_EQ(result.status, status) << result.output << result.errors;
        for (const auto& text : texts) EXPECT_TRUE(contains(result.output + result.errors, text));
        EXPECT_TRUE(status == 0 || !result.output.empty() || isOneFailure(result.errors)) << result.errors;
        return result;
    }

    // Runs a shell script with an empty secret store of its own in place of none.
    [[nodiscard]] CliResult runInShellWithSecretService(const std::string& script) const {
        const Texts all{
            ZEMBRASTEL_SOURCE_DIR "/tests/support/with_secret_service", "/bin/sh", "-c",
            "exec 2> " + cli::shellQuoted((folder / "errors").string()) + "; " + script};
        const auto result = runProgram(all, environment());
        return {.status = result.status, .output = result.output, .errors = errors()};
    }

    // One command of such a script.
    [[nodiscard]] std::string shellCommand(const std::string& typed) const {
        return cli::shellQuoted(ZEMBRASTEL_CLI) + " --state " + cli::shellQuoted(state().string()) + " " + typed;
    }

    Texts wrapper;   // a command that becomes the program, with its arguments
    Texts variables; // "NAME=value", for the program besides those that keep it apart
    Texts password;  // options for every command

    // Goes on running; its standard error is errors().
    [[nodiscard]] Program start(const Texts& arguments) const { return Program(command(arguments, ""), environment()); }
    [[nodiscard]] Program start(const std::string& typed) const { return start(words(typed)); }

private:
    // The shell becomes the program, so that signals reach it.
    [[nodiscard]] Texts command(const Texts& arguments, const std::string& redirections) const {
        Texts all{"/bin/sh", "-c", "exec \"$@\" 2> \"$0\" " + redirections, (folder / "errors").string()};
        all.insert(all.end(), wrapper.begin(), wrapper.end());
        all.insert(all.end(), {ZEMBRASTEL_CLI, "--state", state().string()});
        all.insert(all.end(), password.begin(), password.end());
        all.insert(all.end(), arguments.begin(), arguments.end());
        return all;
    }

    [[nodiscard]] Texts environment() const {
        Texts all{
            "HOME=" + home().string(),
            "XDG_DATA_HOME=" + home().string(),
            "TMPDIR=" + temporary().string(),
            "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent",
            "TZ=UTC",
            "LC_ALL=C"};
        all.insert(all.end(), variables.begin(), variables.end());
        return all;
    }

    TemporaryFolder folder;
};

} // namespace zembrastel::testing
