// Ticks in the tree of contents, against a reading of the list of all that was ticked.
#include "model/download_selection.h"

#include "platform/text.h"
#include "promise.h"
#include "targets.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zembrastel::fuzz {
namespace {

using Ticks = std::vector<std::pair<std::string, bool>>;

bool within(std::string_view folder, std::string_view path) {
    return folder.empty() || (path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/'));
}

// The last tick on a path or on what contains it decides.
bool plainlyIncludes(const Ticks& ticks, std::string_view path) {
    bool included = false;
    for (const auto& [ticked, value] : ticks) {
        if (within(ticked, path)) included = value;
    }
    return included;
}

void checkPath(const DownloadSelection& selection, const Ticks& ticks, const std::string& path) {
    const bool included = selection.includes(path);
    promise(included == plainlyIncludes(ticks, path), "the last tick decides");
    bool other = false;
    for (const auto& [rule, value] : selection.rules) {
        if (within(path, rule) && rule != path && selection.includes(rule) != included) other = true;
    }
    const auto whole = included ? DownloadSelection::Mark::all : DownloadSelection::Mark::none;
    promise(selection.mark(path) == (other ? DownloadSelection::Mark::partial : whole), "a mark tells what is below");
    promise(selection.shouldVisit(path) == (included || other), "a walk enters what holds something selected");
    if (!included) return;
    for (auto end = path.rfind('/'); end != std::string::npos && end != 0; end = path.rfind('/', end - 1)) {
        promise(selection.shouldVisit(path.substr(0, end)), "a walk reaches all that is selected");
    }
    promise(selection.shouldVisit(""), "a walk begins where something is selected");
}

// Each rule says something that the rules above it do not.
void checkFewest(const DownloadSelection& selection) {
    for (const auto& [rule, value] : selection.rules) {
        DownloadSelection without = selection;
        without.rules.erase(rule);
        promise(without.includes(rule) != value, "the rules are as few as possible");
    }
}

} // namespace

void selection(std::string_view input) {
    constexpr std::size_t mostTicks = 40;
    DownloadSelection selection;
    Ticks ticks;
    for (const auto line : splitNonEmpty(input, '\n')) {
        if (ticks.size() == mostTicks) break;
        ticks.emplace_back(line.substr(1), line.front() == '+');
        selection.set(ticks.back().first, ticks.back().second);
    }
    checkFewest(selection);
    for (const auto& [path, value] : ticks) {
        checkPath(selection, ticks, path);
        checkPath(selection, ticks, path + "/x");
        checkPath(selection, ticks, path + "0");
        checkPath(selection, ticks, path.substr(0, path.rfind('/')));
    }
}

} // namespace zembrastel::fuzz
