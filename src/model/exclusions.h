// The rules that exclude paths from scans, transfers, comparisons and browsing.
//
// A value defined by its text, one rule a line. The rules are compiled when the text is set, and copies share them.
// Equal texts make equal values. Any thread. Matching is case-sensitive and works on bytes, whatever the locale.
//
// A rule without "/" is a shell wildcard for every component of a path, so "node_modules" excludes the folders of that
// name at any depth, with their contents. A rule with "/" is a wildcard for the whole relative path, in which "*", "?"
// and brackets do not match "/"; it also excludes the contents of a folder of that name. Names that begin with
// ".zembrastel-", ".~" or ".#" are always excluded. There are no comments: every non-blank line is a rule.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

class Exclusions {
public:
    static constexpr std::string_view defaultText =
        ".git\n.svn\n.DS_Store\n.env\n.env.*\nnode_modules\n.build\n*.swp\n*~";

    Exclusions() : Exclusions(std::string(defaultText)) {}
    explicit Exclusions(std::string text);

    [[nodiscard]] const std::string& text() const;

    // True if this relative path ("/" between components) is excluded.
    [[nodiscard]] bool match(std::string_view path) const;

    // The same for a path none of whose parent folders is excluded, as in a walk from the top: rules for components are
    // tried on the last component only.
    [[nodiscard]] bool matchEntry(std::string_view path) const;

    // Why a path is excluded.
    struct Cause {
        std::string path; // the excluded item: the path itself, or a folder above it
        std::string rule; // as written, or the beginning of names that are always excluded
        bool reserved = false;
    };

    // The first exclusion on the way from the top to this path; nullopt if the path is not excluded. For single
    // questions of the user: it compiles every rule again.
    [[nodiscard]] std::optional<Cause> cause(std::string_view path) const;

    friend bool operator==(const Exclusions& a, const Exclusions& b) { return a.text() == b.text(); }

private:
    struct Compiled;
    std::shared_ptr<const Compiled> compiled;
};

} // namespace zembrastel
