#include "ui/remote_folder/folder_tree_model.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"

#include <algorithm>

namespace zembrastel::ui {

using Kind = FolderLine::Kind;

std::vector<FolderLine> FolderTreeModel::wantedLines() const {
    std::vector<FolderLine> wanted;
    if (folders.loginFolder()) {
        append(wanted, {.path = "", .name = "/"}, 0);
    } else {
        wanted.push_back({.kind = folders.failure().empty() ? Kind::loading : Kind::failure, .depth = 0, .path = ""});
    }
    return wanted;
}

void FolderTreeModel::append(std::vector<FolderLine>& to, const RemoteFolder& folder, int depth) const {
    to.push_back({.kind = Kind::folder, .depth = depth, .path = folder.path, .name = folder.name});
    const int below = depth + 1;
    if (auto line = newFolderIn(folder.path, below)) to.push_back(std::move(*line));
    if (!folders.isOpen(folder.path)) return;
    if (auto message = messageOf(folder.path, below)) to.push_back(std::move(*message));
    for (const auto& subfolder : folders.subfolders(folder.path)) append(to, subfolder, below);
}

std::optional<FolderLine> FolderTreeModel::newFolderIn(const std::string& parent, int depth) const {
    if (edited == parent) return FolderLine{.kind = Kind::edit, .depth = depth, .path = parent};
    const auto& creation = folders.creation();
    if (!creation || creation->parent != parent) return std::nullopt;
    const auto kind = creation->failure.empty() ? Kind::creating : Kind::refused;
    return FolderLine{.kind = kind, .depth = depth, .path = parent, .name = creation->name};
}

std::optional<FolderLine> FolderTreeModel::messageOf(const std::string& folder, int depth) const {
    const auto message = [&](Kind kind) { return FolderLine{.kind = kind, .depth = depth, .path = folder}; };
    if (!folders.failureOf(folder).empty()) return message(Kind::failure);
    if (folders.isLoading(folder)) {
        return folders.isLoaded(folder) ? std::nullopt : std::optional(message(Kind::loading));
    }
    return folders.subfolders(folder).empty() ? std::optional(message(Kind::empty)) : std::nullopt;
}

QString FolderTreeModel::shownText(const FolderLine& line) const {
    switch (line.kind) {
    case Kind::loading:
        return tr("Loading folder…");
    case Kind::failure:
        return engineText(folders.loginFolder() ? folders.failureOf(line.path) : folders.failure());
    case Kind::empty:
        return tr("This folder has no subfolders.");
    case Kind::creating:
        return tr("Creating the folder %1…").arg(toQString(line.name));
    case Kind::refused:
        return folders.creation() ? engineText(folders.creation()->failure) : QString();
    case Kind::edit:
        return tr("Name of the new folder");
    case Kind::folder:
        break;
    }
    return toQString(line.name);
}

bool FolderTreeModel::isLoginFolder(const FolderLine& line) const {
    return line.kind == Kind::folder && folders.loginFolder() == line.path;
}

QModelIndex FolderTreeModel::rowOf(const std::string& path) const {
    const auto found = std::ranges::find_if(
        lines, [&path](const FolderLine& line) { return line.kind == Kind::folder && line.path == path; });
    return found == lines.end() ? QModelIndex() : index(static_cast<int>(found - lines.begin()));
}

QModelIndex FolderTreeModel::editedRow() const {
    const auto found = std::ranges::find(lines, Kind::edit, &FolderLine::kind);
    return found == lines.end() ? QModelIndex() : index(static_cast<int>(found - lines.begin()));
}

void FolderTreeModel::edit(const std::string& parent) {
    edited = parent;
    update();
}

void FolderTreeModel::endEditing() {
    edited.reset();
    update();
}

void FolderTreeModel::update() {
    replaceLines(lines, wantedLines());
    if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

bool FolderTreeModel::isOpen(const QModelIndex& row) const { return isFolder(row) && folders.isOpen(line(row).path); }

void FolderTreeModel::toggleFold(const QModelIndex& row) {
    if (!isFolder(row)) return;
    const auto path = line(row).path;
    folders.settleTarget();
    folders.toggle(path);
}

void FolderTreeModel::retry(const QModelIndex& row) {
    const FolderLine tried = line(row);
    if (tried.kind == Kind::refused) {
        folders.create(tried.path, tried.name);
    } else if (tried.kind == Kind::failure) {
        folders.loginFolder() ? folders.load(tried.path) : folders.connect();
    }
}

int FolderTreeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

// A folder is announced by its path.
QString FolderTreeModel::accessibleText(const FolderLine& line) const {
    if (line.kind == Kind::folder) return u'/' + toQString(line.path);
    const bool failed = line.kind == Kind::failure || line.kind == Kind::refused;
    return failed ? tr("%1, Retry").arg(shownText(line)) : shownText(line);
}

QString FolderTreeModel::describe(const QModelIndex& row) const {
    QStringList parts{levelOf(row)};
    if (isFolder(row)) parts += isOpen(row) ? tr("open folder") : tr("closed folder");
    if (isLoginFolder(line(row))) parts += tr("Login folder");
    return parts.join(QStringLiteral(", "));
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const FolderLine& shown = line(index);
    switch (role) {
    case Qt::DisplayRole:
        return shownText(shown);
    case Qt::ToolTipRole:
        return asToolTip(shown.kind == Kind::folder ? accessibleText(shown) : shownText(shown));
    case Qt::AccessibleTextRole:
        return accessibleText(shown);
    case Qt::AccessibleDescriptionRole:
        return describe(index);
    default:
        return {};
    }
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex&) const {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

} // namespace zembrastel::ui
