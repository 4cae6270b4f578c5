#include "ui/main_window/status_symbol.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <QCoreApplication>

namespace zembrastel::ui {
namespace {

QRect middleOf(const QRect& rect) {
    QRect square(0, 0, StatusSymbol::side, StatusSymbol::side);
    square.moveCenter(rect.center());
    return square;
}

} // namespace

StatusPresentation present(const ProfileStatus& status, bool running) {
    const bool turns = status.working();
    if (status.failed()) return {"exclamationmark.circle", &Colours::warn, turns};
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
    return status.working() ? QCoreApplication::translate("StatusSymbol", "Sync in progress")
                            : engineText(status.title());
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
