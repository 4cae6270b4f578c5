// What the user has chosen for the window, remembered from start to start.
//
// Main thread. Kept for the user as a whole, apart from the profiles; in a demonstration for its own time alone.
#pragma once

#include <QSettings>

#include <memory>

namespace zembrastel::ui {

class WindowSettings {
public:
    explicit WindowSettings(bool isDemo);

    [[nodiscard]] bool notifies() const { return notifications; }
    void setNotifies(bool wanted);

    // Has the user been told that closing the window leaves it in the tray?
    [[nodiscard]] bool toldOfTray() const { return trayTold; }
    void setToldOfTray();

private:
    std::unique_ptr<QSettings> stored; // none in a demonstration
    bool notifications = true;
    bool trayTold = false;
};

} // namespace zembrastel::ui
