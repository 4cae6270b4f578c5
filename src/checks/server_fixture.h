// A workplace whose profile goes to a folder of its own on the test server, on which a colleague works too, with a
// folder and a connection of hers.
//
// One thread, as Workplace. All server work of the colleague blocks; what fails is thrown.
#pragma once

#include "checks/workplace.h"
#include "transport/ftp_transport.h"

namespace zembrastel {

struct TestServer {
    static constexpr const char* username = "web";
    static constexpr const char* password = "s3cret"; // of a server for tests alone: no secret

    std::int64_t port;
    std::string remoteFolder = "zembrastel-checks-" + Uuid::random().text(); // of this run alone, in the login folder
};

class Office : public Workplace {
public:
    // The remote folder is there, with nothing that concerns the profile in it.
    explicit Office(const TestServer& server);

    // Makes or replaces a file on the server.
    void colleagueUploads(const std::string& path, const std::string& text) const;

    // Replaces a file on the server, and again until its date has moved by more than what dates are compared to, which
    // takes up to two seconds.
    void colleagueEdits(const std::string& path, const std::string& text) const;

    [[nodiscard]] std::string onServer(const std::string& path) const { return colleague.run(path, false, {}); }

    // Does the program's work until it waits for edits or for the user, and throws when it gets elsewhere.
    void requirePhase(Phase phase);

    [[nodiscard]] const ProfileStatus& status() const { return program().status(profile.id); }

private:
    FTPTransport colleague;
};

} // namespace zembrastel
