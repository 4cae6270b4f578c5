// A push button in one of the program's styles, with or without a symbol.
#pragma once

#include <QPushButton>

#include <string>
#include <string_view>

namespace zembrastel::ui {

enum class ButtonKind {
    outlined,
    primary, // filled with the accent
    caution, // confirms an action that may destroy something
    link,    // looks like text
    plain,   // only a symbol, 28 points square; needs an accessible name
};

class PushButton : public QPushButton {
    Q_OBJECT

public:
    explicit PushButton(const QString& label, ButtonKind buttonKind = ButtonKind::outlined, QWidget* parent = nullptr);
    // A button with only a symbol; `accessible` is its accessible name and tool tip.
    PushButton(std::string_view symbolName, const QString& accessible, QWidget* parent);

    // Sets the visible text. "&" stands for itself, not for a mnemonic.
    void setLabel(const QString& label);
    void setKind(ButtonKind chosen);
    [[nodiscard]] bool isFilled() const { return kind == ButtonKind::primary; }
    // Sets the symbol, in the colour of the kind. An empty name removes it.
    void setSymbol(std::string_view name);
    // Makes the button 40 points high instead of 32.
    void setTall();
    // A busy button is disabled and shows turning arrows in place of its symbol. Ending it enables the button.
    void setBusy(bool nowBusy);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showSymbol();
    void paintFocusRing();

    ButtonKind kind = ButtonKind::outlined;
    std::string symbol;
    bool busy = false;
};

} // namespace zembrastel::ui
