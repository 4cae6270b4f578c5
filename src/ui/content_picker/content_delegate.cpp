#include "ui/content_picker/content_delegate.h"

#include "ui/theme/theme.h"

#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int sizeMargin = 10;
constexpr int tickSide = 18;
constexpr int kindSide = 18;
constexpr int kindLeft = 58;
constexpr int nameLeft = 84;
constexpr int gap = TreeRow::gap;

TextStyle nameStyle(const ContentLine& line) { return line.isFolder() ? TextStyle::strong : TextStyle::body; }

int widthOfBadges(const QStringList& badges) {
    int width = 0;
    for (const QString& badge : badges) width += gap + RowPainter::badgeWidth(badge);
    return width;
}

TreeRow::Message messageOf(ContentLine::Kind kind) {
    if (kind == ContentLine::Kind::loading) return TreeRow::Message::loading;
    return kind == ContentLine::Kind::error ? TreeRow::Message::failure : TreeRow::Message::note;
}

} // namespace

// Of an entry, for a left-to-right layout.
struct ContentDelegate::Places {
    QRect row;
    QRect chevron;
    QRect tick;
    QRect icon;
    QRect name;
    QRect size;
};

ContentDelegate::ContentDelegate(const ContentTreeModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

QSize ContentDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {1, TreeRow::height()};
}

ContentDelegate::Places ContentDelegate::placesOf(
    const TreeRow& row, const ContentLine& line, const QString& name) const {
    Places at{
        .row = row.plate(),
        .chevron = row.chevron(),
        .tick = row.symbol(TreeRow::afterChevron, tickSide),
        .icon = row.symbol(kindLeft, kindSide),
        .name = row.textFrom(nameLeft),
        .size = row.plate().adjusted(0, 0, -sizeMargin, 0)};
    const QString size = rows.sizeOf(line);
    at.size.setLeft(at.size.right() - lineWidth(TextStyle::small, size));
    if (!size.isEmpty()) at.name.setRight(at.size.left() - gap);
    const int width = std::max(0, at.name.width() - widthOfBadges(rows.badges(line)));
    at.name.setWidth(std::clamp(lineWidth(nameStyle(line), name) + 1, 0, width));
    return at;
}

ContentDelegate::Part ContentDelegate::partAt(
    const QRect& whole, const QModelIndex& index, const QPoint& point, Qt::LayoutDirection direction) const {
    const ContentLine& line = rows.line(index);
    const QString shown = rows.shownText(line);
    const TreeRow row(whole, line.depth);
    const QPoint hit = QStyle::visualRect(direction, whole, QRect(point, QSize(1, 1))).topLeft();
    if (line.kind == ContentLine::Kind::error) return row.retryButton(shown).contains(hit) ? Part::retry : Part::none;
    if (!line.isEntry()) return Part::none;
    const Places at = placesOf(row, line, shown);
    // The name belongs to the tick, like the label of a check box.
    if (TreeRow::isNear(at.tick, hit) || at.icon.united(at.name).contains(hit)) return Part::tick;
    return line.isFolder() && TreeRow::isNear(at.chevron, hit) ? Part::chevron : Part::none;
}

void ContentDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const ContentLine& line = rows.line(index);
    const QString shown = rows.shownText(line);
    const TreeRow row(option.rect, line.depth);
    RowPainter to(*painter, option);
    if (to.hovered() && line.isEntry()) to.plate(row.plate(), colours().hover);
    to.focusRing(row.plate());
    if (line.isEntry()) {
        paintEntry(to, placesOf(row, line, shown), line, shown);
    } else {
        row.paintMessage(to, messageOf(line.kind), shown);
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

} // namespace zembrastel::ui
