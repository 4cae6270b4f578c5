// One symbol of 20 points beside a text that says what it means; screen readers pass it over.
#pragma once

#include "ui/theme/colours.h"

#include <QWidget>

#include <string>
#include <string_view>

namespace zembrastel::ui {

class SymbolView : public QWidget {
    Q_OBJECT

public:
    static constexpr int side = 20;

    explicit SymbolView(
        std::string_view symbolName, ColourRole colourRole = &Colours::accent, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::string symbol;
    ColourRole colour;
};

} // namespace zembrastel::ui
