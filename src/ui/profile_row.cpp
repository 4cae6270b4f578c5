#include "ui/profile_row.h"

#include "ui/status_symbol.h"
#include "ui/symbol_icon.h"
#include "ui/text_style.h"
#include "ui/theme.h"

#include <QAbstractScrollArea>
#include <QCursor>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace zembrastel {
namespace {

constexpr int lowestRow = 56;
constexpr int sideInset = 8;
constexpr int padding = 12;
constexpr int moreSide = 28;
constexpr int moreSymbol = 20;
constexpr double radius = 8;

// The symbol, and the texts beside it, up to the button.
constexpr int symbolLeft = sideInset + padding;
constexpr int textLeft = symbolLeft + StatusSymbol::side + padding;

QRect plate(const QRect& row) { return row.adjusted(sideInset, 2, -sideInset, -2); }

bool isSelected(const QStyleOptionViewItem& option) { return option.state.testFlag(QStyle::State_Selected); }
bool isHovered(const QStyleOptionViewItem& option) { return option.state.testFlag(QStyle::State_MouseOver); }

// Only for those who came by keyboard: a click shows by itself what it chose.
bool showsFocus(const QStyleOptionViewItem& option) {
    return option.state.testFlag(QStyle::State_HasFocus) && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void paintPlate(QPainter& painter, const QStyleOptionViewItem& option) {
    if (!isSelected(option) && !isHovered(option)) return;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isSelected(option) ? colours().selected : colours().hover);
    painter.drawRoundedRect(plate(option.rect), radius, radius);
}

void paintFocus(QPainter& painter, const QStyleOptionViewItem& option) {
    painter.setPen(QPen(colours().accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(plate(option.rect)).adjusted(1, 1, -1, -1), radius - 1, radius - 1);
}

void paintMore(QPainter& painter, const QStyleOptionViewItem& option) {
    const QRect area = ProfileRow::moreArea(option.rect, option.direction);
    if (option.widget != nullptr && area.contains(option.widget->mapFromGlobal(QCursor::pos())) && isHovered(option)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isSelected(option) ? colours().hover : colours().selected);
        painter.drawRoundedRect(area.adjusted(2, 4, -2, -4), 6, 6);
    }
    QRect where(0, 0, moreSymbol, moreSymbol);
    where.moveCenter(area.center());
    paintSymbol(painter, where, "ellipsis", colours().text);
}

QColor titleColour(const ProfileStatus& status, bool selected) {
    if (status.failed) return colours().warnText;
    return selected ? colours().selectedDim : colours().dim;
}

} // namespace

ProfileRow::ProfileRow(const ProfileListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QRect ProfileRow::moreArea(const QRect& row, Qt::LayoutDirection direction) {
    QRect area(0, 0, moreSide, moreSide);
    area.moveTopRight({row.right() - sideInset - sideInset, row.top() + 5});
    return QStyle::visualRect(direction, row, area);
}

void ProfileRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintPlate(*painter, option);
    if (showsFocus(option)) paintFocus(*painter, option);
    const QRect symbol(option.rect.left() + symbolLeft, option.rect.top(), StatusSymbol::side, option.rect.height());
    if (auto* const view = qobject_cast<const QAbstractScrollArea*>(option.widget)) {
        paintStatus(
            *painter, QStyle::visualRect(option.direction, option.rect, symbol),
            present(rows.statusAt(index), rows.runningAt(index)), *view->viewport());
    }
    paintTexts(*painter, option, index);
    if (isSelected(option) || isHovered(option)) paintMore(*painter, option);
    painter->restore();
}

void ProfileRow::paintTexts(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ProfileStatus& status = rows.statusAt(index);
    const QFont nameFont = fontOf(TextStyle::strong);
    const QFont titleFont = fontOf(TextStyle::small);
    const int nameHeight = QFontMetrics(nameFont).height();
    const int titleHeight = QFontMetrics(titleFont).height();
    const int top = option.rect.top() + (option.rect.height() - nameHeight - titleHeight - 2) / 2;
    const auto write = [&](int y, int height, int right, const QFont& font, const QColor& colour, const QString& text) {
        const QRect line(
            option.rect.left() + textLeft, y, option.rect.right() - sideInset - right - option.rect.left() - textLeft,
            height);
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(
            QStyle::visualRect(option.direction, option.rect, line),
            static_cast<int>(
                QStyle::visualAlignment(option.direction, Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter),
            QFontMetrics(font).elidedText(text, Qt::ElideMiddle, line.width()));
    };
    write(top, nameHeight, moreSide + 12, nameFont, colours().text, index.data().toString());
    write(
        top + nameHeight + 2, titleHeight, 4, titleFont, titleColour(status, isSelected(option)),
        QString::fromStdString(status.title));
}

QSize ProfileRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int texts =
        QFontMetrics(fontOf(TextStyle::strong)).height() + QFontMetrics(fontOf(TextStyle::small)).height() + 2;
    return {200, std::max(lowestRow, texts + 20)};
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

} // namespace zembrastel
