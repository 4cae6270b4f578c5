#include "ui/main_window/profile_row.h"

#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"
#include "ui/widgets/status_symbol.h"

#include <QAbstractScrollArea>
#include <QMouseEvent>
#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int lowestRow = 56;
constexpr int sideInset = 8;
constexpr int padding = 12;
constexpr int moreSide = 28;
constexpr int moreSymbol = 20;
constexpr int lineGap = 2;

// The symbol, and the texts beside it, up to the button.
constexpr int symbolLeft = sideInset + padding;
constexpr int textLeft = symbolLeft + StatusSymbol::side + padding;

int textHeight() { return lineHeight(TextStyle::strong) + lineGap + lineHeight(TextStyle::small); }

// As though the reading direction were from left to right.
QRect moreIn(const QRect& row) {
    QRect area(0, 0, moreSide, moreSide);
    area.moveTopRight({row.right() - 2 * sideInset, row.top() + 5});
    return area;
}

void paintMore(RowPainter& painter, const QRect& row) {
    const QRect area = moreIn(row);
    if (painter.hovered(area)) {
        painter.plate(area.adjusted(2, 4, -2, -4), painter.selected() ? colours().hover : colours().selected, 6);
    }
    QRect where(0, 0, moreSymbol, moreSymbol);
    where.moveCenter(area.center());
    painter.symbol(where, "ellipsis", colours().text);
}

QColor titleColour(const ProfileStatus& status, bool selected) {
    if (status.failed()) return colours().warnText;
    return selected ? colours().selectedDim : colours().dim;
}

} // namespace

ProfileRow::ProfileRow(const ProfileListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QRect ProfileRow::moreArea(const QRect& row, Qt::LayoutDirection direction) {
    return QStyle::visualRect(direction, row, moreIn(row));
}

void ProfileRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QRect& row = option.rect;
    const QRect plate = row.adjusted(sideInset, 2, -sideInset, -2);
    RowPainter to(*painter, option);
    if (to.selected() || to.hovered()) to.plate(plate, to.selected() ? colours().selected : colours().hover);
    to.focusRing(plate);
    const QRect symbol(row.left() + symbolLeft, row.top(), StatusSymbol::side, row.height());
    if (auto* const view = qobject_cast<const QAbstractScrollArea*>(option.widget)) {
        paintStatus(
            *painter, QStyle::visualRect(option.direction, row, symbol),
            present(rows.statusAt(index), rows.runningAt(index)), *view->viewport());
    }
    paintTexts(to, row, index);
    if (to.selected() || to.hovered()) paintMore(to, row);
}

void ProfileRow::paintTexts(RowPainter& painter, const QRect& row, const QModelIndex& index) const {
    const ProfileStatus& status = rows.statusAt(index);
    QRect name(row.left() + textLeft, row.top() + (row.height() - textHeight()) / 2, 0, lineHeight(TextStyle::strong));
    name.setRight(moreIn(row).left() - 5);
    painter.line(name, index.data().toString(), {.style = TextStyle::strong, .colour = colours().text});
    QRect title(name.left(), name.bottom() + 1 + lineGap, 0, lineHeight(TextStyle::small));
    title.setRight(row.right() - sideInset - 5);
    painter.line(
        title, rows.summaryAt(index), {.style = TextStyle::small, .colour = titleColour(status, painter.selected())});
}

QSize ProfileRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {200, std::max(lowestRow, textHeight() + 20)};
}

bool ProfileRow::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease) {
        const auto* const mouse = static_cast<QMouseEvent*>(event);
        const bool hit = moreArea(option.rect, option.direction).contains(mouse->position().toPoint());
        if (hit && mouse->button() == Qt::LeftButton) {
            if (event->type() == QEvent::MouseButtonRelease) {
                Q_EMIT moreRequested(index, mouse->globalPosition().toPoint());
            }
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

} // namespace zembrastel::ui
