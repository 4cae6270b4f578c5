#include "ui/import/import_list.h"

#include "app/profile_takeover.h"
#include "ui/theme/text_style.h"

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

void judge(ImportLine& line, const std::vector<Profile>& others) {
    line.obstacle.clear();
    line.wantsFolder = false;
    try {
        (void)importable(line.candidate.profile, others);
    } catch (const LocalFolderWanted& error) {
        line.obstacle = error.what();
        line.wantsFolder = true;
    } catch (const std::exception& error) {
        line.obstacle = describe(error);
    }
    line.ticked = line.canBeTicked();
}

} // namespace

std::vector<ImportLine> importLines(ProfilesFound found, const std::vector<Profile>& others) {
    std::vector<ImportLine> lines;
    for (auto& candidate : found.candidates) {
        ImportLine& line = lines.emplace_back();
        line.candidate = std::move(candidate);
        judge(line, others);
    }
    for (auto& skipped : found.skipped) {
        ImportLine& line = lines.emplace_back();
        line.candidate.profile.name = std::move(skipped.name);
        line.obstacle = std::move(skipped.reason);
        line.skipped = true;
    }
    return lines;
}

void ImportRows::show(std::vector<ImportLine> found) {
    beginResetModel();
    lines = std::move(found);
    endResetModel();
}

std::vector<int> ImportRows::tickedRows() const {
    std::vector<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (line(row).ticked) rows.push_back(row);
    }
    return rows;
}

int ImportRows::countOfTakeable() const {
    return static_cast<int>(std::ranges::count_if(lines, &ImportLine::canBeTicked));
}

void ImportRows::toggle(int row) {
    ImportLine& toggled = lines[static_cast<std::size_t>(row)];
    if (!toggled.canBeTicked()) return;
    toggled.ticked = !toggled.ticked;
    changed(row);
}

void ImportRows::tickAll(bool wanted) {
    for (auto& line : lines) line.ticked = wanted && line.canBeTicked();
    if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void ImportRows::setLocalFolder(int row, const std::string& folder, const std::vector<Profile>& others) {
    ImportLine& named = lines[static_cast<std::size_t>(row)];
    named.candidate.profile.localFolder = folder;
    judge(named, others);
    changed(row);
}

void ImportRows::setDone(int row) {
    ImportLine& imported = lines[static_cast<std::size_t>(row)];
    imported.done = true;
    imported.ticked = false;
    changed(row);
}

QString ImportRows::server(const ImportLine& line) {
    if (line.skipped) return tr("Skipped: %1").arg(text(line.obstacle));
    const Profile& profile = line.candidate.profile;
    return tr("%1@%2:%3 · %4 · %5")
        .arg(
            text(profile.username), text(profile.host), QString::number(profile.port),
            text(std::string(rawValue(profile.transport))), text(profile.remoteFolder));
}

QString ImportRows::place(const ImportLine& line) {
    if (line.done) return tr("Imported.");
    if (!line.obstacle.empty()) return text(line.obstacle);
    return tr("Local folder: %1").arg(text(line.candidate.profile.localFolder));
}

QString ImportRows::folderAction(const ImportLine& line) {
    return line.wantsFolder ? tr("Choose local folder…") : tr("Change…");
}

QString ImportRows::spoken(const ImportLine& line) {
    QStringList parts{text(line.candidate.profile.name)};
    if (line.canBeTicked()) parts << (line.ticked ? tr("Selected") : tr("Not selected"));
    parts << server(line);
    if (!line.skipped) parts << place(line);
    if (line.wantsFolder) parts << folderAction(line);
    for (const auto& note : line.candidate.notes) parts << text(note);
    return parts.join(QStringLiteral(", "));
}

int ImportRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ImportRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const ImportLine& shown = line(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(shown.candidate.profile.name);
    case Qt::ToolTipRole:
        return asToolTip(spoken(shown));
    case Qt::CheckStateRole:
        return shown.skipped ? QVariant() : QVariant(shown.ticked ? Qt::Checked : Qt::Unchecked);
    case Qt::AccessibleTextRole:
        return spoken(shown);
    default:
        return {};
    }
}

Qt::ItemFlags ImportRows::flags(const QModelIndex&) const {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

} // namespace zembrastel::ui
