#include "transport/publish/publish_item.h"

#include <algorithm>

namespace zembrastel {

using Presence = RemoteFacts::Presence;

std::map<std::string, Items> byFolder(const Items& items) {
    std::map<std::string, Items> folders;
    for (auto* item : items) folders[item->folder].push_back(item);
    return folders;
}

std::vector<Items> inGroups(const Items& items, std::size_t length) {
    std::vector<Items> groups;
    for (std::size_t done = 0; done < items.size(); done += length) {
        const auto begin = items.begin() + static_cast<std::ptrdiff_t>(done);
        groups.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(std::min(length, items.size() - done)));
    }
    return groups;
}

PublishFailure failureFrom(const BlockOutcome& outcome) {
    return {.message = outcome.message, .code = outcome.code, .reply = outcome.reply};
}

std::optional<ServerVersion> versionOf(const RemoteFacts& facts) {
    if (!facts.modified) return std::nullopt;
    return ServerVersion{.modified = *facts.modified, .size = facts.size};
}

void combine(Item& item) {
    item.copy = {};
    item.live = {};
    std::size_t absent = 0;
    for (const auto& [copy, live] : item.answers) {
        if (copy && copy->presence == Presence::absent) ++absent;
        const bool better = copy && copy->presence == Presence::present
                            && (item.copy.presence != Presence::present
                                || (item.copy.size != item.expected() && copy->size == item.expected()));
        if (better) item.copy = *copy;
        if (!live || live->presence == Presence::unknown) continue;
        const bool unknown = item.live.presence == Presence::unknown;
        if (unknown || isOtherThan(item.lastSeen, item.live)) item.live = *live;
    }
    if (absent == item.answers.size()) item.copy.presence = Presence::absent;
}

bool isLive(const Item& item) {
    return item.stage == Item::Stage::renaming && item.copy.presence != Presence::present
           && item.live.presence == Presence::present
           && wentLive(item.size(), item.copyBefore, item.liveBefore, item.live);
}

std::optional<unsigned> modeToKeep(const Item& item) {
    const auto& [copy, live] = std::pair(item.copy.mode, item.live.mode);
    return copy && live && *copy != *live ? live : std::nullopt;
}

} // namespace zembrastel
