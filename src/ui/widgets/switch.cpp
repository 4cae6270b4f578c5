#include "ui/widgets/switch.h"

#include "ui/theme/theme.h"

#include <QKeyEvent>
#include <QPainter>

namespace zembrastel::ui {

Switch::Switch(const QString& accessible, QWidget* parent) : QAbstractButton(parent) {
    setAccessibleName(accessible);
    setCheckable(true);
    setFixedSize(Switch::sizeHint());
    setFocusPolicy(Qt::StrongFocus);
    knob.setStartValue(0.0);
    knob.setEndValue(0.0);
    connect(&knob, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(this, &QAbstractButton::toggled, this, &Switch::moveKnob);
}

void Switch::moveKnob(bool on) {
    const double from = knob.currentValue().toDouble();
    knob.stop();
    knob.setStartValue(from);
    knob.setEndValue(on ? 1.0 : 0.0);
    // No animation before the switch is visible.
    knob.setDuration(isVisible() && theme().animated() ? 120 : 0);
    knob.start();
    update();
}

void Switch::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else {
        QAbstractButton::keyPressEvent(event);
    }
}

void Switch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Colours& now = colours();
    const bool on = isChecked();
    if (!isEnabled()) painter.setOpacity(0.5);

    const QRectF track(1, 2, 38, 20);
    painter.setPen(Qt::NoPen);
    painter.setBrush(on ? (underMouse() ? now.accentHover : now.accent) : now.edge);
    painter.drawRoundedRect(track, 10, 10);

    double place = knob.currentValue().toDouble();
    if (layoutDirection() == Qt::RightToLeft) place = 1 - place;
    painter.setBrush(on ? now.onAccent : now.field);
    painter.drawEllipse(QRectF(track.x() + 2 + place * 18, track.y() + 2, 16, 16));

    if (hasFocus()) {
        // Around the track, with the page visible in between.
        const QRectF whole(rect());
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(now.window, 1));
        painter.drawRoundedRect(whole.adjusted(2.5, 2.5, -2.5, -2.5), 9.5, 9.5);
        painter.setPen(QPen(now.focus, 2));
        painter.drawRoundedRect(whole.adjusted(1, 1, -1, -1), 11, 11);
    }
}

} // namespace zembrastel::ui
