#include "model/path_map.h"
#include "model/path_map_recorder.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace zembrastel {
namespace {

using Numbers = PathMap<int>;
using Plain = std::map<std::string, int, std::less<>>;
using Change = std::tuple<std::string, std::optional<int>, std::optional<int>>;

Plain plain(const Numbers& map) {
    Plain entries;
    for (const auto& [path, value] : map) EXPECT_TRUE(entries.emplace(path, value).second) << path;
    return entries;
}

std::set<Change> changes(const Numbers& here, const Numbers& there) {
    const auto copy = [](const int* value) { return value == nullptr ? std::nullopt : std::optional(*value); };
    std::set<Change> found;
    here.forEachDifference(there, [&](std::string_view path, const int* ours, const int* theirs) {
        EXPECT_TRUE(found.emplace(path, copy(ours), copy(theirs)).second) << path;
    });
    return found;
}

std::set<Change> changes(const Plain& here, const Plain& there) {
    std::set<Change> found;
    const auto in = [](const Plain& map, const std::string& path) {
        const auto entry = map.find(path);
        return entry == map.end() ? std::nullopt : std::optional(entry->second);
    };
    for (const auto* map : {&here, &there}) {
        for (const auto& [path, value] : *map) {
            if (in(here, path) != in(there, path)) found.emplace(path, in(here, path), in(there, path));
        }
    }
    return found;
}

// Few names, so that files and folders of one name, empty components and repeated paths all come up.
std::string randomPath(std::mt19937& random) {
    const std::vector<std::string> names{"a", "b", "", "a.txt", "\xC3\xA9", "B"};
    std::string path = names[random() % names.size()];
    for (auto more = random() % 4; more > 0; --more) path += '/' + names[random() % names.size()];
    return path;
}

// The entries as a walk of a folder would come to them.
void record(Numbers::Recorder& recorder, const Numbers& map) {
    std::vector<std::string> open;
    for (const auto& [path, value] : map) {
        std::vector<std::string> folders;
        std::string_view rest = path;
        for (auto slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
            folders.emplace_back(rest.substr(0, slash));
            rest.remove_prefix(slash + 1);
        }
        const auto common = static_cast<std::size_t>(
            std::mismatch(open.begin(), open.end(), folders.begin(), folders.end()).first - open.begin());
        for (; open.size() > common; open.pop_back()) recorder.leave();
        for (auto level = common; level < folders.size(); ++level) recorder.enter(folders[level]);
        open = folders;
        recorder.add(rest, value);
    }
    for (; !open.empty(); open.pop_back()) recorder.leave();
}

Numbers recorded(const Numbers& map, const Numbers& before) {
    Numbers::Recorder recorder(before);
    record(recorder, map);
    return recorder.finish();
}

TEST(PathMap, SharedFoldersOfVersionsStayUnchanged) {
    std::mt19937 random(4711);
    std::vector<std::pair<Numbers, Plain>> versions(1);
    for (int round = 0; round < 600; ++round) {
        auto [map, model] = versions[random() % versions.size()];
        for (auto steps = random() % 4; steps > 0; --steps) {
            const auto path = randomPath(random);
            const int value = static_cast<int>(random() % 3);
            map.set(path, value);
            model.insert_or_assign(path, value);
        }
        if (round % 7 == 0) {
            const auto gone = [&](std::string_view path, int value) { return (path.size() + value) % 3 == 0; };
            map.eraseIf(gone);
            std::erase_if(model, [&](const auto& entry) { return gone(entry.first, entry.second); });
        }
        if (round % 5 == 0) map = recorded(map, versions[random() % versions.size()].first);
        versions.emplace_back(map, model);
    }
    for (std::size_t index = 0; index < versions.size(); ++index) {
        const auto& [map, model] = versions[index];
        ASSERT_EQ(plain(map), model);
        ASSERT_EQ(map.size(), model.size());
        const auto& [otherMap, otherModel] = versions[(index * 7) % versions.size()];
        ASSERT_EQ(changes(map, otherMap), changes(model, otherModel));
        ASSERT_EQ(map == otherMap, model == otherModel);
        for (const auto& [path, value] : otherModel) {
            const auto* found = map.find(path);
            ASSERT_EQ(found == nullptr ? -1 : *found, model.contains(path) ? model.at(path) : -1) << path;
            const auto folder = path.substr(0, path.rfind('/') == std::string::npos ? 0 : path.rfind('/'));
            const auto inside = [&](const auto& entry) {
                return folder.empty() || entry.first.starts_with(folder + '/');
            };
            ASSERT_EQ(map.containsFolder(folder), std::ranges::any_of(model, inside)) << folder;
        }
        ASSERT_EQ(plain(recorded(map, otherMap)), model);
    }
}

TEST(PathMap, AnyOrderOfEntriesMakesTheSameMap) {
    Numbers::Builder builder;
    for (const auto& [path, value] :
         {std::pair{"b/x", 1}, {"a", 2}, {"b/c/y", 3}, {"b/x", 4}, {"a", 5}, {"b/a", 6}, {"a/a", 7}}) {
        builder.add(path, value);
    }
    EXPECT_EQ(builder.finish(), (Numbers{{"a/a", 7}, {"a", 5}, {"b/a", 6}, {"b/c/y", 3}, {"b/x", 4}}));
    EXPECT_TRUE(builder.finish().empty());
}

TEST(PathMap, UnchangedFoldersAreSharedNotCopied) {
    const Numbers before{{"z/1", 1}, {"z/2", 2}, {"a/b/c", 3}, {"top", 4}};
    const auto same = recorded(before, before);
    EXPECT_EQ(&same.at("a/b/c"), &before.at("a/b/c"));
    EXPECT_EQ(&same.at("top"), &before.at("top"));
    auto changed = before;
    changed.set("z/2", 5);
    const auto partly = recorded(changed, before);
    EXPECT_EQ(partly, changed);
    EXPECT_EQ(&partly.at("a/b/c"), &before.at("a/b/c"));
}

TEST(PathMap, TreeTooDeepForRecursionIsRefused) {
    std::string path;
    for (std::size_t level = 0; level < maxPathLevels; ++level) path += "d/";
    Numbers deep{{path + "file", 1}};
    EXPECT_EQ(plain(deep).size(), 1U);
    EXPECT_EQ(recorded(deep, {}), deep);
    EXPECT_THROW(deep.set("d/" + path + "file", 1), SyncError);
    EXPECT_THROW(Numbers({{"d/" + path + "file", 1}}), SyncError);
    deep.eraseIf([](std::string_view, int) { return true; });
    EXPECT_TRUE(deep.empty());
}

} // namespace
} // namespace zembrastel
