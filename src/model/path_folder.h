// The parts of a PathMap: the files of one folder, and the folder with its sub-folders.
//
// Values. Maps share them; a map copies a shared folder before it changes it.
#pragma once

#include "model/error.h"
#include "platform/cow_ptr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// Deeper folders are refused, since functions on trees are recursive. At about this depth one-letter names reach the
// longest path of Linux (PATH_MAX, 4096 bytes).
inline constexpr std::size_t maxPathLevels = 2000;

inline void checkPathLevels(std::size_t levels) {
    if (levels <= maxPathLevels) return;
    throw SyncError("The local folder is nested more than " + std::to_string(maxPathLevels) + " levels deep.");
}

// The files directly in one folder, in the order of their addition. All names are in one text: a file takes its value,
// 8 bytes and its name.
template <class Value>
class FolderFiles {
public:
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    // Appends without checking for the name. Call sort() afterwards.
    Value& append(std::string_view name, const Value& value) {
        names += name;
        if (names.size() > std::numeric_limits<std::uint32_t>::max()) {
            throw SyncError("A folder holds too many files.");
        }
        return files.emplace_back(value, static_cast<std::uint32_t>(names.size()), 0).value;
    }

    // Finds the order of the names after append(). Of files with the same name the last remains.
    void sort() {
        std::vector<std::uint32_t> order(files.size());
        std::iota(order.begin(), order.end(), 0U);
        const auto before = [this](std::uint32_t a, std::uint32_t b) { return name(a) < name(b); };
        if (!std::is_sorted(order.begin(), order.end(), before)) std::stable_sort(order.begin(), order.end(), before);
        for (std::size_t place = 0; place < order.size(); ++place) files[place].byName = order[place];
        if (hasDuplicates()) *this = withoutDuplicates();
        files.shrink_to_fit();
        names.shrink_to_fit();
    }

    void clear() {
        files.clear();
        names.clear();
    }

    [[nodiscard]] std::size_t size() const { return files.size(); }
    [[nodiscard]] bool empty() const { return files.empty(); }

    [[nodiscard]] std::string_view name(std::size_t index) const {
        const std::size_t begin = index == 0 ? 0 : files[index - 1].nameEnd;
        return std::string_view(names).substr(begin, files[index].nameEnd - begin);
    }

    [[nodiscard]] const Value& value(std::size_t index) const { return files[index].value; }

    // The index of the file at this place in the ascending order of the names.
    [[nodiscard]] std::size_t byName(std::size_t place) const { return files[place].byName; }

    // The index of a file, or `none`.
    [[nodiscard]] std::size_t find(std::string_view wanted) const {
        const auto place = placeOf(wanted);
        return place < size() && name(byName(place)) == wanted ? byName(place) : none;
    }

    // Replaces the value of the file, or adds it as the last one.
    void set(std::string_view fileName, const Value& value) {
        const auto place = placeOf(fileName);
        if (place < size() && name(byName(place)) == fileName) {
            files[byName(place)].value = value;
            return;
        }
        append(fileName, value);
        for (auto later = size() - 1; later > place; --later) files[later].byName = files[later - 1].byName;
        files[place].byName = static_cast<std::uint32_t>(size() - 1);
    }

    // Equal also in the order of addition, which is compared at once.
    [[nodiscard]] bool identical(const FolderFiles& other) const {
        return names == other.names
               && std::equal(
                   files.begin(), files.end(), other.files.begin(), other.files.end(),
                   [](const File& a, const File& b) { return a.nameEnd == b.nameEnd && a.value == b.value; });
    }

    // The files for which `keep(name, value)` is true.
    [[nodiscard]] FolderFiles filtered(const auto& keep) const {
        FolderFiles kept;
        for (std::size_t index = 0; index < size(); ++index) {
            if (keep(name(index), value(index))) kept.append(name(index), value(index));
        }
        kept.sort();
        return kept;
    }

private:
    struct File {
        File(const Value& fileValue, std::uint32_t end, std::uint32_t sorted)
            : value(fileValue), nameEnd(end), byName(sorted) {}

        Value value;
        std::uint32_t nameEnd; // in `names`; the name begins at the end of the one before
        std::uint32_t byName;  // belongs to the order, not to this file: see byName()
    };

    // The place of the name in the ascending order, or the place to insert it at.
    [[nodiscard]] std::size_t placeOf(std::string_view wanted) const {
        const auto below = [this](const File& place, std::string_view text) { return name(place.byName) < text; };
        return static_cast<std::size_t>(std::lower_bound(files.begin(), files.end(), wanted, below) - files.begin());
    }

    [[nodiscard]] bool hasDuplicates() const {
        const auto sameName = [this](const File& a, const File& b) { return name(a.byName) == name(b.byName); };
        return std::adjacent_find(files.begin(), files.end(), sameName) != files.end();
    }

    [[nodiscard]] FolderFiles withoutDuplicates() const {
        std::vector<bool> stays(size(), true);
        for (std::size_t place = 1; place < size(); ++place) {
            if (name(byName(place - 1)) == name(byName(place))) stays[byName(place - 1)] = false;
        }
        FolderFiles single;
        for (std::size_t index = 0; index < size(); ++index) {
            if (stays[index]) single.append(name(index), value(index));
        }
        single.sort();
        return single;
    }

    std::vector<File> files;
    std::string names;
};

// A folder with its contents.
template <class Value>
struct PathFolder {
    using Files = FolderFiles<Value>;

    struct Child {
        std::string name;
        CowPtr<PathFolder> folder; // never empty
    };

    // The place of the folder of this name, or the place to insert it at.
    [[nodiscard]] std::size_t place(std::string_view name) const {
        const auto below = [](const Child& child, std::string_view text) { return child.name < text; };
        return static_cast<std::size_t>(
            std::lower_bound(folders.begin(), folders.end(), name, below) - folders.begin());
    }

    [[nodiscard]] bool hasAt(std::size_t place, std::string_view name) const {
        return place < folders.size() && folders[place].name == name;
    }

    // nullptr when there is none.
    [[nodiscard]] const PathFolder* folder(std::string_view name) const {
        const auto found = place(name);
        return hasAt(found, name) ? folders[found].folder.get() : nullptr;
    }

    // For changing; made when there is none.
    [[nodiscard]] PathFolder& ownFolder(std::string_view name) {
        const auto found = place(name);
        if (!hasAt(found, name)) {
            folders.insert(folders.begin() + static_cast<std::ptrdiff_t>(found), {std::string(name), {}});
        }
        return folders[found].folder.own();
    }

    void count() {
        size = files ? files->size() : 0;
        for (const auto& child : folders) size += child.folder->size;
    }

    CowPtr<Files> files;        // nothing when there are none
    std::vector<Child> folders; // in ascending order of their names
    std::size_t size = 0;       // files, at any depth
};

} // namespace zembrastel
