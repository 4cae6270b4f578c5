#include "ui/import/import_list.h"

#include "model/import/profile_import.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"

#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

void updateObstacle(ImportLine& line, const std::vector<Profile>& others) {
    line.obstacle.clear();
    line.needsFolder = false;
    try {
        (void)importable(line.candidate.profile, others);
    } catch (const LocalFolderWanted& error) {
        line.obstacle = error.what();
        line.needsFolder = true;
    } catch (const std::exception& error) {
        line.obstacle = describe(error);
    }
    line.ticked = line.canBeTicked();
}

constexpr int usualLine = 20;
constexpr int inset = 9; // above the first line and below the last
constexpr int endMargin = 6;
constexpr int tickLeft = 10;
constexpr int tickSide = 18;
constexpr int textLeft = 40;
constexpr int textEnd = 10;
constexpr int gap = 12;
constexpr int buttonPadding = 12;
constexpr int symbolSide = 16;

// Higher than in the design if the desktop's text is large.
int height() { return std::max(usualLine, lineHeight(TextStyle::strong)); }

int lineCount(const ImportLine& line) { return (line.skipped ? 2 : 3) + static_cast<int>(line.candidate.notes.size()); }

constexpr int scrollStep = 28;

} // namespace

std::vector<ImportLine> importLines(ProfilesFound found, const std::vector<Profile>& others) {
    std::vector<ImportLine> lines;
    for (auto& candidate : found.candidates) {
        ImportLine& line = lines.emplace_back();
        line.candidate = std::move(candidate);
        updateObstacle(line, others);
    }
    for (auto& skipped : found.skipped) {
        ImportLine& line = lines.emplace_back();
        line.candidate.profile.name = std::move(skipped.name);
        line.obstacle = std::move(skipped.reason);
        line.skipped = true;
    }
    return lines;
}

void ImportListModel::show(std::vector<ImportLine> found) {
    beginResetModel();
    lines = std::move(found);
    endResetModel();
}

std::vector<int> ImportListModel::tickedRows() const {
    std::vector<int> rows;
    for (int row = 0; row < rowCount(); ++row) {
        if (line(row).ticked) rows.push_back(row);
    }
    return rows;
}

int ImportListModel::importableCount() const {
    return static_cast<int>(std::ranges::count_if(lines, &ImportLine::canBeTicked));
}

void ImportListModel::toggle(int row) {
    ImportLine& toggled = lines[static_cast<std::size_t>(row)];
    if (!toggled.canBeTicked()) return;
    toggled.ticked = !toggled.ticked;
    changed(row);
}

