// The executable with a real server on a loopback port.
#pragma once

#include "cli_run.h"
#include "support/ftp_server.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <optional>

namespace zembrastel::testing {

// A local folder "site", and a profile "My website" for it. Every command gets its password.
class CliWithServer : public ::testing::Test {
protected:
    static constexpr std::chrono::seconds limit{30};

    void SetUp() override {
        if (const auto reason = FtpServer::unavailable(FtpServer::Kind::proftpd, FtpServer::Tls::none)) {
            GTEST_SKIP() << *reason;
        }
        server.emplace(FtpServer::Kind::proftpd);
        serverSite = server->root() / "site";
        std::filesystem::create_directory(serverSite);
        server->handOver();
        writeTree(site, {{"index.html", "hello"}, {"images/a.svg", "<svg/>"}});
        place.savePassword(server->password());
        saveProfile(*server, server->remoteFolder("site"));
    }

    void saveProfile(const FtpServer& target, const std::string& remoteFolder) const {
        Profile profile = profileFor(target, site, remoteFolder);
        profile.name = "My website";
        place.saveProfile(profile);
    }

    // Runs a command for the profile: "push --all".
    CliResult expect(
        int status, const std::string& command, const Texts& texts = {},
        const std::source_location& where = std::source_location::current()) const {
        const auto end = command.find(' ');
        const std::string options = end == std::string::npos ? "" : command.substr(end);
        return place.expect(status, command.substr(0, end) + " 'My website'" + options, texts, where);
    }

    [[nodiscard]] Program startWatch() const { return place.start("watch 'My website' --json"); }

    // Everything printed until a line contains `words`, that line included.
    static std::string readUntil(Program& program, const std::string& words) {
        std::string printed;
        while (printed.find(words) == std::string::npos) printed += program.readLine(limit) + "\n";
        return printed;
    }

    static std::string readUntilWatching(Program& program) { return readUntil(program, R"("title":"Watching")"); }

    // A program that watches ends without failure.
    static void end(Program& program, int signal = SIGTERM) {
        ::kill(program.pid(), signal);
        EXPECT_EQ(program.wait(), 0);
    }

    // As if another person had changed the file on the server since.
    void changeOnServer(const std::string& path, std::string_view text, std::chrono::seconds later) {
        server->put("site/" + path, text);
        touch(serverSite / path, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) + later);
    }

    CliPlace place;
    std::filesystem::path site = place.path("site");
    std::filesystem::path serverSite;
    std::optional<FtpServer> server;
};

} // namespace zembrastel::testing
