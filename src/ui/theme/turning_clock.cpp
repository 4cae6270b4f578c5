#include "ui/theme/turning_clock.h"

#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr std::chrono::milliseconds oneTurn{1400};

std::chrono::milliseconds machineTime() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

} // namespace

TurningClock::TurningClock(QObject* parent) : QObject(parent), time(machineTime) {
    timer.setInterval(33);
    connect(&timer, &QTimer::timeout, this, &TurningClock::tick);
}

double TurningClock::angle() const { return theme().animated() ? turningAngle(time()) : 0; }

void TurningClock::repaintSoon(QWidget& widget, const QRect& part) {
    if (!theme().animated()) return;
    const auto known =
        std::ranges::find(requests, &widget, [](const Request& request) { return request.widget.data(); });
    if (known != requests.end()) {
        known->region += part;
    } else {
        requests.push_back({&widget, part});
    }
    if (!timer.isActive()) timer.start();
}

void TurningClock::tick() {
    const std::vector<Request> due = std::exchange(requests, {});
    if (due.empty()) timer.stop();
    for (const Request& request : due) {
        if (request.widget != nullptr) request.widget->update(request.region);
    }
}

TurningClock& turningClock() {
    static QPointer<TurningClock> current;
    if (current == nullptr) current = new TurningClock(qApp);
    return *current;
}

double turningAngle(std::chrono::milliseconds monotonic) {
    return static_cast<double>((monotonic % oneTurn).count()) * 360 / static_cast<double>(oneTurn.count());
}

void paintTurning(
    QPainter& painter, const QRect& where, std::string_view symbol, const QColor& colour, QWidget& canvas) {
    paintSymbol(painter, where, symbol, colour, turningClock().angle());
    turningClock().repaintSoon(canvas, where);
}

} // namespace zembrastel::ui
