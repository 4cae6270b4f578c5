#include "transport/listing/folder_loop.h"

#include <algorithm>

namespace zembrastel {
namespace {

// Servers that resolve a whole path at once refuse a path with more than 40 links.
constexpr std::size_t levelsRepeated = 32;

bool listAlike(const std::vector<RemoteEntry>& a, const std::vector<RemoteEntry>& b) {
    return std::ranges::equal(
        a, b, [](const RemoteEntry& one, const RemoteEntry& other) { return one == other && one.size == other.size; });
}

} // namespace

std::string repeatedFar(std::string_view above, std::string_view below) {
    const auto way = below.substr(above.empty() ? 0 : above.size() + 1);
    const auto levels = static_cast<std::size_t>(std::ranges::count(way, '/')) + 1;
    std::string far(below);
    for (auto left = std::max<std::size_t>(levelsRepeated / levels, 1); left != 0; --left) far.append("/").append(way);
    return far;
}

bool leadsBack(const ListedFolder& folder, std::span<const ListedFolder* const> above, const ListIfThere& list) {
    if (folder.entries.empty()) return false;
    return std::any_of(above.rbegin(), above.rend(), [&](const ListedFolder* ancestor) {
        if (!listAlike(ancestor->entries, folder.entries)) return false;
        const auto far = list(repeatedFar(ancestor->path, folder.path));
        return far && listAlike(*far, folder.entries);
    });
}

} // namespace zembrastel
