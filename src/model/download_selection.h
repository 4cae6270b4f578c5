// Which files and folders are chosen: rules by path, of which the deepest wins.
//
// A value; any thread. Paths are relative to the profile's folder, "/" between complete components; "" is the root.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace zembrastel {

struct DownloadSelection {
    // A path and whether it is selected with all that lies below it. No rule at all selects nothing.
    std::map<std::string, bool, std::less<>> rules;

    enum class Mark { none, partial, all };

    // The root and all below it.
    [[nodiscard]] static const DownloadSelection& everything();

    // Is `path` the ancestor itself, or below it by complete components? "" contains every path.
    [[nodiscard]] static bool contains(std::string_view ancestor, std::string_view path);

    [[nodiscard]] bool includes(std::string_view path) const;

    // The rule that decides about the path: the deepest that contains it. nullptr when there is none, which leaves the
    // path out.
    [[nodiscard]] const std::pair<const std::string, bool>* governingRule(std::string_view path) const;

    // Must a walk enter this folder, because something in or below it may be selected?
    [[nodiscard]] bool shouldVisit(std::string_view folder) const;

    // The tick of a row: partial when something below the path differs from the path itself.
    [[nodiscard]] Mark mark(std::string_view path) const;

    // Ticks or unticks a row, which forgets every choice made below it. The rules stay as few as possible.
    void set(std::string_view path, bool selected);

    [[nodiscard]] bool hasSelection() const;

    // "All non-excluded files and folders" for exactly the rules of everything(), else "Custom file and folder
    // selection".
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const DownloadSelection&, const DownloadSelection&) = default;
};

} // namespace zembrastel
