// Builds the PathMap of a tree during a walk, folder by folder. Folders that are unchanged since an earlier map are
// shared with that map, at no cost in time or memory.
//
// Used by one thread.
#pragma once

#include "model/path_map.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

template <class Value>
class PathMap<Value>::Recorder {
public:
    explicit Recorder(const PathMap& earlier) : before(earlier) { open({}, before.root); }

    // Adds a file to the folder that was entered last and not left yet.
    void add(std::string_view name, const Value& value) { levels[depth - 1].files.append(name, value); }

    void enter(std::string_view name) {
        checkPathLevels(depth);
        const Folder* parent = levels[depth - 1].before.get();
        const auto place = parent == nullptr ? 0 : parent->place(name);
        const bool known = parent != nullptr && parent->hasAt(place, name);
        open(name, known ? parent->folders[place].folder : Pointer());
    }

    void leave() {
        Level& left = levels[--depth];
        if (auto folder = close(left)) levels[depth - 1].keep(left.name, std::move(folder));
    }

    // The recorded map. Every folder must have been left.
    [[nodiscard]] PathMap finish() {
        PathMap map;
        map.root = close(levels.front());
        depth = 0;
        return map;
    }

private:
    struct Level {
        std::string name;
        Pointer before; // the same folder in the earlier map, or null
        Files files;
        std::vector<Child> folders;
        std::size_t unchanged =
            0; // sub-folders so far, all equal to the first ones of `before`, while `folders` is empty

        void keep(const std::string& child, Pointer folder) {
            if (folders.empty() && before && unchanged < before->folders.size()
                && before->folders[unchanged].folder == folder && before->folders[unchanged].name == child) {
                ++unchanged;
                return;
            }
            materialise();
            folders.push_back({child, std::move(folder)});
        }

        void materialise() {
            if (!folders.empty() || unchanged == 0) return;
            const auto first = before->folders.begin();
            folders.assign(first, first + static_cast<std::ptrdiff_t>(unchanged));
        }
    };

    // Levels are reused, with their memory, for the next folder at their depth.
    void open(std::string_view name, const Pointer& earlier) {
        if (depth == levels.size()) levels.emplace_back();
        Level& level = levels[depth++];
        level.name = name;
        level.before = earlier;
        level.files.clear();
        level.folders.clear();
        level.unchanged = 0;
    }

    static Pointer close(Level& level) {
        const auto* before = level.before.get();
        auto files = before == nullptr ? CowPtr<Files>() : before->files;
        const bool sameFiles = files ? level.files.identical(*files) : level.files.empty();
        if (sameFiles && before != nullptr && level.folders.empty() && level.unchanged == before->folders.size()) {
            return level.before;
        }
        if (!sameFiles) files = sorted(level.files);
        level.materialise();
        const auto byName = [](const Child& a, const Child& b) { return a.name < b.name; };
        std::sort(level.folders.begin(), level.folders.end(), byName);
        return made(std::move(files), level.folders);
    }

    static CowPtr<Files> sorted(const Files& recorded) {
        if (recorded.empty()) return {};
        Files files = recorded;
        files.sort();
        return CowPtr<Files>(std::move(files));
    }

    const PathMap before;
    std::vector<Level> levels;
    std::size_t depth = 0;
};

} // namespace zembrastel
