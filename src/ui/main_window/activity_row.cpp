#include "ui/main_window/activity_row.h"

#include "ui/theme/local_time.h"
#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int inset = 16;
constexpr int gap = 12;
constexpr int timeGap = 24;
constexpr int symbolSide = 16;
constexpr int textLeft = inset + symbolSide + gap;

ColourRole symbolColour(const Activity& activity) {
    if (activity.error()) return &Colours::warn;
    return activity.kind == Activity::Kind::note ? &Colours::edge : &Colours::accent;
}

} // namespace

ActivityRow::ActivityRow(const ActivityModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

int ActivityRow::height() { return std::max(32, lineHeight(TextStyle::body) + 12); }

void ActivityRow::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const Activity& activity = rows.at(index);
    const Colours& now = colours();
    const QRect& row = option.rect;
    const QRect text = row.adjusted(textLeft, 0, -inset, 0);
    RowPainter to(*painter, option);
    to.symbol(
        centredIn(row, row.left() + inset, {symbolSide, symbolSide}), activitySymbol(activity),
        now.*symbolColour(activity));
    const int timeWidth = to.line(
        text, logTime(localTime(activity.date), QDateTime::currentDateTime()),
        {.style = TextStyle::small, .colour = now.dim, .side = Qt::AlignRight});
    to.line(
        text.adjusted(0, 0, -timeWidth - timeGap, 0), index.data().toString(),
        {.colour = activity.error() ? now.warnText : now.text});
    if (index.row() + 1 < rows.rowCount()) to.divider(text.left(), text.right());
    to.focusRing(row.adjusted(8, 0, -8, -1), 7);
}

QSize ActivityRow::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {200, height()}; }

} // namespace zembrastel::ui
