#include "app/remote_review.h"

#include <ranges>

namespace zembrastel {

PathSet pathsOf(const std::vector<RemoteChange>& changes) {
    PathSet paths;
    for (const auto& change : changes) paths.insert(change.path);
    return paths;
}

std::string listedPaths(const PathSet& paths) {
    constexpr std::size_t max = 10;
    std::string text;
    for (const auto& path : paths | std::views::take(max)) text += (text.empty() ? "" : ", ") + path;
    return paths.size() > max ? text + " and " + std::to_string(paths.size() - max) + " more" : text;
}

} // namespace zembrastel
