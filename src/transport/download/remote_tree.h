// The folders and files of the server below one folder, listed before anything is downloaded.
//
// Blocks its thread while it lists; then a value that is only read. A folder that cannot be listed is part of the tree,
// with the failure. Throws Cancelled.
#pragma once

#include "transport/ftp_transport.h"
#include "transport/listing/folder_loop.h"
#include "transport/listing/remote_queries.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class RemoteTree {
public:
    struct Node {
        ListedFolder listed{};
        const Node* above = nullptr;
        int depth = 0;
        bool leadsBack = false;
        std::optional<std::string> failure{}; // why it is not listed
    };

    // Chooses entries of a folder: those to download, and the folders among them to list.
    using Choose = std::function<bool(const Node& folder, const RemoteEntry& entry)>;

    // The transport is borrowed.
    RemoteTree(const FTPTransport& used, Choose isWanted, Choose isEntered);

    // Lists `top`, which is `depth` levels below the remote folder, and the folders below it, level by level. Returns
    // the node of `top`.
    const Node& list(const std::string& top, int depth);

    // Nullptr for a folder that was not entered.
    [[nodiscard]] const Node* find(const std::string& path) const;

private:
    void add(Node& node, ListedEntries listed, std::vector<std::string>& below);
    [[nodiscard]] std::vector<LocalItem> itemsIn(const std::string& path) const;

    const FTPTransport& transport;
    const Choose wanted;
    const Choose entered;
    std::map<std::string, Node> nodes;
};

} // namespace zembrastel
