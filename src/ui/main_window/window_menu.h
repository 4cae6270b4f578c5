// The window's menu, behind a button of three dots: what is not about a single profile.
//
// Main thread. Whoever puts the program together adds the entries.
#pragma once

#include "ui/widgets/push_button.h"

#include <QMenu>

#include <functional>

namespace zembrastel::ui {

class WindowMenu : public PushButton {
    Q_OBJECT

public:
    explicit WindowMenu(QWidget* parent = nullptr);

    void add(const QString& text, std::function<void()> chosen);
    void add(QAction* action) { entries->addAction(action); }
    void addSeparator() { entries->addSeparator(); }

    // A switch, whose state is asked for each time the menu is opened. `turned` gets the wanted state.
    void addSwitch(const QString& text, std::function<bool()> isOn, std::function<void(bool wanted)> turned);

private:
    void open();

    QMenu* entries;
};

} // namespace zembrastel::ui
