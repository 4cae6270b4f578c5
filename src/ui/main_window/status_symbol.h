// The symbol of a profile's status, 20 points square: a widget, and the painting for those who draw it themselves.
#pragma once

#include "ui/widgets/status_presentation.h"

#include <QPainter>
#include <QWidget>

namespace zembrastel::ui {

// Paints the symbol into the middle of a rectangle of the widget that is being painted (of a list: its viewport). One
// that is working turns, and sees to it that this part of the widget is painted again.
void paintStatus(QPainter& painter, const QRect& where, const StatusPresentation& status, QWidget& canvas);

// The same for anything that is busy, "Loading folder…" for one.
void paintTurning(
    QPainter& painter, const QRect& where, std::string_view symbol, const QColor& colour, QWidget& canvas);

// What a screen reader says of the symbol.
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
