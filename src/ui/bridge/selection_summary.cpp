#include "ui/bridge/selection_summary.h"

#include <QCoreApplication>

#include <algorithm>

namespace zembrastel::ui {
namespace {

QString tr(const char* text) { return QCoreApplication::translate("SelectionSummary", text); }

// "1 file", "2 files".
QString counted(std::size_t count, const QString& one, const QString& many) {
    return count == 1 ? one : many.arg(count);
}

std::size_t countRules(const DownloadSelection& selection, bool ticked) {
    return static_cast<std::size_t>(
        std::ranges::count_if(selection.rules, [ticked](const auto& rule) { return rule.second == ticked; }));
}

QString allOf(SelectionScope scope) {
    return scope == SelectionScope::server ? tr("All files on the server") : tr("All files in the local folder");
}

QString describeTicked(
    const DownloadSelection& selection, const std::optional<TickedKinds>& kinds, SelectionScope scope) {
    const auto root = selection.rules.find("");
    if (root != selection.rules.end() && root->second) return allOf(scope);
    if (!kinds) return counted(countRules(selection, true), tr("1 item selected"), tr("%1 items selected"));
    const QString folders = counted(kinds->folders, tr("1 folder"), tr("%1 folders"));
    const QString files = counted(kinds->files, tr("1 file"), tr("%1 files"));
    if (kinds->files == 0) return tr("%1 selected").arg(folders);
    if (kinds->folders == 0) return tr("%1 selected").arg(files);
    return tr("%1 and %2 selected").arg(folders, files);
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
    if (!selection.hasSelection()) return tr("Nothing selected");
    QString ticked = describeTicked(selection, kinds, scope);
    const std::size_t exceptions = countRules(selection, false);
    if (exceptions == 0) return ticked;
    return tr("%1, %2").arg(ticked, counted(exceptions, tr("1 exception"), tr("%1 exceptions")));
}

QString syncContentsSummary(const Profile& profile, const FileMap& synchronised) {
    const auto& selection = profile.effectiveSyncSelection();
    if (!selection) return allOf(SelectionScope::localFolder);
    return selectionSummary(*selection, countTicked(*selection, amongFiles(synchronised)));
}

} // namespace zembrastel::ui
