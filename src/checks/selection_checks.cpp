#include "checks/check.h"
#include "model/profile.h"
#include "model/saved_state.h"

namespace zembrastel {
namespace {

using Paths = std::initializer_list<std::string_view>;
using Mark = DownloadSelection::Mark;

void requireIncluded(const DownloadSelection& selection, bool included, Paths paths) {
    requireForAll(
        paths, "included", included, [&selection](std::string_view path) { return selection.includes(path); });
}

void requireVisited(const DownloadSelection& selection, bool visited, Paths paths) {
    requireForAll(
        paths, "visited", visited, [&selection](std::string_view path) { return selection.shouldVisit(path); });
}

void requireMarked(const DownloadSelection& selection, Mark mark, Paths paths) {
    constexpr const char* words[] = {"unmarked", "marked as partial", "marked as a whole"};
    requireForAll(paths, words[static_cast<int>(mark)], true, [&](std::string_view path) {
        return selection.mark(path) == mark;
    });
}

void completeComponents() {
    const DownloadSelection selection{.rules = {{"docs", true}}};
    requireIncluded(selection, true, {"docs", "docs/a.txt"});
    requireIncluded(selection, false, {"docs2/a.txt", "docs2", "doc", "a/docs"});
}

void includedAgain() {
    DownloadSelection selection{.rules = {{"docs", true}, {"docs/private", false}}};
    requireIncluded(selection, true, {"docs/public/x"});
    requireIncluded(selection, false, {"docs/private/x", "docs/private/keep.txt"});
    selection.rules["docs/private/keep.txt"] = true;
    requireIncluded(selection, true, {"docs/private/keep.txt"});
    requireIncluded(selection, false, {"docs/private/x"});
}

void emptySelection() {
    requireIncluded({}, false, {"", "docs", "docs/a.txt"});
    requireVisited({}, false, {"", "docs"});
}

void singleFile() {
    const DownloadSelection selection{.rules = {{"a/b/c.txt", true}}};
    requireVisited(selection, true, {"", "a", "a/b"});
    requireVisited(selection, false, {"a/x", "z"});
}

void partialMarks() {
    const DownloadSelection selection{
        .rules = {{"docs/a.txt", true}, {"images", true}, {"site", true}, {"site/old", false}}};
    requireMarked(selection, Mark::partial, {"", "docs", "site"});
    requireMarked(selection, Mark::all, {"docs/a.txt", "images", "images/logo.png", "site/new"});
    requireMarked(selection, Mark::none, {"docs/b.txt", "site/old", "z"});
}

void clearedChoices() {
    DownloadSelection selection;
    selection.set("docs/a.txt", true);
    selection.set("docs/b.txt", true);
    requireMarked(selection, Mark::partial, {"docs"});
    selection.set("docs", false);
    require(selection.rules.empty(), std::to_string(selection.rules.size()) + " rules are left");
    requireMarked(selection, Mark::none, {"docs"});
}

void serialization() {
    Profile profile;
    profile.initialDownloadSelection =
        DownloadSelection{.rules = {{"", true}, {"docs", false}, {"docs/private/keep.txt", true}}};
    profile.syncSelection = DownloadSelection{};
    const auto restored = decodeProfile(encode(profile));
    require(
        restored.initialDownloadSelection == profile.initialDownloadSelection,
        "the rules changed: " + encode(restored));
    require(restored.syncSelection == profile.syncSelection, "a selection of nothing changed: " + encode(restored));
    require(decodeProfile(encode(Profile{})).effectiveSyncSelection() == std::nullopt, "a selection was invented");
}

} // namespace

Checks selectionChecks() {
    return {
        {"selection uses complete path components", completeComponents},
        {"explicit descendant can be included again", includedAgain},
        {"empty selection downloads nothing", emptySelection},
        {"single file selection visits only its ancestors", singleFile},
        {"partial folder selection marks", partialMarks},
        {"deselecting a folder clears descendant choices", clearedChoices},
        {"selection survives profile serialization", serialization}};
}

} // namespace zembrastel
