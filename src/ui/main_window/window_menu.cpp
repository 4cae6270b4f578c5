#include "ui/main_window/window_menu.h"

#include <QAction>

namespace zembrastel::ui {

WindowMenu::WindowMenu(QWidget* parent) : PushButton("ellipsis", tr("Menu"), parent), entries(new QMenu(this)) {
    connect(this, &QPushButton::clicked, this, &WindowMenu::open);
}

void WindowMenu::add(const QString& text, std::function<void()> chosen) {
    connect(entries->addAction(text), &QAction::triggered, this, [chosen = std::move(chosen)] { chosen(); });
}

void WindowMenu::addSwitch(const QString& text, std::function<bool()> isOn, std::function<void(bool wanted)> turned) {
    QAction* const action = entries->addAction(text);
    action->setCheckable(true);
    connect(entries, &QMenu::aboutToShow, action, [action, isOn = std::move(isOn)] { action->setChecked(isOn()); });
    connect(action, &QAction::triggered, this, [turned = std::move(turned)](bool wanted) { turned(wanted); });
}

// Not as the button's own menu, for which the style would make it wider and draw an arrow.
void WindowMenu::open() {
    const QPoint below = isRightToLeft() ? rect().bottomRight() : rect().bottomLeft();
    entries->popup(mapToGlobal(below + QPoint(0, 2)));
}

} // namespace zembrastel::ui
