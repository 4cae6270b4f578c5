// The symbol of a profile's status, in its colour, turning or still: as a widget of 20 points square, and as a painting
// function for lists.
//
// Main thread; present() is pure.
#pragma once

#include "app/profile_status.h"
#include "ui/theme/colours.h"

#include <QPainter>
#include <QWidget>

#include <string_view>

namespace zembrastel::ui {

struct StatusPresentation {
    std::string_view symbol;
    ColourRole colour;
    bool working = false; // the symbol turns

    friend bool operator==(const StatusPresentation&, const StatusPresentation&) = default;
};

[[nodiscard]] StatusPresentation present(const ProfileStatus& status, bool running);

// Paints the symbol into the middle of a rectangle of the widget that is being painted (of a list: its viewport). While
// the profile works, the symbol turns and this part of the widget is repainted at each tick.
void paintStatus(QPainter& painter, const QRect& where, const StatusPresentation& status, QWidget& canvas);

// The symbol's name for screen readers.
[[nodiscard]] QString accessibleStatusName(const ProfileStatus& status);

class StatusSymbol : public QWidget {
    Q_OBJECT

public:
    static constexpr int side = 20;

    explicit StatusSymbol(QWidget* parent = nullptr);

    void setStatus(const ProfileStatus& status, bool running);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    StatusPresentation shown;
};

} // namespace zembrastel::ui
