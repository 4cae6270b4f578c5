#include "ui/bridge/selection_summary.h"

#include <QCoreApplication>

#include <algorithm>

namespace zembrastel::ui {
namespace {

struct SelectionSummary {
    Q_DECLARE_TR_FUNCTIONS(SelectionSummary)
};

int number(std::size_t count) { return static_cast<int>(count); }

std::size_t countRules(const DownloadSelection& selection, bool ticked) {
    return static_cast<std::size_t>(
        std::ranges::count_if(selection.rules, [ticked](const auto& rule) { return rule.second == ticked; }));
}

QString allOf(SelectionScope scope) {
    return scope == SelectionScope::server ? SelectionSummary::tr("All files on the server")
                                           : SelectionSummary::tr("All files in the local folder");
}

QString describeTicked(
    const DownloadSelection& selection, const std::optional<TickedKinds>& kinds, SelectionScope scope) {
    const auto root = selection.rules.find("");
    if (root != selection.rules.end() && root->second) return allOf(scope);
    if (!kinds) return SelectionSummary::tr("%n items selected", nullptr, number(countRules(selection, true)));
    const QString folders = SelectionSummary::tr("%n folders", nullptr, number(kinds->folders));
    const QString files = SelectionSummary::tr("%n files", nullptr, number(kinds->files));
    if (kinds->files == 0) return SelectionSummary::tr("%1 selected").arg(folders);
    if (kinds->folders == 0) return SelectionSummary::tr("%1 selected").arg(files);
    return SelectionSummary::tr("%1 and %2 selected").arg(folders, files);
}

} // namespace

std::optional<TickedKinds> countTicked(const DownloadSelection& selection, const FolderLookup& isFolder) {
    TickedKinds count;
    for (const auto& [path, ticked] : selection.rules) {
        if (!ticked) continue;
        const auto folder = isFolder(path);
        if (!folder) return std::nullopt;
        ++(*folder ? count.folders : count.files);
    }
    return count;
}

FolderLookup amongFiles(const FileMap& files) {
    return [&files](const std::string& path) -> std::optional<bool> {
        if (files.contains(path)) return false;
        return files.containsFolder(path) ? std::optional(true) : std::nullopt;
    };
}

QString selectionSummary(
    const DownloadSelection& selection, const std::optional<TickedKinds>& kinds, SelectionScope scope) {
    if (!selection.hasSelection()) return SelectionSummary::tr("Nothing selected");
    QString ticked = describeTicked(selection, kinds, scope);
    const std::size_t exceptions = countRules(selection, false);
    if (exceptions == 0) return ticked;
    return SelectionSummary::tr("%1, %2").arg(
        ticked, SelectionSummary::tr("%n exceptions", nullptr, number(exceptions)));
}

QString syncContentsSummary(const Profile& profile, const FileMap& synchronised) {
    const auto& selection = profile.effectiveSyncSelection();
    if (!selection) return allOf(SelectionScope::localFolder);
    return selectionSummary(*selection, countTicked(*selection, amongFiles(synchronised)));
}

} // namespace zembrastel::ui
