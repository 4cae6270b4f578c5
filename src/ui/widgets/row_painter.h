// Draws the parts of list rows, so that all lists look alike: background, focus ring, divider, text, symbols, tick
// boxes, badges.
//
// Main thread. Lives while one row is painted and restores the painter afterwards. All places are given for a
// left-to-right layout and are mirrored within the row in a right-to-left one.
#pragma once

#include "ui/theme/colours.h"
#include "ui/theme/text_style.h"

#include <QPainter>
#include <QStyleOptionViewItem>

#include <string_view>

namespace zembrastel::ui {

// The look of one line of text.
struct LineLook {
    TextStyle style = TextStyle::body;
    QColor colour;
    Qt::TextElideMode elide = Qt::ElideMiddle;
    Qt::AlignmentFlag side = Qt::AlignLeft;
};

[[nodiscard]] int lineWidth(TextStyle style, const QString& text);
[[nodiscard]] int lineHeight(TextStyle style);

// A place centred in the row's height.
[[nodiscard]] QRect centredIn(const QRect& row, int left, const QSize& size);

class RowPainter {
public:
    RowPainter(QPainter& target, const QStyleOptionViewItem& rowOption);
    RowPainter(const RowPainter&) = delete;
    RowPainter& operator=(const RowPainter&) = delete;
    ~RowPainter();

    [[nodiscard]] bool selected() const { return option.state.testFlag(QStyle::State_Selected); }
    [[nodiscard]] bool hovered() const { return option.state.testFlag(QStyle::State_MouseOver); }
    // Returns whether the pointer is on this part of the hovered row.
    [[nodiscard]] bool hovered(const QRect& part) const;

    void plate(const QRect& where, const QColor& colour, double radius = 8);
    // The background of a row that is selected or under the pointer.
    void rowPlate(const QRect& where);
    // Around a plate of that place and radius. Drawn only after keyboard use: a click already shows what it selected.
    void focusRing(const QRect& plate, double radius = 8);
    // At the lower edge of the row.
    void divider(int left, int right);

    // Returns the width of the drawn text.
    int line(const QRect& where, const QString& text, const LineLook& look);

    void symbol(const QRect& where, std::string_view name, const QColor& colour);
    // Draws the symbol turning, and repaints it while it is visible.
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
