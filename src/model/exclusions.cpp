#include "model/exclusions.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cerrno>
#include <clocale>
#include <fnmatch.h>
#include <locale.h>
#include <system_error>
#include <vector>

namespace zembrastel {
namespace {

// This program's temporary files and backups, and the lock and draft files of common editors.
constexpr std::array<std::string_view, 3> reservedPrefixes{".zembrastel-", ".~", ".#"};

constexpr std::string_view wildcardBytes = "*?[\\";

locale_t byteLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
    if (locale == locale_t{}) throw std::system_error(errno, std::system_category(), "newlocale");
    return locale;
}

// In a UTF-8 locale fnmatch works on characters, which is many times slower: the thread uses the C locale meanwhile.
class ByteLocaleScope {
public:
    ByteLocaleScope() : previous(uselocale(byteLocale())) {}
    ~ByteLocaleScope() { uselocale(previous); }
    ByteLocaleScope(const ByteLocaleScope&) = delete;
    ByteLocaleScope& operator=(const ByteLocaleScope&) = delete;

private:
    locale_t previous;
};

bool containsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

// A rule that needs fnmatch. The text must begin with the part before the first wildcard, which avoids most calls.
class Pattern {
public:
    Pattern(std::string_view rule, int matchFlags)
        : text(rule), plainLength(rule.find_first_of(wildcardBytes)), flags(matchFlags) {}

    [[nodiscard]] bool match(std::string_view candidate) const {
        if (!candidate.starts_with(std::string_view(text).substr(0, plainLength)) || containsNul(candidate)) {
            return false;
        }
        thread_local std::string terminated; // keeps its memory from call to call
        terminated = candidate;
        const ByteLocaleScope scope;
        return fnmatch(text.c_str(), terminated.c_str(), flags) == 0;
    }

private:
    std::string text;
    std::size_t plainLength;
    int flags;
};

class ByteSet {
public:
    void add(char byte) { bytes.set(static_cast<unsigned char>(byte)); }
    void addAll() { bytes.set(); }
    [[nodiscard]] bool contains(char byte) const { return bytes[static_cast<unsigned char>(byte)]; }

private:
    std::bitset<256> bytes;
};

// The rules for single components, sorted by the kind of test. For nearly every component, comparing the first and last
// byte is enough.
class NameRules {
public:
    void add(std::string_view rule) {
        const auto wildcard = rule.find_first_of(wildcardBytes);
        if (wildcard == std::string_view::npos) {
            firstBytes.add(rule.front());
            literals.emplace_back(rule);
        } else if (rule[wildcard] == '*' && wildcard + 1 == rule.size()) {
            addPrefix(rule.substr(0, wildcard));
        } else if (rule.front() == '*' && rule.find_first_of(wildcardBytes, 1) == std::string_view::npos) {
            lastBytes.add(rule.back());
            suffixes.emplace_back(rule.substr(1));
        } else {
            patterns.emplace_back(rule, 0);
        }
    }

    void addPrefix(std::string_view prefix) {
        if (prefix.empty()) {
            firstBytes.addAll();
        } else {
            firstBytes.add(prefix.front());
        }
        prefixes.emplace_back(prefix);
    }

    // `component` is not empty.
    [[nodiscard]] bool match(std::string_view component) const {
        return (firstBytes.contains(component.front()) && matchBeginning(component))
               || (lastBytes.contains(component.back()) && matchEnd(component)) || matchPattern(component);
    }

private:
    [[nodiscard]] bool matchBeginning(std::string_view component) const {
        return std::ranges::find(literals, component) != literals.end()
               || std::ranges::any_of(prefixes, [&](const auto& prefix) { return component.starts_with(prefix); });
    }

    [[nodiscard]] bool matchEnd(std::string_view component) const {
        return std::ranges::any_of(suffixes, [&](const auto& suffix) { return component.ends_with(suffix); });
    }

    [[nodiscard]] bool matchPattern(std::string_view component) const {
        return std::ranges::any_of(patterns, [&](const auto& pattern) { return pattern.match(component); });
    }

    ByteSet firstBytes; // of every literal and prefix
    ByteSet lastBytes;  // of every suffix
    std::vector<std::string> literals;
    std::vector<std::string> prefixes;
    std::vector<std::string> suffixes;
    std::vector<Pattern> patterns;
};

// "/build/out/" as "build/out/": what lies in the folder of that name begins so.
std::string contentsPrefix(std::string_view rule) {
    const auto first = rule.find_first_not_of('/');
    if (first == std::string_view::npos) return "/";
    std::string prefix(rule.substr(first, rule.find_last_not_of('/') + 1 - first));
    prefix += '/';
    return prefix;
}

// The rules for whole paths.
class PathRules {
public:
    void add(std::string_view rule) {
        prefixes.push_back(contentsPrefix(rule));
        if (containsNul(rule)) return;
        if (rule.find_first_of(wildcardBytes) == std::string_view::npos) {
            literals.emplace_back(rule);
        } else {
            patterns.emplace_back(rule, FNM_PATHNAME);
        }
    }

    [[nodiscard]] bool match(std::string_view path) const {
        return std::ranges::find(literals, path) != literals.end()
               || std::ranges::any_of(prefixes, [&](const auto& prefix) { return path.starts_with(prefix); })
               || std::ranges::any_of(patterns, [&](const auto& pattern) { return pattern.match(path); });
    }

private:
    std::vector<std::string> literals;
    std::vector<std::string> prefixes;
    std::vector<Pattern> patterns;
};

} // namespace

struct Exclusions::Compiled {
    explicit Compiled(std::string rules) : text(std::move(rules)) {
        for (const auto prefix : reservedPrefixes) names.addPrefix(prefix);
        for (const auto line : nonEmptyLines(text)) {
            if (const auto rule = trimmedBlanks(line); !rule.empty()) add(rule);
        }
    }

    void add(std::string_view rule) {
        if (rule.find('/') != std::string_view::npos) {
            paths.add(rule);
        } else if (!containsNul(rule)) {
            names.add(rule);
        }
    }

    std::string text;
    NameRules names;
    PathRules paths;
};

Exclusions::Exclusions(std::string text) : compiled(std::make_shared<const Compiled>(std::move(text))) {}

const std::string& Exclusions::text() const { return compiled->text; }

bool Exclusions::match(std::string_view path) const {
    for (auto rest = path; !rest.empty();) {
        const auto component = rest.substr(0, rest.find('/'));
        if (!component.empty() && compiled->names.match(component)) return true;
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
    }
    return compiled->paths.match(path);
}

std::optional<Exclusions::Cause> Exclusions::cause(std::string_view path) const {
    std::string way;
    for (const auto component : splitNonEmpty(path, '/')) {
        if (!way.empty()) way += '/';
        way += component;
        for (const auto prefix : reservedPrefixes) {
            if (component.starts_with(prefix)) return Cause{.path = way, .rule = std::string(prefix), .reserved = true};
        }
        if (!matchEntry(way)) continue;
        for (const auto line : nonEmptyLines(text())) {
            const std::string rule(trimmedBlanks(line));
            if (Exclusions(rule).matchEntry(way)) return Cause{.path = way, .rule = rule};
        }
    }
    return std::nullopt;
}

bool Exclusions::matchEntry(std::string_view path) const {
    auto component = path.substr(0, path.find_last_not_of('/') + 1);
    component.remove_prefix(component.rfind('/') + 1);
    return (!component.empty() && compiled->names.match(component)) || compiled->paths.match(path);
}

} // namespace zembrastel
