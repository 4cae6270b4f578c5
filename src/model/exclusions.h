// The rules that leave paths out of everything: scan, transfers, comparison and browsing.
//
// A value that is its text, one rule a line; the rules are compiled when the text is set, and copies share them. Equal
// texts are equal values. Any thread may match. Matching is case-sensitive and works on bytes, whatever locale the
// process has set.
//
// A rule without "/" is a shell wildcard tried on every component of a path, so "node_modules" leaves out the folder of
// that name at any depth with all it holds. A rule with "/" is a wildcard for the whole relative path in which "*", "?"
// and brackets stop at "/", and also leaves out all that lies in the folder of that name. Names that begin with
// ".zembrastel-", ".~" or ".#" are always excluded. There are no comments: every line that is not blank is a rule.
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

    // Is this relative path ("/" between components) left out?
    [[nodiscard]] bool match(std::string_view path) const;

    // The same for a path whose parent folders were all found not to be excluded, as in a walk from the top: only the
    // last component is new to the rules that look at components.
    [[nodiscard]] bool matchEntry(std::string_view path) const;

    // Why a path is left out.
    struct Cause {
        std::string path; // the path itself or the folder on the way to it that the rule leaves out
        std::string rule; // as it was written, or the beginning of names that are always excluded
        bool reserved = false;
    };

    // What a walk from the top meets first on its way to this path; nothing when it gets there. For a person's
    // question: each rule is compiled anew.
    [[nodiscard]] std::optional<Cause> cause(std::string_view path) const;

    friend bool operator==(const Exclusions& a, const Exclusions& b) { return a.text() == b.text(); }

private:
    struct Compiled;
    std::shared_ptr<const Compiled> compiled;
};

} // namespace zembrastel
