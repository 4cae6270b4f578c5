// The sidebar of the main window: the profiles under their header, the window's menu, and a note on closing the window.
//
// Main thread. The shell adds the entries of the menu that are not the window's own.
#pragma once

#include "ui/main_window/profile_list.h"
#include "ui/widgets/push_button.h"

#include <QFrame>
#include <QMenu>

#include <functional>

namespace zembrastel::ui {

// The window's menu behind a button of three dots: entries that do not belong to a single profile.
class WindowMenu : public PushButton {
    Q_OBJECT

public:
    explicit WindowMenu(QWidget* parent = nullptr);

    void add(const QString& text, std::function<void()> chosen);
    void add(QAction* action) { entries->addAction(action); }
    void addSeparator() { entries->addSeparator(); }

    // Adds a switch. `isOn` is called each time the menu opens; `turned` receives the new state.
    void addSwitch(const QString& text, std::function<bool()> isOn, std::function<void(bool wanted)> turned);

private:
    void open();

    QMenu* entries;
};

class Sidebar : public QFrame {
    Q_OBJECT

public:
    explicit Sidebar(ModelBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] ProfileListView& list() const { return *profiles; }
    [[nodiscard]] PushButton& plus() const { return *add; }
    [[nodiscard]] WindowMenu& menu() const { return *more; }

    // Hidden by default.
    [[nodiscard]] PushButton& quitButton() const { return *quit; }

    // For a narrow window.
    void setNarrow(bool narrow);

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();

    ProfileListView* profiles;
    WindowMenu* more;
    PushButton* add;
    PushButton* quit;
};

} // namespace zembrastel::ui
