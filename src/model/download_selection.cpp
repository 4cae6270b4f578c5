#include "model/download_selection.h"

#include <algorithm>
#include <utility>

namespace zembrastel {
namespace {

// The rules for items below a folder. They are adjacent in byte order, from "folder/" up to "folder0", since "0"
// follows
// "/". Names such as "folder-old" sort between a folder's own rule and these.
auto below(auto& rules, std::string_view folder) {
    if (folder.empty()) return std::pair(rules.upper_bound(folder), rules.end());
    std::string bound(folder);
    bound += '/';
    const auto first = rules.lower_bound(bound);
    bound.back() = '/' + 1;
    return std::pair(first, rules.lower_bound(bound));
}

bool anyBelow(const auto& rules, std::string_view folder, bool wanted) {
    const auto [first, last] = below(rules, folder);
    return std::any_of(first, last, [wanted](const auto& rule) { return rule.second == wanted; });
}

} // namespace

const DownloadSelection& DownloadSelection::everything() {
    static const DownloadSelection selection{.rules = {{"", true}}};
    return selection;
}

bool DownloadSelection::contains(std::string_view ancestor, std::string_view path) {
    return ancestor.empty()
           || (path.starts_with(ancestor) && (path.size() == ancestor.size() || path[ancestor.size()] == '/'));
}

const std::pair<const std::string, bool>* DownloadSelection::governingRule(std::string_view path) const {
    if (rules.empty()) return nullptr;
    for (;;) {
        if (const auto rule = rules.find(path); rule != rules.end()) return &*rule;
        if (path.empty()) return nullptr;
        const auto slash = path.rfind('/');
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
}

bool DownloadSelection::includes(std::string_view path) const {
    const auto* rule = governingRule(path);
    return rule != nullptr && rule->second;
}

bool DownloadSelection::shouldVisit(std::string_view folder) const {
    return includes(folder) || anyBelow(rules, folder, true);
}

DownloadSelection::Mark DownloadSelection::mark(std::string_view path) const {
    const bool own = includes(path);
    if (anyBelow(rules, path, !own)) return Mark::partial;
    return own ? Mark::all : Mark::none;
}

void DownloadSelection::set(std::string_view path, bool selected) {
    std::string chosen(path); // `path` may be a view of a rule that is erased here
    const auto [first, last] = below(rules, chosen);
    rules.erase(first, last);
    rules.erase(chosen);
    if (selected != includes(chosen)) rules.emplace(std::move(chosen), selected);
}

bool DownloadSelection::hasSelection() const {
    return std::ranges::any_of(rules, [](const auto& rule) { return rule.second; });
}

std::string DownloadSelection::summary() const {
    return *this == everything() ? "All non-excluded files and folders" : "Custom file and folder selection";
}

} // namespace zembrastel
