// A map from relative paths to small values, for whole sites. A file takes its value, the last component of its path
// and about 30 bytes, and copies share equal parts.
//
// A value. A map is a tree of folders. Copies share equal folders: setting an entry copies its folder and those above
// it if they are shared, and no others. So a copy costs almost nothing, can be passed to another thread, and shared
// parts are compared by address. Paths have "/" between components. They are ordered by folder, and within a folder by
// their addition.
//
// Paths of more than 2000 folders are refused with a SyncError.
#pragma once

#include "model/path_folder.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zembrastel {

template <class Value>
class PathMap {
    using Folder = PathFolder<Value>;
    using Pointer = CowPtr<Folder>;
    using Files = FolderFiles<Value>;
    using Child = typename Folder::Child;

public:
    using mapped_type = Value;

    // The present entry of an iteration; valid until the iterator moves.
    struct Entry {
        const std::string& path;
        const Value& value;
    };

    class Iterator;
    class Builder;
    class Recorder; // see path_map_recorder.h

    PathMap() = default;
    PathMap(std::initializer_list<std::pair<std::string_view, Value>> entries);

    [[nodiscard]] std::size_t size() const { return root ? root->size : 0; }
    [[nodiscard]] bool empty() const { return !root; }

    // nullptr if there is none.
    [[nodiscard]] const Value* find(std::string_view path) const;
    [[nodiscard]] bool contains(std::string_view path) const { return find(path) != nullptr; }
    [[nodiscard]] const Value& at(std::string_view path) const; // throws std::out_of_range

    // True if there is an entry below this path.
    [[nodiscard]] bool containsFolder(std::string_view path) const { return findFolder(path) != nullptr; }

    // Calls `visit(name, isFolder)` for each file and folder directly in the folder of this path.
    void forEachChild(std::string_view path, const auto& visit) const {
        const Folder* folder = findFolder(path);
        if (folder == nullptr) return;
        for (std::size_t i = 0; folder->files && i < folder->files->size(); ++i) visit(folder->files->name(i), false);
        for (const auto& child : folder->folders) visit(std::string_view(child.name), true);
    }

    [[nodiscard]] Iterator begin() const { return Iterator(root.get()); }
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }

    // Replaces or adds.
    void set(std::string_view path, const Value& value);

    // Removes the entries for which `gone(path, value)` is true.
    void eraseIf(const auto& gone) {
        std::string path;
        root = erased(root, path, gone);
    }

    // Calls `visit(path, here, there)` for each path with different entries in the two maps; nullptr stands for a
    // missing entry. Shared folders are skipped.
    void forEachDifference(const PathMap& other, const auto& visit) const {
        std::string path;
        differences(root.get(), other.root.get(), path, visit);
    }

    // Equal entries, in any order of addition.
    friend bool operator==(const PathMap& a, const PathMap& b) {
        if (a.size() != b.size()) return false;
        bool equal = true;
        a.forEachDifference(b, [&equal](std::string_view, const Value*, const Value*) { equal = false; });
        return equal;
    }

private:
    [[nodiscard]] const Folder* findFolder(std::string_view path) const;
    [[nodiscard]] static Pointer made(CowPtr<Files> files, std::vector<Child> folders);
    [[nodiscard]] static Pointer erased(const Pointer& folder, std::string& path, const auto& gone);
    static void differences(const Folder* here, const Folder* there, std::string& path, const auto& visit);
    static void fileDifferences(const Files* here, const Files* there, std::string& path, const auto& visit);

    // Calls `work` with `name` appended to the path.
    static void below(std::string& path, std::string_view name, const auto& work) {
        const auto length = path.size();
        path += name;
        work();
        path.resize(length);
    }

    Pointer root; // null for an empty map
};

template <class Value>
class PathMap<Value>::Iterator {
public:
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const Folder* root) {
        if (root != nullptr) {
            levels.push_back({.folder = root, .pathLength = 0});
            settle();
        }
    }

    [[nodiscard]] Entry operator*() const {
        return {.path = path, .value = levels.back().folder->files->value(levels.back().file)};
    }

    Iterator& operator++() {
        ++levels.back().file;
        settle();
        return *this;
    }

    void operator++(int) { ++*this; }

    friend bool operator==(const Iterator& iterator, std::default_sentinel_t) { return iterator.levels.empty(); }

