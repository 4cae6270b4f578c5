#include "ui/widgets/push_button.h"

#include "ui/theme/style.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"

#include <QPainter>

namespace zembrastel::ui {
namespace {

QString nameOf(ButtonKind kind) {
    switch (kind) {
    case ButtonKind::primary:
        return QStringLiteral("primary");
    case ButtonKind::caution:
        return QStringLiteral("caution");
    case ButtonKind::link:
        return QStringLiteral("link");
    case ButtonKind::plain:
        return QStringLiteral("plain");
    case ButtonKind::outlined:
        break;
    }
    return QStringLiteral("outlined");
}

ColourRole symbolColour(ButtonKind kind) {
    switch (kind) {
    case ButtonKind::primary:
        return &Colours::onAccent;
    case ButtonKind::caution:
        return &Colours::warnText;
    case ButtonKind::link:
        return &Colours::accent;
    default:
        return &Colours::text;
    }
}

bool isStrong(ButtonKind kind) {
    return kind == ButtonKind::primary || kind == ButtonKind::caution || kind == ButtonKind::link;
}

} // namespace

PushButton::PushButton(const QString& label, ButtonKind buttonKind, QWidget* parent) : QPushButton(parent) {
    // Otherwise a wide neighbour would squeeze the text.
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setLabel(label);
    setKind(buttonKind);
}

PushButton::PushButton(std::string_view symbolName, const QString& accessible, QWidget* parent)
    : PushButton(QString(), ButtonKind::plain, parent) {
    setSymbol(symbolName);
    setAccessibleName(accessible);
    setToolTip(accessible);
}

void PushButton::setLabel(const QString& label) {
    setText(inItsOwnDirection(label).replace(u'&', QStringLiteral("&&")));
}

void PushButton::setKind(ButtonKind chosen) {
    kind = chosen;
    // With the style sheet alone, Qt would measure the text in the lighter font until the button is polished.
    setFont(fontOf(isStrong(kind) ? TextStyle::strong : TextStyle::body));
    setStyleProperty(*this, "kind", nameOf(kind));
    if (kind == ButtonKind::link) setCursor(Qt::PointingHandCursor);
    showSymbol();
}

void PushButton::setSymbol(std::string_view name) {
    symbol = name;
    showSymbol();
}

void PushButton::setTall() { setStyleProperty(*this, "tall", true); }

void PushButton::setBusy(bool nowBusy) {
    busy = nowBusy;
    setEnabled(!busy);
    showSymbol();
}

void PushButton::showSymbol() {
    if (busy) {
        setButtonSymbol(*this, "arrow.triangle.2.circlepath", &Colours::accent, true);
    } else if (symbol.empty()) {
        setIcon({});
    } else if (kind == ButtonKind::plain) {
        setIconSize({20, 20});
        setIcon(symbolIcon(symbol));
    } else {
        setButtonSymbol(*this, symbol, symbolColour(kind));
    }
}

// Inside the fill: a ring around it would be too pale against the fill or against the page.
void PushButton::paintFocusRing() {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours().onAccent, 2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(3, 3, -3, -3), 5, 5);
}

void PushButton::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    if (hasFocus() && kind == ButtonKind::primary && !theme().highContrast()) paintFocusRing();
    if (busy) turningClock().repaintSoon(*this, rect());
}

} // namespace zembrastel::ui
