#include "model/download_selection.h"

#include <algorithm>
#include <ranges>

namespace zembrastel {
namespace {

// The rules of what lies below a folder. They stand together in the order of the bytes: from "folder/" up to "folder0",
// since "0" follows "/". Names such as "folder-old" sort between a folder's own rule and these.
auto below(auto& rules, std::string_view folder) {
    if (folder.empty()) return std::ranges::subrange(rules.upper_bound(folder), rules.end());
    std::string bound(folder);
    bound += '/';
    const auto first = rules.lower_bound(bound);
    bound.back() = '/' + 1;
    return std::ranges::subrange(first, rules.lower_bound(bound));
}

// The value of the deepest rule that contains the path, if any does.
const bool* governing(const auto& rules, std::string_view path) {
    if (rules.empty()) return nullptr;
    for (;;) {
        if (const auto rule = rules.find(path); rule != rules.end()) return &rule->second;
        if (path.empty()) return nullptr;
        const auto slash = path.rfind('/');
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
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

bool DownloadSelection::includes(std::string_view path) const {
    const auto* value = governing(rules, path);
    return value != nullptr && *value;
}

bool DownloadSelection::shouldVisit(std::string_view folder) const {
    return includes(folder) || std::ranges::any_of(below(rules, folder), [](const auto& rule) { return rule.second; });
}

DownloadSelection::Mark DownloadSelection::mark(std::string_view path) const {
    const bool own = includes(path);
    const auto differs = [own](const auto& rule) { return rule.second != own; };
    if (std::ranges::any_of(below(rules, path), differs)) return Mark::partial;
    return own ? Mark::all : Mark::none;
}

void DownloadSelection::set(std::string_view path, bool selected) {
    const auto forgotten = below(rules, path);
    rules.erase(forgotten.begin(), forgotten.end());
    if (const auto own = rules.find(path); own != rules.end()) rules.erase(own);
    if (selected != includes(path)) rules.emplace(path, selected);
}

bool DownloadSelection::hasSelection() const {
    return std::ranges::any_of(rules, [](const auto& rule) { return rule.second; });
}

std::string DownloadSelection::summary() const {
    return *this == everything() ? "All non-excluded files and folders" : "Custom file and folder selection";
}

} // namespace zembrastel
