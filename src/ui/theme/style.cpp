#include "ui/theme/style.h"

#include <QGuiApplication>
#include <QStyle>

namespace zembrastel::ui {
namespace {

QString nameOf(Surface surface) {
    switch (surface) {
    case Surface::card:
        return QStringLiteral("card");
    case Surface::infoBanner:
        return QStringLiteral("info");
    case Surface::warningBanner:
        return QStringLiteral("warn");
    case Surface::side:
        return QStringLiteral("side");
    case Surface::footer:
        break;
    }
    return QStringLiteral("footer");
}

} // namespace

void setStyleProperty(QWidget& widget, const char* name, const QVariant& value) {
    if (widget.property(name) == value) return;
    widget.setProperty(name, value);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
    widget.updateGeometry();
    widget.update();
}

bool readsFromRight() { return QGuiApplication::layoutDirection() == Qt::RightToLeft; }

QMargins readingMargins(int start, int top, int end, int bottom) {
    return readsFromRight() ? QMargins(end, top, start, bottom) : QMargins(start, top, end, bottom);
}

Qt::Alignment readingStart() { return Qt::AlignAbsolute | (readsFromRight() ? Qt::AlignRight : Qt::AlignLeft); }

QString inItsOwnDirection(const QString& label) {
    constexpr QChar leftToRightMark(0x200e);
    const bool foreign = readsFromRight() && !label.isEmpty() && !label.isRightToLeft();
    return foreign ? label + leftToRightMark : label;
}

void setSurface(QFrame& frame, Surface surface) { setStyleProperty(frame, "surface", nameOf(surface)); }

QFrame* makeSurface(Surface surface, QWidget* parent) {
    auto* const frame = new QFrame(parent);
    setSurface(*frame, surface);
    return frame;
}

QFrame* makeDivider(Qt::Orientation orientation, QWidget* parent) {
    auto* const line = new QFrame(parent);
    setStyleProperty(*line, "surface", QStringLiteral("divider"));
    if (orientation == Qt::Horizontal) {
        line->setFixedHeight(1);
    } else {
        line->setFixedWidth(1);
    }
    return line;
}

} // namespace zembrastel::ui
