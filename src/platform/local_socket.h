// Lines of text between programs of one user on this machine, through a socket file in a folder of that user's.
//
// A path of any length will do for the folder. Only the user can connect: the file has mode 0600, and both sides ask
// the system whose process the other is. Whoever connects is not trusted beyond that: what one side sends and does not
// fetch is limited, and none can hold the other up.
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
        // One more replaces the first that has not sent a line yet; without such a one it is turned away.
        std::size_t clients = 16;
        std::size_t line = std::size_t{4} << 20U; // bytes; a client that sends more is disconnected
        // Bytes that a client has not fetched; when a line is sent beyond them, it is disconnected.
        std::size_t unread = std::size_t{1} << 20U;
    };

    // Called on the server's thread; must not block or throw.
    struct Callbacks {
        // A line without its end. The client's next one is read after ready().
        std::function<void(Client client, std::string line)> received;
        std::function<void(Client client)> gone = [](Client) {};
    };

    // The folder must exist, and the caller have it to itself: a socket of that name is replaced. Throws
    // std::system_error, also where the file system has no sockets.
    LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called);
    LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called, Limits chosen);
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;
    // Disconnects everybody and removes the socket. No callback runs any more.
    ~LocalServer();

    // Has the client read the line as soon as it can; to one that has gone, nothing happens. Any thread.
    void send(Client client, std::string_view line);

    // Has the client's next line read. Any thread.
    void ready(Client client);

private:
    struct Connection {
        Descriptor socket;
        std::string input;
        std::string output;
        bool answering = false; // its line was handed over, and ready() was not called
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
    Descriptor home; // the folder, for as long as the socket is in it
    std::string fileName;
    Descriptor listener;
    Descriptor awakening; // an eventfd
    std::mutex mutex;     // guards what follows
    std::map<Client, Connection> connections;
    Client latest = 0;
    bool ending = false;
    bool exhausted = false; // there was no descriptor for a new client: none is taken for a moment
    std::thread thread;
};

// A client's end. One thread, but for end().
class LocalConnection {
public:
    // Nothing when nobody serves there, or somebody else's process does.
    [[nodiscard]] static std::optional<LocalConnection> open(
        const std::filesystem::path& folder, const std::string& name);

    // False when the other side has gone or does not take it within some seconds.
    [[nodiscard]] bool send(std::string_view line);

    // The next line without its end; nothing when the other side has closed, end() was called, or the time is over.
    [[nodiscard]] std::optional<std::string> readLine(std::optional<std::chrono::milliseconds> atMost = std::nullopt);

    // Ends readLine() for good, now or when it is next called. Any thread.
    void end() const;

    // Whether readLine() met the end: nothing more will come.
    [[nodiscard]] bool isOver() const { return over; }

    // The process that made the other side's socket; nothing where the system does not tell.
    [[nodiscard]] std::optional<int> process() const;

private:
    explicit LocalConnection(Descriptor connected) : socket(std::move(connected)) {}

    Descriptor socket;
    std::string input;
    std::size_t searched = 0; // bytes of the input without a line feed
    bool over = false;
};

} // namespace zembrastel
