#include "platform/standard_paths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace zembrastel {
namespace {

// A relative path in these XDG variables is ignored, as other desktop programs do.
std::filesystem::path absoluteFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    std::filesystem::path path(value == nullptr ? "" : value);
    return path.is_absolute() ? path : std::filesystem::path();
}

} // namespace

std::filesystem::path homeFolder() {
    if (auto home = absoluteFromEnvironment("HOME"); !home.empty()) return home;
    const passwd* user = ::getpwuid(::geteuid());
    return user == nullptr ? "/" : user->pw_dir;
}

std::filesystem::path dataFolder() {
    if (auto folder = absoluteFromEnvironment("XDG_DATA_HOME"); !folder.empty()) return folder;
    return homeFolder() / ".local" / "share";
}

std::filesystem::path configFolder() {
    if (auto folder = absoluteFromEnvironment("XDG_CONFIG_HOME"); !folder.empty()) return folder;
    return homeFolder() / ".config";
}

std::filesystem::path temporaryFolder() {
    const auto folder = absoluteFromEnvironment("TMPDIR");
    return folder.empty() ? std::filesystem::path("/tmp") : folder;
}

} // namespace zembrastel