private:
    struct Level {
        const Folder* folder;
        std::size_t pathLength;
        std::size_t file = 0;
        std::size_t subfolder = 0;
    };

    // Moves on to the next folder's first file after the last file of a folder.
    void settle() {
        while (!levels.empty()) {
            Level& level = levels.back();
            path.resize(level.pathLength);
            const auto& files = level.folder->files;
            if (files && level.file < files->size()) {
                path += files->name(level.file);
                return;
            }
            if (level.subfolder == level.folder->folders.size()) {
                levels.pop_back();
                continue;
            }
            const auto& child = level.folder->folders[level.subfolder++];
            path += child.name;
            path += '/';
            levels.push_back({.folder = child.folder.get(), .pathLength = path.size()});
        }
    }

    std::vector<Level> levels;
    std::string path;
};

// Builds a map from entries in any order. Of entries with the same path the last remains.
template <class Value>
class PathMap<Value>::Builder {
public:
    // The new entry's value, which can be changed until the next call.
    Value& add(std::string_view path, const Value& value = {}) {
        const auto slash = path.rfind('/');
        const auto folder = slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
        if (recent == nullptr || folder != recentPath) {
            recent = &draft(folder);
            recentPath = folder;
        }
        return recent->files.append(path.substr(folder.size()), value);
    }

    [[nodiscard]] PathMap finish() {
        PathMap map;
        map.root = finished(root);
        *this = Builder();
        return map;
    }

private:
    struct Draft {
        Files files;
        std::map<std::string, Draft, std::less<>> folders;
    };

    // `path` is empty or ends with "/".
    Draft& draft(std::string_view path) {
        auto* reached = &root;
        for (std::size_t level = 1; !path.empty(); ++level) {
            checkPathLevels(level);
            const auto name = path.substr(0, path.find('/'));
            reached = &reached->folders.try_emplace(std::string(name)).first->second;
            path.remove_prefix(name.size() + 1);
        }
        return *reached;
    }

    static Pointer finished(Draft& draft) {
        CowPtr<Files> files;
        if (!draft.files.empty()) {
            draft.files.sort();
            files = CowPtr<Files>(std::move(draft.files));
        }
        std::vector<Child> folders;
        folders.reserve(draft.folders.size());
        for (auto& [name, child] : draft.folders) folders.push_back({name, finished(child)});
        return made(std::move(files), std::move(folders));
    }

    Draft root;
    Draft* recent = nullptr;
    std::string recentPath; // of `recent`
};

template <class Value>
PathMap<Value>::PathMap(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    Builder builder;
    for (const auto& [path, value] : entries) builder.add(path, value);
    *this = builder.finish();
}

template <class Value>
const typename PathMap<Value>::Folder* PathMap<Value>::findFolder(std::string_view path) const {
    const Folder* folder = root.get();
    for (bool more = !path.empty(); more && folder != nullptr;) {
        const auto slash = path.find('/');
        folder = folder->folder(path.substr(0, slash));
        more = slash != std::string_view::npos;
        path.remove_prefix(more ? slash + 1 : 0);
    }
    return folder;
}

template <class Value>
const Value* PathMap<Value>::find(std::string_view path) const {
    const Folder* folder = root.get();
    for (auto slash = path.find('/'); folder != nullptr && slash != std::string_view::npos; slash = path.find('/')) {
        folder = folder->folder(path.substr(0, slash));
        path.remove_prefix(slash + 1);
    }
    if (folder == nullptr || !folder->files) return nullptr;
    const auto index = folder->files->find(path);
    return index == Files::none ? nullptr : &folder->files->value(index);
}

template <class Value>
const Value& PathMap<Value>::at(std::string_view path) const {
    const auto* found = find(path);
    if (found == nullptr) throw std::out_of_range("no entry of this path");
    return *found;
}

