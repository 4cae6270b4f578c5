#include "platform/instance_lock.h"

#include "platform/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace zembrastel {

std::optional<InstanceLock> InstanceLock::acquire(const std::filesystem::path& folder) {
    const auto path = folder / "lock";
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file) throwFileError("open", path);
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) return std::nullopt;
        if (errno != EINTR) throwFileError("flock", path);
    }
    return InstanceLock(std::move(file));
}

} // namespace zembrastel
