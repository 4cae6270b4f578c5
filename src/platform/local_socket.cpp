#include "platform/local_socket.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <system_error>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::chrono::seconds patience{5}; // how long a client waits for a server that does not accept its line
constexpr std::chrono::milliseconds exhaustedWait{500};
constexpr std::size_t pieceSize = std::size_t{64} << 10U;

[[noreturn]] void fail(const char* operation) {
    throw std::system_error(errno, std::system_category(), std::string("Cannot make a local socket: ") + operation);
}

Descriptor openFolder(const std::filesystem::path& folder) {
    return Descriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Through the open folder: an address has room for 107 bytes, too few for many paths.
sockaddr_un addressIn(const Descriptor& folder, const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

Descriptor makeSocket(int flags) { return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0)); }

std::optional<ucred> otherSide(const Descriptor& socket) {
    ucred other{};
    socklen_t size = sizeof other;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &other, &size) != 0) return std::nullopt;
    return other;
}

bool isOwnUsers(const Descriptor& socket) {
    const auto other = otherSide(socket);
    return other && other->uid == ::geteuid();
}

bool isPassing(int error) { return error == EAGAIN || error == EINTR; }

} // namespace

LocalServer::LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called)
    : LocalServer(folder, name, std::move(called), Limits()) {}

LocalServer::LocalServer(const std::filesystem::path& folder, const std::string& name, Callbacks called, Limits chosen)
    : callbacks(std::move(called)), limits(chosen), home(openFolder(folder)), fileName(name),
      listener(makeSocket(SOCK_NONBLOCK)), awakening(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!home) fail("open the folder");
    if (!listener || !awakening) fail("socket");
    // The file gets the socket's mode when it is created.
    if (::fchmod(listener.get(), S_IRUSR | S_IWUSR) != 0) fail("fchmod");
    if (::unlinkat(home.get(), fileName.c_str(), 0) != 0 && errno != ENOENT) fail("unlink");
    const sockaddr_un address = addressIn(home, fileName);
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) fail("bind");
    if (::listen(listener.get(), SOMAXCONN) != 0) fail("listen");
    thread = std::thread([this] { serve(); });
}

LocalServer::~LocalServer() {
    {
        const std::lock_guard lock(mutex);
        ending = true;
    }
    wake();
    thread.join();
    ::unlinkat(home.get(), fileName.c_str(), 0);
}

void LocalServer::wake() const { ::eventfd_write(awakening.get(), 1); }

void LocalServer::send(Client client, std::string_view line) {
    {
        const std::lock_guard lock(mutex);
        const auto found = connections.find(client);
        if (found == connections.end() || found->second.ended) return;
        Connection& connection = found->second;
        if (connection.output.size() > limits.unread) {
            connection.ended = true;
        } else {
            connection.output.append(line).push_back('\n');
        }
    }
    wake();
}

void LocalServer::ready(Client client) {
    {
        const std::lock_guard lock(mutex);
        const auto found = connections.find(client);
        if (found == connections.end()) return;
        found->second.answering = false;
    }
    wake();
}

void LocalServer::serve() {
    while (waitForEvents()) handOver();
}

// False at the end. Afterwards every connection was read and written as far as possible without waiting.
bool LocalServer::waitForEvents() {
    std::vector<pollfd> waiting;
    std::vector<Client> clients;
    {
        const std::lock_guard lock(mutex);
        const auto watch = [&waiting](const Descriptor& descriptor, int events) {
            waiting.push_back({.fd = descriptor.get(), .events = static_cast<short>(events), .revents = 0});
        };
        watch(awakening, POLLIN);
        watch(listener, exhausted ? 0 : POLLIN);
        for (const auto& [client, connection] : connections) {
            watch(
                connection.socket,
                (connection.answering ? POLLRDHUP : POLLIN | POLLRDHUP) | (connection.output.empty() ? 0 : POLLOUT));
            clients.push_back(client);
        }
    }
    const int limit = exhausted ? static_cast<int>(exhaustedWait.count()) : -1;
    if (::poll(waiting.data(), waiting.size(), limit) < 0 && errno != EINTR) return false;
    eventfd_t ignored = 0;
    ::eventfd_read(awakening.get(), &ignored);

    const std::lock_guard lock(mutex);
    exhausted = false;
    for (const Client client : clients) exchange(connections.at(client));
    if (ending) return false;
    if ((waiting[1].revents & POLLIN) != 0) accept();
    return true;
}

void LocalServer::exchange(Connection& connection) const {
    if (!connection.answering) read(connection, limits.line);
    write(connection);
    if (!connection.answering) return;
    // It is not read at the moment, so whether it still exists must be queried.
    pollfd state{.fd = connection.socket.get(), .events = POLLRDHUP, .revents = 0};
    if (::poll(&state, 1, 0) > 0) connection.ended = true;
}

