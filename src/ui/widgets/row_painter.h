// Draws the parts that rows of a list are made of, so that all lists look alike: background, focus ring, divider, text,
// symbols, tick boxes, badges.
//
// Main thread; lives while one row is painted, and leaves the painter as it was. Places are given as though the reading
// direction were from left to right, and are mirrored within the row where it is the other.
#pragma once

#include "ui/theme/colours.h"
#include "ui/theme/text_style.h"

#include <QPainter>
#include <QStyleOptionViewItem>

#include <string_view>

namespace zembrastel::ui {

// How a line of text stands in its place.
struct LineLook {
    TextStyle style = TextStyle::body;
    QColor colour;
    Qt::TextElideMode elide = Qt::ElideMiddle;
    Qt::AlignmentFlag side = Qt::AlignLeft;
};

[[nodiscard]] int lineWidth(TextStyle style, const QString& text);
[[nodiscard]] int lineHeight(TextStyle style);

// A place in the middle of a row's height.
[[nodiscard]] QRect centredIn(const QRect& row, int left, const QSize& size);

class RowPainter {
public:
    RowPainter(QPainter& target, const QStyleOptionViewItem& rowOption);
    RowPainter(const RowPainter&) = delete;
    RowPainter& operator=(const RowPainter&) = delete;
    ~RowPainter();

    [[nodiscard]] bool selected() const { return option.state.testFlag(QStyle::State_Selected); }
    [[nodiscard]] bool hovered() const { return option.state.testFlag(QStyle::State_MouseOver); }
    // Is the pointer on this part of the hovered row?
    [[nodiscard]] bool hovered(const QRect& part) const;

    void plate(const QRect& where, const QColor& colour, double radius = 8);
    // Round a plate of that place and radius, for those who came by keyboard: a click shows by itself what it chose.
    void focusRing(const QRect& plate, double radius = 8);
    // At the foot of the row.
    void divider(int left, int right);

    // Gives back how wide the text came out.
    int line(const QRect& where, const QString& text, const LineLook& look);

    void symbol(const QRect& where, std::string_view name, const QColor& colour);
    // Turning, and painted again for as long as it can be seen.
    void turningSymbol(const QRect& where, std::string_view name, const QColor& colour);
    void tick(const QRect& where, Qt::CheckState state, bool pale = false);

    void badge(const QRect& where, const QString& text, bool accented);
    [[nodiscard]] static int badgeWidth(const QString& text);
    [[nodiscard]] static int badgeHeight();

    void button(const QRect& where, const QString& text);

private:
    [[nodiscard]] QRect visual(const QRect& part) const;

    QPainter& painter;
    const QStyleOptionViewItem& option;
};

} // namespace zembrastel::ui
