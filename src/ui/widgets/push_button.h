// A push button of one of the program's kinds, with or without a symbol.
#pragma once

#include <QPushButton>

#include <string>
#include <string_view>

namespace zembrastel::ui {

enum class ButtonKind {
    outlined,
    primary, // filled with the accent
    caution, // confirms what may destroy something
    link,    // looks like text
    plain,   // a symbol alone, 28 points square: give it an accessible name
};

class PushButton : public QPushButton {
    Q_OBJECT

public:
    explicit PushButton(const QString& label, ButtonKind buttonKind = ButtonKind::outlined, QWidget* parent = nullptr);
    // A button of a symbol alone, with its name for screen readers and its tool tip.
    PushButton(std::string_view symbolName, const QString& accessible, QWidget* parent);

    // The text as it is read, with "&" for itself and no mnemonic.
    void setLabel(const QString& label);
    void setKind(ButtonKind chosen);
    [[nodiscard]] bool isFilled() const { return kind == ButtonKind::primary; }
    // In the colour that suits the kind. The empty name takes it away.
    void setSymbol(std::string_view name);
    // 40 points high instead of 32.
    void setTall();
    // Busy, the button is disabled and shows the turning arrows in place of its symbol; afterwards it is enabled.
    void setBusy(bool nowBusy);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showSymbol();

    ButtonKind kind = ButtonKind::outlined;
    std::string symbol;
    bool busy = false;
};

} // namespace zembrastel::ui
