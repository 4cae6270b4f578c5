#include "ui/content_picker/content_lines.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace zembrastel::ui {
namespace {

// What an open folder shows in place of contents, if anything.
std::optional<ContentLine> messageOf(const RemoteBrowserModel& browser, const std::string& folder, int depth) {
    const auto line = [&](ContentLine::Kind kind) {
        return ContentLine{.kind = kind, .depth = depth, .path = folder, .entry = nullptr};
    };
    if (browser.loading().contains(folder)) return line(ContentLine::Kind::loading);
    if (browser.errors().contains(folder)) return line(ContentLine::Kind::error);
    const auto found = browser.children().find(folder);
    if (found != browser.children().end() && found->second->empty()) return line(ContentLine::Kind::empty);
    return std::nullopt;
}

} // namespace

std::vector<ContentLine> contentLines(const RemoteBrowserModel& browser) {
    std::vector<RemoteBrowserRow> entries = browser.rows();
    std::vector<ContentLine> lines;
    lines.reserve(entries.size() + 1);
    if (auto message = messageOf(browser, "", 0)) lines.push_back(std::move(*message));
    for (auto& row : entries) {
        lines.push_back(
            {.kind = ContentLine::Kind::entry,
             .depth = row.depth,
             .path = std::move(row.path),
             .entry = std::move(row.entry)});
        const ContentLine& added = lines.back();
        if (!added.isFolder() || !browser.expanded().contains(added.path)) continue;
        if (auto message = messageOf(browser, added.path, added.depth + 1)) lines.push_back(std::move(*message));
    }
    return lines;
}

LineChange changeBetween(const std::vector<ContentLine>& former, const std::vector<ContentLine>& next) {
    const auto top = std::ranges::mismatch(former, next);
    const auto most = std::min(former.end() - top.in1, next.end() - top.in2);
    const auto bottom = std::mismatch(former.rbegin(), former.rbegin() + most, next.rbegin());
    const auto same = bottom.first - former.rbegin();
    return {
        .first = static_cast<int>(top.in1 - former.begin()),
        .formerEnd = static_cast<int>(std::ssize(former) - same),
        .nextEnd = static_cast<int>(std::ssize(next) - same)};
}

} // namespace zembrastel::ui
