// The side of the main window: the profiles under their header, and a word on what closing does.
#pragma once

#include "ui/main_window/profile_list.h"
#include "ui/main_window/window_menu.h"
#include "ui/widgets/push_button.h"

#include <QFrame>

namespace zembrastel::ui {

class Sidebar : public QFrame {
    Q_OBJECT

public:
    explicit Sidebar(ModelBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] ProfileList& list() const { return *profiles; }
    [[nodiscard]] PushButton& plus() const { return *add; }
    [[nodiscard]] WindowMenu& menu() const { return *more; }

    // The button to quit with, which is not there unless it is wanted.
    [[nodiscard]] PushButton& quitButton() const { return *quit; }

    // Less wide, for a window that is short of room.
    void setNarrow(bool narrow);

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();

    ProfileList* profiles;
    WindowMenu* more;
    PushButton* add;
    PushButton* quit;
};

} // namespace zembrastel::ui
