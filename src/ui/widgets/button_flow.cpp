#include "ui/widgets/button_flow.h"

#include <QEvent>
#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int between = 8;

} // namespace

ButtonFlow::ButtonFlow(const QList<QWidget*>& shownButtons, QWidget* atLineEnd)
    : buttons(shownButtons), trailing(atLineEnd) {
    if (trailing != nullptr) buttons << trailing;
    for (auto* const button : buttons) button->setParent(this);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int ButtonFlow::arrange(int width, bool moves) const {
    QList<QWidget*> line;
    int used = 0;
    int top = 0;
    const auto endLine = [&] {
        const int height = moves ? placeLine(line, top) : heightOf(line);
        top += height + between;
        line.clear();
        used = 0;
    };
    for (auto* const button : buttons) {
        if (button->isHidden()) continue;
        const int needed = button->sizeHint().width();
        if (!line.isEmpty() && used + needed > width) endLine();
        line << button;
        used += needed + between;
    }
    if (!line.isEmpty()) endLine();
    return std::max(top - between, 0);
}

int ButtonFlow::heightOf(const QList<QWidget*>& line) {
    int height = 0;
    for (const auto* const button : line) height = std::max(height, button->sizeHint().height());
    return height;
}

int ButtonFlow::placeLine(const QList<QWidget*>& line, int top) const {
    const int height = heightOf(line);
    int left = 0;
    for (auto* const button : line) {
        const QSize size = button->sizeHint();
        if (button == trailing) left = std::max(width() - size.width(), left);
        const QPoint place(left, top + (height - size.height()) / 2);
        button->setGeometry(QStyle::visualRect(layoutDirection(), rect(), QRect(place, size)));
        left += size.width() + between;
    }
    return height;
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
