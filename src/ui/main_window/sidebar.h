// The sidebar of the main window: the profiles under their header, the window's menu, and a note on closing the window.
//
// Main thread. The shell adds the entries of the menu that are not the window's own.
#pragma once

#include "ui/main_window/profile_list.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/search_field.h"
#include "ui/widgets/wrap_label.h"

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

    // Adapts to the width of the window.
    void fitWindow(int windowWidth);

    // Below this width of the window, in points of the design, it is narrow.
    static constexpr int narrowBelow = 880;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();
    [[nodiscard]] QWidget* makeFilter();
    void offerFilter();
    void filterProfiles();
    void fitFilter();

    ModelBridge& bridge;
    ProfileListView* profiles;
    QWidget* filterRow = nullptr;
    SearchField* filter = nullptr;
    WrapLabel* noMatch = nullptr;
    WindowMenu* more;
    PushButton* add;
    PushButton* quit;
};

} // namespace zembrastel::ui
