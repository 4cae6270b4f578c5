#include "ui/main_window/status_symbol.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace zembrastel::ui {
namespace {

constexpr std::array<std::string_view, 5> workingTitles{
    "Starting", "Checking server", "Downloading", "Uploading", "Downloading server changes"};

QRect middleOf(const QRect& rect) {
    QRect square(0, 0, StatusSymbol::side, StatusSymbol::side);
    square.moveCenter(rect.center());
    return square;
}

} // namespace

bool working(const ProfileStatus& status) {
    return status.active && !status.failed && std::ranges::find(workingTitles, status.title) != workingTitles.end();
}

StatusPresentation present(const ProfileStatus& status, bool running) {
    const bool turns = working(status);
    if (status.failed) return {"exclamationmark.circle", &Colours::warn, turns};
    if (!running) return {"pause.fill", &Colours::accent, turns};
    return {"arrow.triangle.2.circlepath", &Colours::accent, turns};
}

void paintStatus(QPainter& painter, const QRect& where, const StatusPresentation& status, QWidget& canvas) {
    const QColor& colour = colours().*status.colour;
    if (status.working) {
        paintTurning(painter, middleOf(where), status.symbol, colour, canvas);
    } else {
        const qreal ratio = painter.device()->devicePixelRatioF();
        painter.drawPixmap(middleOf(where).topLeft(), symbolPixmap(status.symbol, StatusSymbol::side, colour, ratio));
    }
}

QString accessibleStatusName(const ProfileStatus& status) {
    return working(status) ? QCoreApplication::translate("StatusSymbol", "Sync in progress") : toQString(status.title);
}

StatusSymbol::StatusSymbol(QWidget* parent) : QWidget(parent) {
    setFixedSize(side, side);
    setStatus(ProfileStatus(), false);
}

void StatusSymbol::setStatus(const ProfileStatus& status, bool running) {
    setAccessibleName(accessibleStatusName(status));
    const StatusPresentation next = present(status, running);
    if (next == shown) return;
    shown = next;
    update();
}

void StatusSymbol::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintStatus(painter, rect(), shown, *this);
}

} // namespace zembrastel::ui
