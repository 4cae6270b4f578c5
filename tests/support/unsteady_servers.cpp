#include "support/unsteady_servers.h"

#include "platform/clock.h"

#include <random>

namespace fs = std::filesystem;

namespace zembrastel::testing {

namespace {

std::string nameOf(std::size_t place) { return "place " + std::to_string(place); }

} // namespace

UnsteadyServers::UnsteadyServers(const std::vector<FtpServer::Kind>& kinds, std::size_t places, std::uint64_t number)
    : seed(number) {
    for (const auto kind : kinds) {
        const auto& server = *servers.emplace_back(std::make_unique<FtpServer>(kind));
        profiles.push_back(profileFor(server, "", server.remoteFolder()));
    }
    for (std::size_t place = 0; place < places; ++place) fs::create_directory(folder(place));
    for (const auto& server : servers) server->handOver();
}

void UnsteadyServers::steady() {
    weather.request_stop();
    if (weather.joinable()) weather.join();
}

void UnsteadyServers::unsteady(std::chrono::milliseconds up, std::chrono::milliseconds down) {
    weather = std::jthread([this, up, down](const std::stop_token& stop) { disturb(stop, up, down); });
}

void UnsteadyServers::disturb(
    const std::stop_token& stop, std::chrono::milliseconds up, std::chrono::milliseconds down) {
    std::mt19937_64 random(seed++);
    const auto upTo = [&random](auto most) {
        return std::chrono::milliseconds(std::uniform_int_distribution<std::int64_t>(0, most.count())(random));
    };
    while (systemClock().sleep(stop, upTo(up))) {
        FtpServer& server = *servers[random() % servers.size()];
        server.stop();
        ++stopped;
        (void)systemClock().sleep(stop, upTo(down));
        server.restart();
    }
}

Profile UnsteadyServers::profile(std::size_t place, const fs::path& localFolder) const {
    Profile chosen = profiles[place % servers.size()];
    chosen.id = Uuid::random();
    chosen.name = nameOf(place);
    chosen.localFolder = localFolder;
    chosen.remoteFolder += (chosen.remoteFolder.ends_with('/') ? "" : "/") + nameOf(place);
    return chosen;
}

fs::path UnsteadyServers::folder(std::size_t place) const {
    return servers[place % servers.size()]->root() / nameOf(place);
}

} // namespace zembrastel::testing
