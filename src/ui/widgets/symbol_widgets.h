// Symbols as widgets: on a rounded square at the head of a card or a dialog, or plain beside a text.
//
// The text beside them says the same, so screen readers skip them.
#pragma once

#include "ui/theme/colours.h"

#include <QWidget>

#include <string>
#include <string_view>

namespace zembrastel::ui {

// The colours of a symbol on a rounded square.
enum class TileKind {
    soft,    // accent on soft
    warning, // orange on soft orange
    filled,  // cut out of the accent
    bare,    // accent without a square, for a symbol in line with tiles
};

class Tile : public QWidget {
    Q_OBJECT

public:
    // 40 points for a card, 44 for a dialog, 72 for the welcome page. The symbol is half as large.
    explicit Tile(
        std::string_view symbolName, TileKind tileKind = TileKind::soft, int side = 40, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::string symbol;
    TileKind kind;
};

// A symbol beside a text, usually of 20 points.
class SymbolView : public QWidget {
    Q_OBJECT

public:
    static constexpr int side = 20;

    explicit SymbolView(
        std::string_view symbolName, ColourRole colourRole = &Colours::accent, int shownSide = side,
        QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::string symbol;
    ColourRole colour;
    int size;
};

} // namespace zembrastel::ui