void ImportListModel::tickAll(bool wanted) {
    for (auto& line : lines) line.ticked = wanted && line.canBeTicked();
    if (!lines.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void ImportListModel::setLocalFolder(int row, const std::string& folder, const std::vector<Profile>& others) {
    ImportLine& named = lines[static_cast<std::size_t>(row)];
    named.candidate.profile.localFolder = folder;
    updateObstacle(named, others);
    changed(row);
}

void ImportListModel::setDone(int row) {
    ImportLine& imported = lines[static_cast<std::size_t>(row)];
    imported.done = true;
    imported.ticked = false;
    changed(row);
}

QString ImportListModel::server(const ImportLine& line) {
    if (line.skipped) return tr("Skipped: %1").arg(toQString(line.obstacle));
    const Profile& profile = line.candidate.profile;
    return tr("%1@%2:%3 · %4 · %5")
        .arg(
            toQString(profile.username), toQString(profile.host), QString::number(profile.port),
            toQString(rawValue(profile.transport)), toQString(profile.remoteFolder));
}

QString ImportListModel::place(const ImportLine& line) {
    if (line.done) return tr("Imported.");
    if (!line.obstacle.empty()) return toQString(line.obstacle);
    return tr("Local folder: %1").arg(toQString(line.candidate.profile.localFolder));
}

QString ImportListModel::folderAction(const ImportLine& line) {
    return line.needsFolder ? tr("Choose local folder…") : tr("Change…");
}

QString ImportListModel::accessibleText(const ImportLine& line) {
    QStringList parts{toQString(line.candidate.profile.name)};
    if (line.canBeTicked()) parts << (line.ticked ? tr("Selected") : tr("Not selected"));
    parts << server(line);
    if (!line.skipped) parts << place(line);
    if (line.needsFolder) parts << folderAction(line);
    for (const auto& note : line.candidate.notes) parts << toQString(note);
    return parts.join(QStringLiteral(", "));
}

int ImportListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ImportListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const ImportLine& shown = line(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return toQString(shown.candidate.profile.name);
    case Qt::ToolTipRole:
        return asToolTip(accessibleText(shown));
    case Qt::CheckStateRole:
        return shown.skipped ? QVariant() : QVariant(shown.ticked ? Qt::Checked : Qt::Unchecked);
    case Qt::AccessibleTextRole:
        return accessibleText(shown);
    default:
        return {};
    }
}

Qt::ItemFlags ImportListModel::flags(const QModelIndex&) const {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

ImportListDelegate::ImportListDelegate(const ImportListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QSize ImportListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    return {1, 2 * inset + lineCount(rows.line(index.row())) * height()};
}

// For a left-to-right layout.
QRect ImportListDelegate::buttonIn(const QRect& row, const ImportLine& line) {
    if (!line.acceptsFolder()) return {};
    const int width = lineWidth(TextStyle::body, ImportListModel::folderAction(line)) + 2 * buttonPadding;
    const int right = row.right() - endMargin - textEnd;
    return {right - width + 1, row.top() + inset, width, lineHeight(TextStyle::body) + 10};
}

ImportListDelegate::Part ImportListDelegate::partAt(
    const QRect& row, int number, const QPoint& point, Qt::LayoutDirection direction) const {
    const ImportLine& line = rows.line(number);
    const QPoint hit = QStyle::visualRect(direction, row, QRect(point, QSize(1, 1))).topLeft();
    if (buttonIn(row, line).contains(hit)) return folder;
    return line.canBeTicked() ? tick : none;
}

void ImportListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ImportLine& line = rows.line(index.row());
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    if (to.hovered() && line.canBeTicked()) to.plate(plate, colours().hover);
    to.focusRing(plate);
    if (!line.skipped && !line.done) {
        const QRect place(row.left() + tickLeft, row.top() + inset + (height() - tickSide) / 2, tickSide, tickSide);
        to.tick(place, line.ticked ? Qt::Checked : Qt::Unchecked, !line.canBeTicked());
    }
    const QRect button = buttonIn(option.rect, line);
    paintTexts(to, row.adjusted(textLeft, 0, button.isNull() ? -textEnd : -button.width() - textEnd - gap, 0), line);
    if (!button.isNull()) to.button(button, ImportListModel::folderAction(line));
}

void ImportListDelegate::paintTexts(RowPainter& painter, const QRect& row, const ImportLine& line) {
    const Colours& now = colours();
    int top = row.top() + inset;
    const auto next = [&] {
        const QRect place(row.left(), top, row.width(), height());
        top += height();
        return place;
    };
    const LineLook details{.style = TextStyle::small, .colour = now.dim};
    const auto warn = [&](const QString& text) {
        QRect place = next();
        painter.symbol(centredIn(place, place.left(), {symbolSide, symbolSide}), "exclamationmark.triangle", now.warn);
        place.setLeft(place.left() + symbolSide + 6);
        painter.line(place, text, {.style = TextStyle::small, .colour = now.warnText, .elide = Qt::ElideRight});
    };
    painter.line(
        next(), toQString(line.candidate.profile.name),
        {.style = TextStyle::strong, .colour = line.canBeTicked() || line.needsFolder ? now.text : now.dim});
    painter.line(next(), ImportListModel::server(line), details);
    if (line.skipped) return;
    if (line.obstacle.empty()) {
        painter.line(next(), ImportListModel::place(line), details);
    } else {
        warn(ImportListModel::place(line));
    }
    for (const auto& note : line.candidate.notes) {
        painter.line(next(), toQString(note), {.style = TextStyle::small, .colour = now.dim, .elide = Qt::ElideRight});
    }
}

ImportListView::ImportListView(ImportListModel& shown, QWidget* parent)
    : RowList(parent), rows(shown), delegate(new ImportListDelegate(shown, this)) {
    setModel(&rows);
    setItemDelegate(delegate);
    verticalScrollBar()->setSingleStep(scrollStep);
}

int ImportListView::partAt(const QModelIndex& row, const QPoint& point) const {
    return delegate->partAt(visualRect(row), row.row(), point, layoutDirection());
}

void ImportListView::partClicked(const QModelIndex& row, int part) {
    if (part == ImportListDelegate::folder) {
        Q_EMIT folderRequested(row.row());
    } else {
        rows.toggle(row.row());
    }
}

bool ImportListView::keyPressed(const QModelIndex& row, int key) {
    const ImportLine& line = rows.line(row.row());
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if ((isEnter && line.needsFolder) || (key == Qt::Key_F2 && line.acceptsFolder())) {
        Q_EMIT folderRequested(row.row());
        return true;
    }
    if (key != Qt::Key_Space) return false;
    rows.toggle(row.row());
    return true;
}

} // namespace zembrastel::ui
