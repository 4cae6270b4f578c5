// The user's settings of the window, stored between starts.
//
// Main thread. They apply to the user, not to a state folder. A demonstration keeps them only while it runs.
#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>

#include <memory>

namespace zembrastel::ui {

class WindowSettings {
public:
    explicit WindowSettings(bool isDemo);

    [[nodiscard]] bool notifies() const { return notifications; }
    void setNotifies(bool wanted);

    // True once the program has explained that closing the window leaves it in the tray.
    [[nodiscard]] bool trayExplained() const { return explained; }
    void setTrayExplained();

    // The window's size and place, as Qt saves them; empty before the first time.
    [[nodiscard]] QByteArray geometry() const { return place; }
    void setGeometry(const QByteArray& geometry);

    // The profile that was shown last; empty before the first time.
    [[nodiscard]] QString selectedProfile() const { return profile; }
    void setSelectedProfile(const QString& id);

private:
    std::unique_ptr<QSettings> stored; // nullptr in a demonstration
    bool notifications = true;
    bool explained = false;
    QByteArray place;
    QString profile;
};

} // namespace zembrastel::ui
