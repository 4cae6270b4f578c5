// A relay between a client and an FTP server of a test: it holds bytes back like a long line, and ends data connections
// early like a bad one. It forwards byte for byte, so TLS works through it; it listens at 127.0.0.2.
//
// A process of its own, which ends with the object. One thread at a time. Make it first, start the server with its
// passive ports, and then connect the two:
//
//     Relay relay;
//     FtpServer server(kind, {.passive = relay.passivePorts()});
//     relay.connectTo(server);
//     Profile profile = relay.profileFor(server, local, server.remoteFolder());
//
// Failures are thrown as std::runtime_error.
#pragma once

#include "support/ftp_server.h"
#include "support/program.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace zembrastel::testing {

class Relay {
public:
    enum class Direction { toServer, toClient };

    // Ends data connections early. When more than `bytes` come in the direction, it forwards that many, then closes
    // both sides with a plain FIN and throws away what still comes. With TLS the handshake counts among the bytes.
    //
    // Connections with more bytes than that are counted from 1, beginning anew with each order; those from `first` on
    // are cut, `times` of them. A listing or a download is cut toClient, an upload toServer.
    struct Cut {
        Direction direction = Direction::toServer;
        std::size_t bytes = 0;
        std::size_t first = 1;
        std::size_t times = 1;
    };
    static constexpr std::size_t everyTime = 1'000'000;

    // It holds every byte back for half of the round trip. It cannot delay the client's own connecting.
    explicit Relay(std::chrono::milliseconds roundTrip = std::chrono::milliseconds(0));

    [[nodiscard]] PassivePorts passivePorts() const { return passive; }

    void connectTo(const FtpServer& server);

    [[nodiscard]] std::string host() const { return "127.0.0.2"; }
    [[nodiscard]] std::uint16_t port() const { return controlPort; }

    // A profile for the server, which leads through the relay.
    [[nodiscard]] Profile profileFor(
        const FtpServer& server, const std::filesystem::path& localFolder, const std::string& remoteFolder) const;

    // Replaces the order before. It holds for data connections on which no byte has come yet.
    void cut(const Cut& order);

    // From now on no data connection is cut.
    void cutNothing() { cut({.times = 0}); }

    // How many were cut in all.
    [[nodiscard]] std::size_t cuts();

private:
    std::uint16_t readPort();
    std::string obey(const std::string& order);

    Program program;
    std::uint16_t controlPort;
    PassivePorts passive;
};

} // namespace zembrastel::testing
