// Shows the notices of app/notices.h as desktop notifications, unless the user switched them off.
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

    // Explains that the program now stays in the tray, and how to open its window.
    void explainTray();

Q_SIGNALS:
    // The user wants to see that profile, or its review if it has one.
    void profileRequested(const zembrastel::Uuid& id);
    void windowRequested();

private:
    void scheduleCheck();
    void check();
    void show(const Notice& notice);
    void showNetwork();
    void showChoice(const QString& key, const Profile& profile);
    void showReview(const QString& key, const Profile& profile);
    void showFailure(const QString& key, const Profile& profile);
    void showRecovery(const QString& key, const Profile& profile);
    void act(const QString& key);

    ModelBridge& bridge;
    const WindowSettings& settings;
    const std::function<Notices::Time()> now;
    DesktopNotifications desktop;
    Notices notices;
    QTimer nextUpdate;
};

} // namespace zembrastel::ui
