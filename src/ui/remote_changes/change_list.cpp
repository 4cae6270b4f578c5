#include "ui/remote_changes/change_list.h"

#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"

#include <QScrollBar>

#include <algorithm>

namespace zembrastel::ui {
namespace {

QDateTime atSecond(double sinceEpoch) { return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(sinceEpoch) * 1000); }

constexpr int rowWithWarning = 80;
constexpr int usualLine = 20;
constexpr int endMargin = 6; // room for the scroll bar
constexpr int tickLeft = 10;
constexpr int tickTop = 10;
constexpr int tickSide = 18;
constexpr int textLeft = 40;
constexpr int textEnd = 10;
constexpr int columnWidth = 196;
constexpr int columnGap = 16;
constexpr int triangleSide = 16;

// The extra height of each line if the desktop's text is larger than in the design.
int extraPerLine() { return std::max(0, lineHeight(TextStyle::strong) - usualLine); }

} // namespace

PathSet preselection(const std::vector<RemoteChange>& changes) {
    PathSet ticked;
    for (const auto& change : changes) {
        if (!change.bothChanged) ticked.insert(change.path);
    }
    return ticked;
}

ChangeListModel::ChangeListModel(const RemoteReview& review, QObject* parent)
    : QAbstractListModel(parent), changes(review.changes), ticked(preselection(review.changes)) {}

QString ChangeListModel::localDate(const RemoteChange& change) {
    return tr("Local: %1").arg(dateWithMonthName(atSecond(change.local.modified), QLocale()));
}

QString ChangeListModel::serverDate(const RemoteChange& change) {
    return tr("Server: %1").arg(dateWithMonthName(atSecond(sinceUnixEpoch(change.remoteDate).count()), QLocale()));
}

QString ChangeListModel::warning() { return tr("Also changed locally since the last sync"); }

QString ChangeListModel::accessibleText(const RemoteChange& change) const {
    QStringList parts{
        toQString(change.path), isTicked(change) ? tr("Selected") : tr("Not selected"), localDate(change),
        serverDate(change)};
    if (change.bothChanged) parts += warning();
    return parts.join(QStringLiteral(", "));
}

int ChangeListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(changes.size());
}

QVariant ChangeListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const RemoteChange& shown = change(index);
    switch (role) {
    case Qt::DisplayRole:
        return toQString(shown.path);
    case Qt::ToolTipRole:
        return asToolTip(toQString(shown.path));
    case Qt::CheckStateRole:
        return isTicked(shown) ? Qt::Checked : Qt::Unchecked;
    case Qt::AccessibleTextRole:
        return accessibleText(shown);
    default:
        return {};
    }
}

Qt::ItemFlags ChangeListModel::flags(const QModelIndex&) const {
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
}

void ChangeListModel::toggle(const QModelIndex& index) {
    const std::string& path = change(index).path;
    if (ticked.erase(path) == 0) ticked.insert(path);
    Q_EMIT dataChanged(index, index);
}

void ChangeListModel::tickAll(bool wanted) {
    ticked.clear();
    if (wanted) {
        for (const auto& each : changes) ticked.insert(each.path);
    }
    if (!changes.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

ChangeListDelegate::ChangeListDelegate(const ChangeListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QSize ChangeListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const int extra = extraPerLine();
    return {1, rows.change(index).bothChanged ? rowWithWarning + 3 * extra : minRowHeight + 2 * extra};
}

void ChangeListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const RemoteChange& change = rows.change(index);
    const QRect row = option.rect.adjusted(0, 0, -endMargin, 0);
    const QRect plate = row.adjusted(0, 1, 0, -2);
    RowPainter to(*painter, option);
    if (index.row() + 1 < rows.rowCount()) to.divider(row.left() + textLeft, row.right() - textEnd);
    if (to.hovered()) to.plate(plate, colours().hover);
    to.focusRing(plate);
    const QRect tick(row.left() + tickLeft, row.top() + tickTop + extraPerLine() / 2, tickSide, tickSide);
    to.tick(tick, rows.isTicked(change) ? Qt::Checked : Qt::Unchecked);
    paintTexts(to, row.adjusted(textLeft, 0, -textEnd, 0), change);
}

void ChangeListDelegate::paintTexts(RowPainter& painter, const QRect& row, const RemoteChange& change) {
    const Colours& now = colours();
    const int extra = extraPerLine();
    const auto lineAt = [&](int number, int top) {
        return QRect(row.left(), row.top() + top + number * extra, row.width(), usualLine + extra);
    };
    const LineLook dates{.style = TextStyle::small, .colour = now.dim, .elide = Qt::ElideRight};
    painter.line(lineAt(0, 9), toQString(change.path), {.style = TextStyle::strong, .colour = now.text});
    QRect where = lineAt(1, 29);
    const int local = painter.line(where, ChangeListModel::localDate(change), dates);
    where.setLeft(where.left() + std::max(columnWidth, local + columnGap));
    painter.line(where, ChangeListModel::serverDate(change), dates);
    if (!change.bothChanged) return;
    QRect warning = lineAt(2, 51);
    const QRect triangle(warning.left(), warning.top() + 2 + extra / 2, triangleSide, triangleSide);
    painter.symbol(triangle, "exclamationmark.triangle", now.warn);
    warning.setLeft(triangle.right() + 7);
    painter.line(
        warning, ChangeListModel::warning(),
        {.style = TextStyle::fieldLabel, .colour = now.warnText, .elide = Qt::ElideRight});
}

ChangeListView::ChangeListView(ChangeListModel& shown, QWidget* parent) : RowList(parent), rows(shown) {
    setModel(&rows);
    setItemDelegate(new ChangeListDelegate(rows, this));
    verticalScrollBar()->setSingleStep(ChangeListDelegate::minRowHeight / 2);
}

int ChangeListView::partAt(const QModelIndex&, const QPoint&) const { return 1; }

void ChangeListView::partClicked(const QModelIndex& row, int) { rows.toggle(row); }

bool ChangeListView::keyPressed(const QModelIndex& row, int key) {
    if (key != Qt::Key_Space) return false;
    rows.toggle(row);
    return true;
}

} // namespace zembrastel::ui
