// Exclusion rules, against a reading that tries every rule on every component.
#include "model/exclusions.h"

#include "platform/text.h"
#include "promise.h"
#include "targets.h"

#include <algorithm>
#include <fnmatch.h>
#include <string>

namespace zembrastel::fuzz {
namespace {

bool holdsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

bool wildcard(const std::string& rule, const std::string& text, int flags) {
    return !holdsNul(rule) && !holdsNul(text) && fnmatch(rule.c_str(), text.c_str(), flags) == 0;
}

bool ruleMatches(const std::string& rule, const std::string& path) {
    if (rule.find('/') == std::string::npos) {
        return std::ranges::any_of(
            splitNonEmpty(path, '/'), [&](auto name) { return wildcard(rule, std::string(name), 0); });
    }
    const auto first = std::min(rule.find_first_not_of('/'), rule.size());
    const auto last = rule.find_last_not_of('/') + 1;
    const std::string folder = first < last ? rule.substr(first, last - first) : "";
    return wildcard(rule, path, FNM_PATHNAME) || path.starts_with(folder + '/');
}

bool reserved(std::string_view name) {
    return name.starts_with(".zembrastel-") || name.starts_with(".~") || name.starts_with(".#");
}

bool plainReading(std::string_view rules, const std::string& path) {
    return std::ranges::any_of(splitNonEmpty(path, '/'), reserved)
           || std::ranges::any_of(nonEmptyLines(rules), [&](auto line) {
                  const auto rule = trimmedBlanks(line);
                  return !rule.empty() && ruleMatches(std::string(rule), path);
              });
}

} // namespace

void exclusions(std::string_view input) {
    const auto middle = std::min(input.find('\xFF'), input.size());
    const auto text = input.substr(0, middle);
    const std::string path(input.substr(std::min(middle + 1, input.size())));
    const Exclusions rules{std::string(text)};
    const bool excluded = rules.match(path);
    // Where a NUL byte stands, a name is compared byte by byte, which fnmatch cannot do.
    if (!holdsNul(input)) promise(excluded == plainReading(text, path), "rules mean what their description says");

    if (const auto cause = rules.cause(path); cause && !cause->reserved) {
        promise(Exclusions(cause->rule).match(cause->path), "the rule that is named excludes the path that is named");
    } else if (!cause) {
        promise(!excluded || join(splitNonEmpty(path, '/'), '/') != path, "what is excluded has a cause");
    }

    // A walk from the top, which asks for one level at a time and enters no excluded folder.
    for (auto slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (rules.match(path.substr(0, slash))) return;
    }
    promise(rules.matchEntry(path) == excluded, "a walk leaves out what the rules leave out");
}

} // namespace zembrastel::fuzz
