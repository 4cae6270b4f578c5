#include "ui/content_picker/content_delegate.h"

#include "ui/theme/theme.h"

#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int indent = 24;
constexpr int endMargin = 6; // room for the scroll bar
constexpr int gap = 12;
constexpr int sizeMargin = 10;
constexpr int chevronSide = 16;
constexpr int tickSide = 18;
constexpr int kindSide = 18;
constexpr int messageSide = 16;

// From the left edge of a line of depth 0.
constexpr int chevronLeft = 6;
constexpr int tickLeft = 30;
constexpr int kindLeft = 58;
constexpr int nameLeft = 84;
constexpr int messageLeft = 56;

constexpr int retryHeight = 26;
constexpr int retryPadding = 15;

QString retryLabel() { return ContentTreeModel::tr("Retry"); }

TextStyle nameStyle(const ContentLine& line) { return line.isFolder() ? TextStyle::strong : TextStyle::body; }

int widthOfBadges(const QStringList& badges) {
    int width = 0;
    for (const QString& badge : badges) width += gap + RowPainter::badgeWidth(badge);
    return width;
}

int textLeftOf(const ContentLine& line) {
    if (line.isEntry()) return nameLeft;
    const bool hasSymbol = line.kind == ContentLine::Kind::loading || line.kind == ContentLine::Kind::error;
    return hasSymbol ? messageLeft : tickLeft;
}

} // namespace

// For a left-to-right layout.
struct ContentDelegate::Places {
    QRect row;
    QRect chevron;
    QRect tick;
    QRect icon;
    QRect text; // of an entry, up to its size or the end of the row, including its badges
    QRect name; // of an entry
    QRect size; // of an entry
    QRect retry;
};

ContentDelegate::ContentDelegate(const ContentTreeModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

// Higher than in the design if the desktop's text is large.
int ContentDelegate::height() { return std::max(32, lineHeight(TextStyle::strong) + 12); }

QSize ContentDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {1, height()}; }

void ContentDelegate::placeEntry(Places& at, const ContentLine& line, const QString& name) const {
    const QString size = rows.sizeOf(line);
    at.size = at.row.adjusted(0, 0, -sizeMargin, 0);
    at.size.setLeft(at.size.right() - lineWidth(TextStyle::small, size));
    if (!size.isEmpty()) at.text.setRight(at.size.left() - gap);
    const int width = std::max(0, at.text.width() - widthOfBadges(rows.badges(line)));
    at.name = at.text;
    at.name.setWidth(std::clamp(lineWidth(nameStyle(line), name) + 1, 0, width));
}

ContentDelegate::Places ContentDelegate::placesOf(
    const QRect& whole, const ContentLine& line, const QString& shown) const {
    Places at;
    at.row = whole.adjusted(0, 0, -endMargin, 0);
    const int left = at.row.left() + line.depth * indent;
    const auto square = [&](int from, int side) { return centredIn(at.row, left + from, {side, side}); };
    at.chevron = square(chevronLeft, chevronSide);
    at.tick = square(tickLeft, tickSide);
    at.icon = line.isEntry() ? square(kindLeft, kindSide) : square(tickLeft, messageSide);
    at.text = QRect(QPoint(left + textLeftOf(line), at.row.top()), QPoint(at.row.right() - gap, at.row.bottom()));
    if (line.isEntry()) placeEntry(at, line, shown);
    if (line.kind == ContentLine::Kind::error) {
        const int width = lineWidth(TextStyle::body, retryLabel()) + 2 * retryPadding;
        const int textWidth = std::min(lineWidth(TextStyle::body, shown) + 1, at.text.width() - gap - width);
        at.text.setWidth(std::max(textWidth, 0));
        const int buttonHeight = std::min(std::max(retryHeight, lineHeight(TextStyle::body) + 8), at.row.height());
        at.retry = centredIn(at.row, at.text.right() + gap, {width, buttonHeight});
    }
    return at;
}

