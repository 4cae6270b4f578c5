#include "transport/listing/alike_names.h"

#include "platform/name_order.h"
#include "platform/text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace zembrastel {
namespace {

template <class Items>
std::vector<std::string_view> sortedNames(const Items& items) {
    std::vector<std::string_view> names;
    names.reserve(items.size());
    for (const auto& item : items) names.push_back(item.name);
    std::ranges::sort(names);
    return names;
}

// The indices of the items with other names than these.
template <class Items>
std::vector<std::size_t> unnamed(const Items& items, const std::vector<std::string_view>& names) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!std::ranges::binary_search(names, items[i].name)) found.push_back(i);
    }
    return found;
}

// Indices by kind and folded name; nullopt if two items share them.
using Folded = std::map<std::pair<bool, std::string>, std::optional<std::size_t>>;

template <class Items>
Folded foldedOnce(const Items& items, const std::vector<std::size_t>& indices) {
    Folded folded;
    for (const auto i : indices) {
        const auto [place, isNew] = folded.try_emplace({items[i].directory, foldedName(items[i].name)}, i);
        if (!isNew) place->second.reset();
    }
    return folded;
}

// The folders of all new or changed paths, and the folders above them.
std::set<std::string, std::less<>> changedFolders(const FileMap& files, const FileMap& before) {
    std::set<std::string, std::less<>> folders;
    files.forEachDifference(before, [&](std::string_view path, const Fingerprint* now, const Fingerprint*) {
        if (now == nullptr) return;
        while (!path.empty()) {
            const auto slash = path.rfind('/');
            path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
            if (folders.contains(path)) return;
            folders.emplace(path);
        }
    });
    return folders;
}

} // namespace

std::vector<LocalItem> localItems(const FileMap& files, std::string_view folder) {
    std::vector<LocalItem> items;
    files.forEachChild(folder, [&items](std::string_view name, bool directory) {
        items.push_back({.name = std::string(name), .directory = directory});
    });
    return items;
}

std::vector<AlikeItems> alikeItems(const std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local) {
    const auto onlyLocal = unnamed(local, sortedNames(entries));
    if (onlyLocal.empty()) return {};
    const auto onlyRemote = unnamed(entries, sortedNames(local));
    if (onlyRemote.empty()) return {};
    std::vector<AlikeItems> found;
    const auto localNames = foldedOnce(local, onlyLocal);
    for (const auto& [key, entry] : foldedOnce(entries, onlyRemote)) {
        const auto item = localNames.find(key);
        if (entry && item != localNames.end() && item->second) {
            found.push_back({.entry = *entry, .local = local[*item->second].name});
        }
    }
    return found;
}

std::vector<std::string> alikeNameLines(const FileMap& files, const FileMap& before) {
    std::vector<std::string> lines;
    for (const auto& folder : changedFolders(files, before)) {
        std::vector<std::pair<std::string, std::string>> names; // folded, and unchanged
        files.forEachChild(
            folder, [&names](std::string_view name, bool) { names.emplace_back(foldedName(name), std::string(name)); });
        std::ranges::sort(names);
        const auto alike = [](const auto& a, const auto& b) { return a.first == b.first; };
        for (auto from = names.begin(); (from = std::adjacent_find(from, names.end(), alike)) != names.end();) {
            std::string line =
                "Names that differ only in case or in the form of accents can be one file on the server: ";
            line += printable(childPath(folder, from->second));
            for (const auto first = from++; from != names.end() && alike(*first, *from); ++from) {
                line += ", " + printable(childPath(folder, from->second));
            }
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

} // namespace zembrastel
