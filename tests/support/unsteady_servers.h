// Real FTP servers that go and come back on their ports at random, as on bad days in a hosting centre.
//
// Made and ended by one thread. While they are unsteady a thread of its own stops and starts them; what stands on their
// disks may be read and changed all the time, by any thread.
#pragma once

#include "support/ftp_server.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace zembrastel::testing {

class UnsteadyServers {
public:
    // They run. Each serves a folder for every place; the seed makes the moments repeatable.
    UnsteadyServers(const std::vector<FtpServer::Kind>& kinds, std::size_t places, std::uint64_t seed);

    // Ends the coming and going; when it returns, all run.
    void steady();

    // From now on one is stopped after a while of at most `up`, for a while of at most `down`, again and again.
    void unsteady(std::chrono::milliseconds up, std::chrono::milliseconds down);

    // How often one was stopped; for the time when they are steady.
    [[nodiscard]] std::size_t stops() const { return stopped; }

    // A profile for a place with this local folder. The places are spread over the servers.
    [[nodiscard]] Profile profile(std::size_t place, const std::filesystem::path& localFolder) const;

    // What the server keeps of a place.
    [[nodiscard]] std::filesystem::path folder(std::size_t place) const;

    [[nodiscard]] std::string password() const { return servers.front()->password(); }

private:
    void disturb(const std::stop_token& stop, std::chrono::milliseconds up, std::chrono::milliseconds down);

    std::vector<std::unique_ptr<FtpServer>> servers;
    std::vector<Profile> profiles; // one a server, so that no server is asked while it starts
    std::uint64_t seed;
    std::size_t stopped = 0;
    std::jthread weather;
};

} // namespace zembrastel::testing