template <class Value>
void PathMap<Value>::set(std::string_view path, const Value& value) {
    checkPathLevels(static_cast<std::size_t>(std::count(path.begin(), path.end(), '/')));
    const std::size_t added = contains(path) ? 0 : 1;
    Folder* folder = &root.own();
    folder->size += added;
    for (auto slash = path.find('/'); slash != std::string_view::npos; slash = path.find('/')) {
        folder = &folder->ownFolder(path.substr(0, slash));
        folder->size += added;
        path.remove_prefix(slash + 1);
    }
    folder->files.own().set(path, value);
}

// Null for an empty folder.
template <class Value>
typename PathMap<Value>::Pointer PathMap<Value>::made(CowPtr<Files> files, std::vector<Child> folders) {
    if (!files && folders.empty()) return {};
    Folder folder{.files = std::move(files), .folders = std::move(folders), .size = 0};
    folder.count();
    return Pointer(std::move(folder));
}

template <class Value>
typename PathMap<Value>::Pointer PathMap<Value>::erased(const Pointer& folder, std::string& path, const auto& gone) {
    if (!folder) return {};
    auto files = folder->files;
    if (files) {
        auto kept = files->filtered([&](std::string_view name, const Value& value) {
            bool stays = true;
            below(path, name, [&] { stays = !gone(std::string_view(path), value); });
            return stays;
        });
        if (kept.size() != files->size()) files = kept.empty() ? CowPtr<Files>() : CowPtr<Files>(std::move(kept));
    }
    bool changed = files != folder->files;
    std::vector<Child> folders;
    for (const auto& child : folder->folders) {
        Pointer kept;
        below(path, child.name + '/', [&] { kept = erased(child.folder, path, gone); });
        changed = changed || kept != child.folder;
        if (kept) folders.push_back({child.name, std::move(kept)});
    }
    return changed ? made(std::move(files), std::move(folders)) : folder;
}

template <class Value>
void PathMap<Value>::differences(const Folder* here, const Folder* there, std::string& path, const auto& visit) {
    if (here == there) return;
    static const std::vector<Child> none;
    const auto filesOf = [](const Folder* folder) { return folder == nullptr ? nullptr : folder->files.get(); };
    fileDifferences(filesOf(here), filesOf(there), path, visit);
    const auto& ours = here == nullptr ? none : here->folders;
    const auto& theirs = there == nullptr ? none : there->folders;
    auto our = ours.begin();
    auto their = theirs.begin();
    while (our != ours.end() || their != theirs.end()) {
        const bool hereIsNext = our != ours.end() && (their == theirs.end() || our->name <= their->name);
        const bool thereIsNext = their != theirs.end() && (our == ours.end() || their->name <= our->name);
        below(path, (hereIsNext ? our : their)->name + '/', [&] {
            differences(
                hereIsNext ? our->folder.get() : nullptr, thereIsNext ? their->folder.get() : nullptr, path, visit);
        });
        if (hereIsNext) ++our;
        if (thereIsNext) ++their;
    }
}

template <class Value>
void PathMap<Value>::fileDifferences(const Files* here, const Files* there, std::string& path, const auto& visit) {
    if (here == there || (here != nullptr && there != nullptr && here->identical(*there))) return;
    const std::size_t ours = here == nullptr ? 0 : here->size();
    const std::size_t theirs = there == nullptr ? 0 : there->size();
    for (std::size_t our = 0, their = 0; our < ours || their < theirs;) {
        const auto ourName = our < ours ? here->name(here->byName(our)) : std::string_view();
        const auto theirName = their < theirs ? there->name(there->byName(their)) : std::string_view();
        const bool hereIsNext = our < ours && (their == theirs || ourName <= theirName);
        const bool thereIsNext = their < theirs && (our == ours || theirName <= ourName);
        const Value* ourValue = hereIsNext ? &here->value(here->byName(our++)) : nullptr;
        const Value* theirValue = thereIsNext ? &there->value(there->byName(their++)) : nullptr;
        if (ourValue != nullptr && theirValue != nullptr && *ourValue == *theirValue) continue;
        below(path, hereIsNext ? ourName : theirName, [&] { visit(std::string_view(path), ourValue, theirValue); });
    }
}

} // namespace zembrastel
