// Tells the user by notifications what app/notices.h finds worth it, unless the user has switched them off.
//
// Main thread. The bridge and the settings must outlive it.
#pragma once

#include "app/notices.h"
#include "ui/bridge/model_bridge.h"
#include "ui/desktop/desktop_notifications.h"
#include "ui/desktop/window_settings.h"

#include <QTimer>

#include <chrono>
#include <functional>

namespace zembrastel::ui {

class Notifier : public QObject {
    Q_OBJECT

public:
    Notifier(
        ModelBridge& observed, const WindowSettings& chosen,
        const QDBusConnection& sessionBus = QDBusConnection::sessionBus(),
        std::function<Notices::Time()> clock = std::chrono::steady_clock::now, QObject* parent = nullptr);

    // That the program is in the tray now, and how to come back.
    void tellOfTray();

Q_SIGNALS:
    // The user wants to see that profile; its review, where it has one.
    void profileWanted(const zembrastel::Uuid& id);
    void windowWanted();

private:
    void lookSoon();
    void look();
    void tell(const Notice& notice);
    void tellReview(const QString& key, const Profile& profile);
    void tellFailure(const QString& key, const Profile& profile);
    void tellRecovery(const QString& key, const Profile& profile);
    void act(const QString& key);

    ModelBridge& bridge;
    const WindowSettings& settings;
    const std::function<Notices::Time()> now;
    DesktopNotifications desktop;
    Notices notices;
    QTimer nextLook;
};

} // namespace zembrastel::ui
