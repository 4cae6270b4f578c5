// The files and folders that the user selected: rules by path, of which the deepest decides.
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
    // A path, and whether it is selected with everything below it. Without rules nothing is selected.
    std::map<std::string, bool, std::less<>> rules;

    enum class Mark { none, partial, all };

    // The root and all below it.
    [[nodiscard]] static const DownloadSelection& everything();

    // True if `path` is the ancestor or below it, by complete components. "" contains every path.
    [[nodiscard]] static bool contains(std::string_view ancestor, std::string_view path);

    [[nodiscard]] bool includes(std::string_view path) const;

    // The deepest rule that contains the path, which decides about it. nullptr if there is none: the path is not
    // selected.
    [[nodiscard]] const std::pair<const std::string, bool>* governingRule(std::string_view path) const;

    // True if something in or below this folder may be selected, so that a walk must enter it.
    [[nodiscard]] bool shouldVisit(std::string_view folder) const;

    // The tick of a row: partial if something below the path differs from the path itself.
    [[nodiscard]] Mark mark(std::string_view path) const;

    // Ticks or unticks a row and drops all choices below it. Keeps the number of rules minimal.
    void set(std::string_view path, bool selected);

    [[nodiscard]] bool hasSelection() const;

    // "All non-excluded files and folders" for the rules of everything(), otherwise "Custom file and folder selection".
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const DownloadSelection&, const DownloadSelection&) = default;
};

} // namespace zembrastel
