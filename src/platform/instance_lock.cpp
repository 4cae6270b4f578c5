#include "platform/instance_lock.h"

#include "platform/files.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace zembrastel {
namespace {

// Equal for the same folder, however its path is written.
std::string nameOfPlace(const std::filesystem::path& folder) {
    const auto real = std::filesystem::canonical(folder);
    struct stat parent {};
    if (::stat(real.parent_path().c_str(), &parent) != 0) throwFileError("stat", real.parent_path());
    // The name may be too long for a socket, so its FNV-1a hash is used.
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : real.filename().string()) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    return "zembrastel-state-" + std::to_string(::geteuid()) + '-' + std::to_string(parent.st_dev) + '-'
           + std::to_string(parent.st_ino) + '-' + std::to_string(hash);
}

bool isOwnUsers(const Descriptor& connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

// An abstract socket, whose name the kernel gives to one program at a time. nullopt if another program of this user has
// it. It supplements the lock: if it fails for another reason, the descriptor is empty and the lock alone must do.
std::optional<Descriptor> claim(const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(&address.sun_path[1], name.data(), name.size()); // a leading NUL makes it abstract
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    constexpr int kind = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;
    Descriptor claimed(::socket(AF_UNIX, kind, 0));
    if (claimed && ::bind(claimed.get(), generic, size) == 0 && ::listen(claimed.get(), SOMAXCONN) == 0) return claimed;
    if (errno != EADDRINUSE) return Descriptor();
    const Descriptor connection(::socket(AF_UNIX, kind, 0));
    const bool answered = connection && ::connect(connection.get(), generic, size) == 0;
    if (answered && isOwnUsers(connection)) return std::nullopt;
    return Descriptor();
}

} // namespace

std::optional<InstanceLock> InstanceLock::acquire(const std::filesystem::path& folder) {
    const auto path = folder / "lock";
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file) throwFileError("open", path);
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) return std::nullopt;
        if (errno != EINTR) throwFileError("flock", path);
    }
    // The umask may have left it unreadable for the next run. File systems without modes need no change.
    (void)::fchmod(file.get(), S_IRUSR | S_IWUSR);
    auto place = claim(nameOfPlace(folder));
    if (!place) return std::nullopt;
    return InstanceLock(std::move(*place), std::move(file));
}

} // namespace zembrastel
