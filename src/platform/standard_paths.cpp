#include "platform/standard_paths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace zembrastel {
namespace {

// The conventions have relative paths in these variables ignored.
std::filesystem::path absoluteFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    std::filesystem::path path(value == nullptr ? "" : value);
    return path.is_absolute() ? path : std::filesystem::path();
}

} // namespace

std::filesystem::path dataFolder() {
    if (auto folder = absoluteFromEnvironment("XDG_DATA_HOME"); !folder.empty()) return folder;
    auto home = absoluteFromEnvironment("HOME");
    if (home.empty()) {
        const passwd* user = ::getpwuid(::geteuid());
        home = user == nullptr ? "/" : user->pw_dir;
    }
    return home / ".local" / "share";
}

std::filesystem::path temporaryFolder() {
    const auto folder = absoluteFromEnvironment("TMPDIR");
    return folder.empty() ? std::filesystem::path("/tmp") : folder;
}

} // namespace zembrastel
