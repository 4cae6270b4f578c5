#include "platform/local_socket.h"

#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <semaphore>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto limit = 20s;

class LocalSocket : public ::testing::Test {
protected:
    // Answers every line with itself; "pile up" with more than anybody fetches.
    void serve(LocalServer::Limits limits = {}) {
        const auto received = [this](LocalServer::Client client, const std::string& line) {
            for (int count = line == "pile up" ? 64 : 1; count > 0; --count) {
                server->send(client, line == "pile up" ? std::string(64UL << 10U, 'x') : line);
            }
            server->ready(client);
        };
        const auto left = [this](LocalServer::Client) { gone.release(); };
        server.emplace(place, "socket", LocalServer::Callbacks{.received = received, .gone = left}, limits);
    }

    [[nodiscard]] LocalConnection connect() const { return LocalConnection::open(place, "socket").value(); }

    static std::optional<std::string> answer(LocalConnection& connection, const std::string& line) {
        return connection.send(line) ? connection.readLine(limit) : std::nullopt;
    }

    testing::TemporaryFolder folder;
    fs::path place = folder.path();
    std::counting_semaphore<> gone{0};
    std::optional<LocalServer> server;
};

TEST_F(LocalSocket, LongPathIsServedToItsOwnerOnly) {
    place = folder / std::string(100, 'a') / std::string(100, 'b');
    fs::create_directories(place);
    serve();
    EXPECT_EQ(fs::status(place / "socket").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    auto client = connect();
    EXPECT_EQ(answer(client, "one"), "one");
    EXPECT_EQ(answer(client, "two"), "two");
    server.reset();
    EXPECT_EQ(client.readLine(limit), std::nullopt);
    EXPECT_FALSE(fs::exists(place / "socket"));
}

TEST_F(LocalSocket, SocketOfAKilledServerIsReplaced) {
    serve();
    fs::rename(place / "socket", place / "kept");
    server.reset();
    fs::rename(place / "kept", place / "socket");
    EXPECT_FALSE(LocalConnection::open(place, "socket"));
    serve();
    auto client = connect();
    EXPECT_EQ(answer(client, "served"), "served");
}

TEST_F(LocalSocket, ClientThatNeverReadsDelaysNoOther) {
    serve({.unread = 64UL << 10U});
    auto deaf = connect();
    ASSERT_TRUE(deaf.send("pile up"));
    gone.acquire(); // of four MiB it can have left no more than the limit and what the system holds
    auto other = connect();
    EXPECT_EQ(answer(other, "served"), "served");
}

TEST_F(LocalSocket, EndlessLineIsRefused) {
    serve({.line = 1UL << 20U});
    auto endless = connect();
    std::ignore = endless.send(std::string(2UL << 20U, 'x')); // may break off in the middle
    gone.acquire();
    EXPECT_EQ(endless.readLine(limit), std::nullopt);
    auto fitting = connect();
    const std::string large(1000UL << 10U, 'x');
    EXPECT_EQ(answer(fitting, large), large);
}

TEST_F(LocalSocket, HalfALineDelaysNoOtherClient) {
    serve();
    Descriptor half(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (place / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::connect(half.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::send(half.get(), "ha", 2, MSG_NOSIGNAL), 2);
    auto other = connect();
    EXPECT_EQ(answer(other, "served"), "served");
    half.close();
    gone.acquire();
    EXPECT_EQ(answer(other, "still"), "still");
}

TEST_F(LocalSocket, SilentClientsKeepNoOtherOut) {
    serve({.clients = 3});
    auto known = connect();
    EXPECT_EQ(answer(known, "one"), "one");
    std::vector<LocalConnection> silent;
    for (int count = 0; count < 50; ++count) silent.push_back(connect());
    EXPECT_EQ(answer(known, "two"), "two");
    auto late = connect();
    EXPECT_EQ(answer(late, "served"), "served");
}

TEST_F(LocalSocket, EndedConnectionReturnsFromItsRead) {
    serve();
    auto client = connect();
    client.end();
    EXPECT_EQ(client.readLine(), std::nullopt);
}

} // namespace
} // namespace zembrastel
