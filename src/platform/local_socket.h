// Lines of text between programs of one user on this machine, through a socket file in a folder of that user.
//
// The folder's path can have any length. Only the user can connect: the file has mode 0600, and both sides ask the
// system for the other's user. Clients are not trusted beyond that: unread and unsent data is limited, and no client
// can delay another.
#pragma once

#include "platform/descriptor.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace zembrastel {

// Serves from construction on, with a thread of its own.
class LocalServer {
public:
    using Client = std::uint64_t; // no number is used twice

    struct Limits {
        // A further client replaces the first that has not sent a line yet. If all have, it is disconnected.
        std::size_t clients = 16;
        std::size_t line = std::size_t{4} << 20U; // bytes; a client that sends more is disconnected
        // Bytes that a client has not read. A line beyond them disconnects it.
        std::size_t unread = std::size_t{1} << 20U;
    };

    // Called on the server's thread; must not block or throw.
    struct Callbacks {
        // A line without its line feed. The client's next line is read after ready().
        std::function<void(Client client, std::string line)> received;
        std::function<void(Client client)> gone = [](Client) {};
    };

    // The folder must exist, and the caller must hold its lock: a socket of that name is replaced. Throws
    // std::system_error, also if the file system has no sockets.
    LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called);
    LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called, Limits chosen);
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;
    // Disconnects all clients and removes the socket. No callback runs afterwards.
    ~LocalServer();

    // Sends the line as soon as the client reads; does nothing if it has disconnected. Any thread.
    void send(Client client, std::string_view line);

    // Reads the client's next line. Any thread.
    void ready(Client client);

private:
    struct Connection {
        Descriptor socket;
        std::string input;
        std::string output;
        bool answering = false; // its line was passed to received(), and ready() was not called
        bool known = false;     // has sent a line
        bool ended = false;
    };

    void serve();
    [[nodiscard]] bool waitForEvents();
    void accept();
    void makeRoom();
    void exchange(Connection& connection) const;
    static void read(Connection& connection, std::size_t most);
    static void write(Connection& connection);
    void handOver();
    void wake() const;

    const Callbacks callbacks;
    const Limits limits;
    Descriptor home; // the folder, while the socket is in it
    std::string fileName;
    Descriptor listener;
    Descriptor awakening; // an eventfd
    std::mutex mutex;     // guards what follows
    std::map<Client, Connection> connections;
    Client latest = 0;
    bool ending = false;
    bool exhausted = false; // no descriptor was free for a new client: accepting pauses for a moment
    std::thread thread;
};

// A client's end. One thread, except for end().
class LocalConnection {
public:
    // nullopt if no process serves there, or another user's does.
    [[nodiscard]] static std::optional<LocalConnection> open(
        const std::filesystem::path& folder, const std::string& name);

    // False if the other side has disconnected, or does not accept the line within five seconds.
    [[nodiscard]] bool send(std::string_view line);

    // The next line without its line feed. nullopt if the other side has closed, after end(), or after `atMost`.
    [[nodiscard]] std::optional<std::string> readLine(std::optional<std::chrono::milliseconds> atMost = std::nullopt);

    // Ends the present and every later readLine(). Any thread.
    void end() const;

    // True after readLine() reached the end of the connection.
    [[nodiscard]] bool isOver() const { return over; }

    // The process that created the other side's socket; nullopt if the system does not report it.
    [[nodiscard]] std::optional<int> process() const;

private:
    explicit LocalConnection(Descriptor connected) : socket(std::move(connected)) {}

    Descriptor socket;
    std::string input;
    std::size_t searched = 0; // bytes of the input without a line feed
    bool over = false;
};

} // namespace zembrastel
