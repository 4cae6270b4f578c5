#include "cli/session/profile_path.h"

#include "cli/exit_code.h"
#include "cli/session/relative_path.h"
#include "cli/text/presentation.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>

namespace zembrastel::cli {

std::string pathInProfile(const Profile& profile, const std::string& typed) {
    const auto refuse = [&typed, &profile] {
        throw CommandError(
            ExitCode::usage,
            "The path " + inQuotes(typed) + " is not below the local folder " + oneLine(profile.localFolder) + ".");
    };
    std::string path = typed;
    if (typed.starts_with('/') && !relativePath(typed).empty()) {
        const auto inside = std::filesystem::path(typed).lexically_normal().lexically_relative(profile.localFolder);
        path = inside.string();
        if (path.empty()) refuse();
    }
    path = relativePath(path);
    const auto components = splitNonEmpty(path, '/');
    if (std::ranges::find(components, "..") != components.end()) refuse();
    return path;
}

} // namespace zembrastel::cli
