// A fixture whose profile publishes to a folder of its own on the test server. A colleague works on that folder too,
// with a local folder and a connection of her own.
//
// One thread, as CheckFixture. The colleague's server work blocks, and throws if it fails.
#pragma once

#include "checks/check_fixture.h"
#include "transport/ftp_transport.h"

namespace zembrastel {

struct TestServer {
    static constexpr const char* username = "web";
    static constexpr const char* password = "s3cret"; // of a server for tests alone: no secret

    std::int64_t port;
    std::string remoteFolder = "zembrastel-checks-" + Uuid::random().text(); // of this run alone, in the login folder
};

class ServerFixture : public CheckFixture {
public:
    // Makes the remote folder, with nothing in it that concerns the profile.
    explicit ServerFixture(const TestServer& server);

    // Makes or replaces a file on the server.
    void colleagueUploads(const std::string& path, const std::string& text) const;

    // Replaces a file on the server, again and again until its date differs by more than the precision of the
    // comparison: up to two seconds.
    void colleagueEdits(const std::string& path, const std::string& text) const;

    [[nodiscard]] std::string onServer(const std::string& path) const { return colleague.run(path, false, {}); }

    // Does the program's work until it waits for edits or for the user. Throws if it is in another phase then.
    void requirePhase(Phase phase);

    [[nodiscard]] const ProfileStatus& status() const { return program().status(profile.id); }

private:
    FTPTransport colleague;
};

} // namespace zembrastel