ContentDelegate::Part ContentDelegate::partAt(
    const QRect& row, const QModelIndex& index, const QPoint& point, Qt::LayoutDirection direction) const {
    const ContentLine& line = rows.line(index);
    const Places at = placesOf(row, line, rows.shownText(line));
    const QPoint hit = QStyle::visualRect(direction, row, QRect(point, QSize(1, 1))).topLeft();
    constexpr int slack = 6; // small parts react slightly beyond their edges
    const auto near = [&hit](const QRect& part) { return part.adjusted(-slack, -slack, slack, slack).contains(hit); };
    if (line.kind == ContentLine::Kind::error) return at.retry.contains(hit) ? Part::retry : Part::none;
    if (!line.isEntry()) return Part::none;
    // The name belongs to the tick, like the label of a check box.
    if (near(at.tick) || at.icon.united(at.name).contains(hit)) return Part::tick;
    return line.isFolder() && near(at.chevron) ? Part::chevron : Part::none;
}

void ContentDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ContentLine& line = rows.line(index);
    const QString shown = rows.shownText(line);
    const Places at = placesOf(option.rect, line, shown);
    RowPainter to(*painter, option);
    if (to.hovered() && line.isEntry()) to.plate(at.row, colours().hover);
    to.focusRing(at.row);
    if (line.isEntry()) {
        paintEntry(to, at, line, shown);
    } else {
        paintMessage(to, at, line.kind, shown);
    }
}

void ContentDelegate::paintEntry(
    RowPainter& painter, const Places& at, const ContentLine& line, const QString& name) const {
    const Colours& now = colours();
    const bool excluded = rows.isExcluded(line);
    const bool folder = line.isFolder();
    if (folder) painter.symbol(at.chevron, rows.isOpen(line) ? "chevron.down" : "chevron.right", now.dim);
    painter.tick(at.tick, rows.checkState(line), excluded);
    const QColor& kindColour = folder ? now.accent : now.dim;
    painter.symbol(at.icon, folder ? "folder" : "file", excluded ? now.edge : kindColour);

    const QStringList badges = rows.badges(line);
    const TextStyle style = nameStyle(line);
    markMatch(painter, at.name, style, name);
    painter.line(at.name, name, {.style = style, .colour = excluded ? now.dim : now.text});
    painter.line(at.size, rows.sizeOf(line), {.style = TextStyle::small, .colour = now.dim, .side = Qt::AlignRight});
    int left = at.name.right() + gap;
    bool accented = line.entry->localOnly; // only the first badge
    for (const QString& badge : badges) {
        const QSize size(RowPainter::badgeWidth(badge), RowPainter::badgeHeight());
        painter.badge(centredIn(at.row, left, size), badge, accented);
        left += size.width() + gap;
        accented = false;
    }
}

// Behind the searched part of a name that is shown whole.
void ContentDelegate::markMatch(RowPainter& painter, const QRect& nameAt, TextStyle style, const QString& name) const {
    const qsizetype start = rows.matchIn(name);
    if (start < 0 || lineWidth(style, name) > nameAt.width()) return;
    QRect mark = nameAt;
    mark.setLeft(nameAt.left() + lineWidth(style, name.left(start)));
    mark.setWidth(lineWidth(style, name.mid(start, rows.searchedLength())));
    const int height = lineHeight(style) + 2;
    mark.setTop(nameAt.top() + (nameAt.height() - height) / 2);
    mark.setHeight(height);
    painter.plate(mark, colours().soft, 4);
}

void ContentDelegate::paintMessage(
    RowPainter& painter, const Places& at, ContentLine::Kind kind, const QString& shown) {
    const Colours& now = colours();
    const bool failed = kind == ContentLine::Kind::error;
    if (kind == ContentLine::Kind::loading) {
        painter.turningSymbol(at.icon, "arrow.triangle.2.circlepath", now.accent);
    } else if (failed) {
        painter.symbol(at.icon, "exclamationmark.circle", now.warn);
    }
    painter.line(at.text, shown, {.colour = failed ? now.warnText : now.dim, .elide = Qt::ElideRight});
    if (failed) painter.button(at.retry, retryLabel());
}

} // namespace zembrastel::ui
