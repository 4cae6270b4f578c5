#include "support/relay.h"

#include <stdexcept>

namespace zembrastel::testing {

namespace {

constexpr std::chrono::seconds limit{20};

std::vector<std::string> command(std::chrono::milliseconds roundTrip) {
    const std::chrono::duration<double, std::milli> delay = std::chrono::duration<double, std::milli>(roundTrip) / 2;
    return {
        "/usr/bin/python3", ZEMBRASTEL_SOURCE_DIR "/tests/support/relay.py", "--delay", std::to_string(delay.count())};
}

} // namespace

Relay::Relay(std::chrono::milliseconds roundTrip)
    : program(command(roundTrip)), controlPort(readPort()), passive{.first = readPort(), .last = readPort()} {}

std::uint16_t Relay::readPort() { return static_cast<std::uint16_t>(std::stoi(program.readLine(limit))); }

std::string Relay::obey(const std::string& order) {
    program.writeLine(order);
    return program.readLine(limit);
}

void Relay::connectTo(const FtpServer& server) { obey("server " + std::to_string(server.port())); }

Profile Relay::profileFor(
    const FtpServer& server, const std::filesystem::path& localFolder, const std::string& remoteFolder) const {
    Profile profile = testing::profileFor(server, localFolder, remoteFolder);
    profile.host = host();
    profile.port = port();
    return profile;
}

void Relay::cut(const Cut& order) {
    obey(
        std::string("cut ") + (order.direction == Direction::toServer ? "up " : "down ") + std::to_string(order.bytes)
        + " " + std::to_string(order.first) + " " + std::to_string(order.times));
}

std::size_t Relay::cuts() { return std::stoul(obey("cuts")); }

} // namespace zembrastel::testing
