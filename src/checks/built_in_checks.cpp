#include "checks/built_in_checks.h"

#include "checks/check.h"
#include "checks/server_fixture.h"
#include "model/error.h"

#include <csignal>
#include <cstdio>
#include <optional>

namespace zembrastel {
namespace {

constexpr int exitInterrupted = 128 + SIGINT;

volatile std::sig_atomic_t interrupted = 0;

// The first Ctrl-C ends the run after the current check, so that temporary folders are removed; a second one at once.
void noteInterrupt(int number) {
    interrupted = 1;
    std::signal(number, SIG_DFL);
}

// Flushed at once, for a user who watches a slow server.
void print(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
}

Checks joined(std::initializer_list<Checks> subjects) {
    Checks all;
    for (const auto& subject : subjects) all.insert(all.end(), subject.begin(), subject.end());
    return all;
}

std::optional<std::string> failureOf(const Check& check) {
    try {
        check.run();
        return std::nullopt;
    } catch (const std::exception& error) {
        return describe(error);
    }
}

// Prints a line for each check, and one with the count. The checks after a failed one still run.
int run(const Checks& checks) {
    std::size_t passed = 0;
    for (const auto& check : checks) {
        const auto failure = failureOf(check);
        if (interrupted != 0) return exitInterrupted;
        if (!failure) ++passed;
        print(failure ? "FAIL  " + std::string(check.name) + ": " + *failure : "ok    " + std::string(check.name));
    }
    print(std::to_string(passed) + " of " + std::to_string(checks.size()) + " checks passed.");
    return passed == checks.size() ? 0 : 1;
}

// Explains how to start a suitable server.
std::string advice(const TestServer& server) {
    const auto port = std::to_string(server.port);
    const std::string user = TestServer::username;
    const std::string password = TestServer::password;
    return "An FTP server without TLS must listen on 127.0.0.1, port " + port + ", and let the user " + user
           + " with the password " + password
           + " write. One way to start it, with the package pyftpdlib:\n    python3 -m pyftpdlib -i 127.0.0.1 -p "
           + port + " -u " + user + " -P " + password + " -w -d FOLDER";
}

} // namespace

int runSelfTest() {
    std::signal(SIGINT, noteInterrupt);
    return run(joined({exclusionChecks(), selectionChecks(), stateChecks(), scanChecks()}));
}

int runIntegrationTest(std::int64_t port) {
    std::signal(SIGINT, noteInterrupt);
    const TestServer server{.port = port};
    print(
        "FTP server: 127.0.0.1, port " + std::to_string(port) + ". What is uploaded stays there, in the folder "
        + server.remoteFolder + ".");
    try {
        return run(joined({reviewChecks(server), browserChecks(server)}));
    } catch (const std::exception& error) {
        print("No check could begin: " + describe(error) + "\n" + advice(server));
        return interrupted != 0 ? exitInterrupted : 1;
    }
}

} // namespace zembrastel
