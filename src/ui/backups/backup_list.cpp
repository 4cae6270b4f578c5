#include "ui/backups/backup_list.h"

#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"

#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int padding = 8;
constexpr int lineGap = 2;
constexpr int endMargin = 6; // room for the scroll bar
constexpr int symbolLeft = 12;
constexpr int symbolSide = 18;
constexpr int textLeft = 42;
constexpr int textEnd = 12;
constexpr int columnWidth = 216;
constexpr int columnGap = 16;

constexpr int emptyMargin = 32;
constexpr int emptyGap = 6;

} // namespace

void BackupListModel::show(std::vector<Backup> shown) {
    beginResetModel();
    versions = std::move(shown);
    endResetModel();
}

bool BackupListModel::isOlderVersion(const QModelIndex& index) const {
    return index.row() > 0 && backup(index.siblingAtRow(index.row() - 1)).path == backup(index).path;
}

QString BackupListModel::replacedText(const Backup& backup) {
    return tr("Replaced: %1").arg(dateWithMonthName(localTime(backup.kept), QLocale()));
}

QString BackupListModel::changedText(const Backup& backup) {
    return tr("Last changed: %1").arg(dateWithMonthName(localTime(backup.modified), QLocale()));
}

int BackupListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(versions.size());
}

QVariant BackupListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Backup& shown = backup(index);
    const QString path = toQString(shown.path);
    switch (role) {
    case Qt::DisplayRole:
        return path;
    case Qt::ToolTipRole:
        return asToolTip(path);
    case Qt::AccessibleTextRole:
        return QStringList{path, replacedText(shown), changedText(shown), sizeText(shown.size)}.join(
            QStringLiteral(", "));
    default:
        return {};
    }
}

BackupListDelegate::BackupListDelegate(const BackupListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QSize BackupListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {1, 2 * padding + lineHeight(TextStyle::strong) + lineGap + lineHeight(TextStyle::small)};
}

void BackupListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const Backup& backup = rows.backup(index);
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    to.rowPlate(plate);
    to.focusRing(plate);
    const QColor dim = to.selected() ? colours().selectedDim : colours().dim;
    // Only the newest version of a file has a symbol.
    if (!rows.isOlderVersion(index)) {
        to.symbol(centredIn(row, row.left() + symbolLeft, {symbolSide, symbolSide}), "file", colours().accent);
    }
    QRect title(
        row.left() + textLeft, row.top() + padding, row.width() - textLeft - textEnd, lineHeight(TextStyle::strong));
    QRect where(title.left(), title.bottom() + 1 + lineGap, title.width(), lineHeight(TextStyle::small));
    const QString size = sizeText(backup.size);
    const int sizeWidth = lineWidth(TextStyle::small, size);
    to.line(where, size, {.style = TextStyle::small, .colour = dim, .elide = Qt::ElideNone, .side = Qt::AlignRight});
    to.line(title, toQString(backup.path), {.style = TextStyle::strong, .colour = colours().text});
    where.setRight(where.right() - sizeWidth - columnGap);
    const LineLook dates{.style = TextStyle::small, .colour = dim, .elide = Qt::ElideRight};
    const int replaced = to.line(where, BackupListModel::replacedText(backup), dates);
    where.setLeft(where.left() + std::max(columnWidth, replaced + columnGap));
    to.line(where, BackupListModel::changedText(backup), dates);
}

BackupListView::BackupListView(BackupListModel& shown, QWidget* parent) : RowList(parent) {
    setSelectionMode(SingleSelection);
    setUniformItemSizes(true);
    setModel(&shown);
    setItemDelegate(new BackupListDelegate(shown, this));
}

void BackupListView::setPlaceholder(const QString& title, const QString& explanation) {
    emptyTitle = title;
    emptyExplanation = explanation;
    // For screen readers, which find no rows.
    setAccessibleDescription(title.isEmpty() ? QString() : title + QStringLiteral(". ") + explanation);
    viewport()->update();
}

// The press has already selected the row.
int BackupListView::partAt(const QModelIndex&, const QPoint&) const { return 0; }
void BackupListView::partClicked(const QModelIndex&, int) {}

bool BackupListView::keyPressed(const QModelIndex&, int key) {
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    Q_EMIT openRequested();
    return true;
}

void BackupListView::paintEvent(QPaintEvent* event) {
    RowList::paintEvent(event);
    if (model()->rowCount() > 0) return;
    QPainter painter(viewport());
    const QRect room = viewport()->rect().adjusted(emptyMargin, emptyMargin, -emptyMargin, -emptyMargin);
    painter.setFont(fontOf(TextStyle::strong));
    painter.setPen(colours().text);
    const int above = room.top() + room.height() / 3;
    QRect used;
    painter.drawText(
        QRect(room.left(), above, room.width(), room.bottom() - above),
        Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyTitle, &used);
    painter.setFont(fontOf(TextStyle::explanation));
    painter.setPen(colours().dim);
    const int below = used.bottom() + emptyGap;
    painter.drawText(
        QRect(room.left(), below, room.width(), room.bottom() - below),
        Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyExplanation);
}

} // namespace zembrastel::ui
