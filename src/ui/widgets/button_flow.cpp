#include "ui/widgets/button_flow.h"

#include <QEvent>
#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int between = 8;

} // namespace

ButtonFlow::ButtonFlow(const QList<QWidget*>& shownButtons, QWidget* parent) : QWidget(parent), buttons(shownButtons) {
    for (auto* const button : buttons) button->setParent(this);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int ButtonFlow::arrange(int width, bool moves) const {
    QPoint place(0, 0);
    int lineHeight = 0;
    for (auto* const button : buttons) {
        if (button->isHidden()) continue;
        const QSize size = button->sizeHint();
        if (place.x() > 0 && place.x() + size.width() > width) place = QPoint(0, place.y() + lineHeight + between);
        if (place.x() == 0) lineHeight = 0;
        lineHeight = std::max(lineHeight, size.height());
        if (moves) button->setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(place, size)));
        place.rx() += size.width() + between;
    }
    return place.y() + lineHeight;
}

QSize ButtonFlow::sizeHint() const {
    int width = 0;
    for (const auto* const button : buttons) {
        if (!button->isHidden()) width += button->sizeHint().width() + between;
    }
    return {width, arrange(std::max(width, this->width()), false)};
}

QSize ButtonFlow::minimumSizeHint() const {
    int width = 0;
    for (const auto* const button : buttons) {
        if (!button->isHidden()) width = std::max(width, button->sizeHint().width());
    }
    return {width, minimumHeight()};
}

bool ButtonFlow::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) fit();
    return QWidget::event(event);
}

void ButtonFlow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

// Some parent layouts ignore height-for-width, but all of them respect a minimum height.
void ButtonFlow::fit() {
    setMinimumHeight(arrange(width(), true));
    updateGeometry();
}

} // namespace zembrastel::ui
