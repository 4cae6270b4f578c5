// The executable with a real server on a loopback port.
#pragma once

#include "cli_run.h"
#include "support/ftp_server.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <optional>

namespace zembrastel::testing {

// A local folder "site", and a profile "My website" for it.
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

    [[nodiscard]] CliPlace::Arguments withPassword(CliPlace::Arguments arguments) const {
        arguments.insert(arguments.end(), {"--password-file", place.passwordFile().string()});
        return arguments;
    }

    [[nodiscard]] CliResult run(const CliPlace::Arguments& arguments) const {
        return place.run(withPassword(arguments));
    }

    [[nodiscard]] Program startWatch() const { return place.start(withPassword({"watch", "My website", "--json"})); }

    // Everything told until a line contains `words`, that line included.
    static std::string readUntil(Program& program, const std::string& words) {
        std::string told;
        while (told.find(words) == std::string::npos) told += program.readLine(limit) + "\n";
        return told;
    }

    static std::string readUntilWatching(Program& program) { return readUntil(program, R"("title":"Watching")"); }

    // For a program that watches that is no failure.
    static void end(Program& program, int signal = SIGTERM) {
        ::kill(program.pid(), signal);
        EXPECT_EQ(program.wait(), 0);
    }

    // As if somebody else had changed the file on the server since.
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
