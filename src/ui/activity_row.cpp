#include "ui/activity_row.h"

#include "ui/local_time.h"
#include "ui/symbol_icon.h"
#include "ui/text_style.h"
#include "ui/theme.h"

#include <QPainter>
#include <QStyle>

namespace zembrastel {
namespace {

constexpr int inset = 16;
constexpr int gap = 12;
constexpr int timeGap = 24;
constexpr int symbolSide = 16;
constexpr int textLeft = inset + symbolSide + gap;

ColourRole symbolColour(const Activity& activity) {
    if (activity.error) return &Colours::warn;
    return activitySymbol(activity) == "dot" ? &Colours::edge : &Colours::accent;
}

void paintFocus(QPainter& painter, const QRect& row) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours().accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(row).adjusted(9, 1, -9, -2), 6, 6);
}

// Paints one line of text at one side of its place and gives back how wide it is.
int write(
    QPainter& painter, const QRect& place, Qt::LayoutDirection direction, Qt::AlignmentFlag side, const QString& text) {
    const QString visible = painter.fontMetrics().elidedText(text, Qt::ElideMiddle, place.width());
    const auto alignment = QStyle::visualAlignment(direction, side) | Qt::AlignAbsolute | Qt::AlignVCenter;
    painter.drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine, visible);
    return painter.fontMetrics().horizontalAdvance(visible);
}

} // namespace

ActivityRow::ActivityRow(const ActivityModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

int ActivityRow::height() { return std::max(32, QFontMetrics(fontOf(TextStyle::body)).height() + 12); }

void ActivityRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const Activity& activity = rows.at(index);
    const QRect& row = option.rect;
    const auto mirrored = [&](const QRect& place) { return QStyle::visualRect(option.direction, row, place); };
    painter->save();
    const QRect symbol(row.left() + inset, row.top() + (row.height() - symbolSide) / 2, symbolSide, symbolSide);
    paintSymbol(*painter, mirrored(symbol), activitySymbol(activity), colours().*symbolColour(activity));

    const QRect line = row.adjusted(textLeft, 0, -inset, 0);
    painter->setFont(fontOf(TextStyle::small));
    painter->setPen(colours().dim);
    const int timeWidth = write(
        *painter, mirrored(line), option.direction, Qt::AlignRight,
        logTime(localTime(activity.date), QDateTime::currentDateTime()));
    painter->setFont(fontOf(TextStyle::body));
    painter->setPen(activity.error ? colours().warnText : colours().text);
    const QRect text = line.adjusted(0, 0, -timeWidth - timeGap, 0);
    write(*painter, mirrored(text), option.direction, Qt::AlignLeft, index.data().toString());

    if (index.row() + 1 < rows.rowCount()) {
        painter->fillRect(mirrored(QRect(line.left(), row.bottom(), line.width(), 1)), colours().line);
    }
    const bool byKeyboard = option.state.testFlag(QStyle::State_KeyboardFocusChange);
    if (byKeyboard && option.state.testFlag(QStyle::State_HasFocus)) paintFocus(*painter, row);
    painter->restore();
}

QSize ActivityRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {200, height()}; }

} // namespace zembrastel
