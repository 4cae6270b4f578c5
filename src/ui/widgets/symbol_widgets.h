// A symbol on a rounded square, at the head of a card or a dialog.
//
// It says nothing that the text beside it does not say, so screen readers pass it over.
#pragma once

#include <QWidget>

#include <string>
#include <string_view>

namespace zembrastel::ui {

enum class TileKind {
    soft,    // accent on soft
    warning, // orange on its soft
    filled,  // knocked out of the accent
    bare,    // accent on nothing, for a symbol that lines up with tiles
};

class Tile : public QWidget {
    Q_OBJECT

public:
    // 40 points for a card, 44 for a dialog, 72 for the welcome page. The symbol has half of that.
    explicit Tile(
        std::string_view symbolName, TileKind tileKind = TileKind::soft, int side = 40, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::string symbol;
    TileKind kind;
};

} // namespace zembrastel::ui