void LocalServer::read(Connection& connection, std::size_t most) {
    std::array<char, pieceSize> piece{};
    while (!connection.ended && connection.input.find('\n') == std::string::npos) {
        const ssize_t size = ::recv(connection.socket.get(), piece.data(), piece.size(), MSG_DONTWAIT);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0 && errno == EAGAIN) return;
        if (size <= 0) {
            connection.ended = true;
            return;
        }
        connection.input.append(piece.data(), static_cast<std::size_t>(size));
        connection.ended = connection.input.size() > most;
    }
}

void LocalServer::write(Connection& connection) {
    std::string_view rest = connection.output;
    while (!rest.empty() && !connection.ended) {
        const ssize_t size = ::send(connection.socket.get(), rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) {
            connection.ended = connection.ended || errno != EAGAIN;
            break;
        }
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
    connection.output.erase(0, connection.output.size() - rest.size());
}

void LocalServer::accept() {
    Descriptor accepted(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!accepted) {
        exhausted = !isPassing(errno) && errno != ECONNABORTED;
        return;
    }
    if (!isOwnUsers(accepted)) return;
    if (connections.size() >= limits.clients) makeRoom();
    if (connections.size() < limits.clients) connections[++latest].socket = std::move(accepted);
}

void LocalServer::makeRoom() {
    const auto stranger = std::ranges::find_if(connections, [](const auto& client) { return !client.second.known; });
    if (stranger != connections.end()) connections.erase(stranger); // no callback has seen it
}

// Calls back without the lock, since callbacks may take time.
void LocalServer::handOver() {
    std::vector<std::pair<Client, std::string>> lines;
    std::vector<Client> gone;
    {
        const std::lock_guard lock(mutex);
        for (auto& [client, connection] : connections) {
            const auto end = connection.input.find('\n');
            if (!connection.answering && end != std::string::npos) {
                lines.emplace_back(client, connection.input.substr(0, end));
                connection.input.erase(0, end + 1);
                connection.answering = true;
                connection.known = true;
            } else if (connection.ended) {
                gone.push_back(client);
            }
        }
        for (const Client client : gone) connections.erase(client);
    }
    for (auto& [client, line] : lines) callbacks.received(client, std::move(line));
    for (const Client client : gone) callbacks.gone(client);
}

std::optional<LocalConnection> LocalConnection::open(const std::filesystem::path& folder, const std::string& name) {
    const Descriptor home = openFolder(folder);
    Descriptor socket = makeSocket(0);
    if (!home || !socket) return std::nullopt;
    const timeval limit{.tv_sec = patience.count(), .tv_usec = 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    const sockaddr_un address = addressIn(home, name);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return std::nullopt;
    if (!isOwnUsers(socket)) return std::nullopt;
    return LocalConnection(std::move(socket));
}

bool LocalConnection::send(std::string_view line) {
    const std::string bytes = std::string(line) + '\n';
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t size = ::send(socket.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return false;
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

std::optional<std::string> LocalConnection::readLine(std::optional<std::chrono::milliseconds> atMost) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = atMost ? Clock::now() + *atMost : Clock::time_point::max();
    std::array<char, pieceSize> piece{};
    while (true) {
        const auto end = input.find('\n', searched);
        if (end != std::string::npos) {
            std::string line = input.substr(0, end);
            input.erase(0, end + 1);
            searched = 0;
            return line;
        }
        searched = input.size();
        const auto now = Clock::now();
        if (now >= deadline) return std::nullopt;
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
        const int limit = atMost ? static_cast<int>(rest.count()) : -1;
        pollfd waiting{.fd = socket.get(), .events = POLLIN, .revents = 0};
        const int ready = ::poll(&waiting, 1, limit);
        over = ready < 0 && errno != EINTR;
        if (over) return std::nullopt;
        if (ready <= 0) continue;
        const ssize_t size = ::recv(socket.get(), piece.data(), piece.size(), MSG_DONTWAIT);
        if (size < 0 && isPassing(errno)) continue;
        over = size <= 0;
        if (over) return std::nullopt;
        input.append(piece.data(), static_cast<std::size_t>(size));
    }
}

std::optional<int> LocalConnection::process() const {
    const auto other = otherSide(socket);
    return other && other->pid > 0 ? std::optional(static_cast<int>(other->pid)) : std::nullopt;
}

void LocalConnection::end() const { ::shutdown(socket.get(), SHUT_RDWR); }

} // namespace zembrastel
