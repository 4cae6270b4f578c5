// The clock that drives all turning symbols.
//
// Main thread; owned by the application. Each paint of a turning symbol requests the next repaint. A hidden or stopped
// symbol is not painted and requests none, so the timer stops by itself.
#pragma once

#include <QColor>
#include <QObject>
#include <QPainter>
#include <QPointer>
#include <QRegion>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace zembrastel::ui {

class TurningClock : public QObject {
    Q_OBJECT

public:
    explicit TurningClock(QObject* parent);

    // The current angle, in degrees clockwise; 0 if animations are off.
    [[nodiscard]] double angle() const;

    // Replaces the source of the time, by default the machine's monotonic clock.
    void setTime(std::function<std::chrono::milliseconds()> source) { time = std::move(source); }

    // Repaints a part of the widget at the next tick.
    void repaintSoon(QWidget& widget, const QRect& part);

    [[nodiscard]] bool running() const { return timer.isActive(); }

private:
    struct Request {
        QPointer<QWidget> widget;
        QRegion region;
    };

    void tick();

    std::function<std::chrono::milliseconds()> time;
    QTimer timer;
    std::vector<Request> requests;
};

[[nodiscard]] TurningClock& turningClock();

// The angle of a moment, in degrees clockwise. Depends on the clock alone, so that a turn continues smoothly across
// changes of status. Pure.
[[nodiscard]] double turningAngle(std::chrono::milliseconds monotonic);

// Paints a turning symbol into a rectangle of the widget that is being painted (of a list: its viewport), and requests
// the next repaint of that rectangle.
void paintTurning(
    QPainter& painter, const QRect& where, std::string_view symbol, const QColor& colour, QWidget& canvas);

} // namespace zembrastel::ui
