#include "ui/theme/style.h"

#include "ui/theme/style_property.h"

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
