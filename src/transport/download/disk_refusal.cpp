#include "transport/download/disk_refusal.h"

#include <cerrno>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zembrastel {

std::string whyNotWritten(int file) {
    struct stat attributes {};
    if (::fstat(file, &attributes) != 0 || ::pwrite(file, "", 1, attributes.st_size) == 1) return "";
    return std::system_category().message(errno);
}

} // namespace zembrastel
