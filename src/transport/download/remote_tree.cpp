#include "transport/download/remote_tree.h"

#include "platform/directory_walk.h"
#include "platform/folder.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace zembrastel {
namespace {

std::vector<const ListedFolder*> foldersAbove(const RemoteTree::Node& node) {
    std::vector<const ListedFolder*> above;
    for (const auto* each = node.above; each != nullptr; each = each->above) above.push_back(&each->listed);
    std::ranges::reverse(above);
    return above;
}

} // namespace

RemoteTree::RemoteTree(const FTPTransport& used, Choose isWanted, Choose isEntered)
    : transport(used), wanted(std::move(isWanted)), entered(std::move(isEntered)) {}

const RemoteTree::Node& RemoteTree::list(const std::string& top, int depth) {
    FolderLister lister(transport);
    std::vector<std::string> level{top};
    nodes[top] = {.listed = {.path = top, .entries = {}}, .depth = depth};
    while (!level.empty()) {
        std::vector<std::string> below;
        lister.list(level, [&](std::size_t folder, ListedEntries listed) {
            transport.control->check();
            add(nodes.at(level[folder]), std::move(listed), below);
        });
        level = std::move(below);
    }
    return nodes.at(top);
}

const RemoteTree::Node* RemoteTree::find(const std::string& path) const {
    const auto found = nodes.find(path);
    return found == nodes.end() ? nullptr : &found->second;
}

void RemoteTree::add(Node& node, ListedEntries listed, std::vector<std::string>& below) {
    const auto& path = node.listed.path;
    try {
        node.listed.entries = resultOf(std::move(listed));
        transport.nameAsLocal(path, node.listed.entries, itemsIn(path));
        node.leadsBack = leadsBack(
            node.listed, foldersAbove(node), [this](const std::string& far) { return transport.listIfThere(far); });
    } catch (const SyncError& error) {
        node.failure = error.what(); // the files before it are downloaded
    }
    if (node.failure || node.leadsBack) return;
    std::uint64_t files = 0;
    for (const auto& entry : node.listed.entries) {
        if (!wanted(node, entry)) continue;
        if (!entry.directory) ++files;
        if (!entry.directory || !entered(node, entry)) continue;
        auto child = childPath(path, entry.name);
        nodes[child] = {.listed = {.path = child, .entries = {}}, .above = &node, .depth = node.depth + 1};
        below.push_back(std::move(child));
    }
    if (transport.observer != nullptr) transport.observer->folderListed(files);
}

// The local files and folders, without links and other items.
std::vector<LocalItem> RemoteTree::itemsIn(const std::string& path) const {
    std::vector<LocalItem> items;
    const auto place = LocalPlace::resolve(transport.profile.localFolder, path);
    const auto folder = place.parent ? place.parent->enter(place.name) : std::nullopt;
    if (!folder) return items;
    visitItems(*folder, [&items](const WalkEntry& item) {
        const bool usable = item.kind == EntryKind::file || item.kind == EntryKind::folder;
        if (!usable || nameFault(item.name)) return;
        items.push_back({.name = std::string(item.name), .directory = item.kind == EntryKind::folder});
    });
    return items;
}

} // namespace zembrastel
