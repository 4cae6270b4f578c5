// Notifications through the desktop's service (org.freedesktop.Notifications), each under a name that the program
// chooses.
//
// Main thread; never blocks on the service. Without a service, notifications are not shown.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <map>
#include <optional>

namespace zembrastel::ui {

struct DesktopNotification {
    QString title;
    QString text;
    QString action; // the label of its button; clicking the notification does the same
};

class DesktopNotifications : public QObject {
    Q_OBJECT

public:
    explicit DesktopNotifications(
        QDBusConnection sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    // Replaces the notification of that name if it is still visible.
    void show(const QString& name, const DesktopNotification& notification);
    void close(const QString& name);

Q_SIGNALS:
    // The user pressed the button of a notification or clicked on it.
    void acted(const QString& name);

private:
    using Answered = std::function<void(const QDBusMessage& reply)>;

    void ask(const QDBusMessage& question, Answered answered);
    void enqueue(std::function<void()> step);
    void next();
    void readCapabilities(std::function<void()> then);
    void send(const QString& name, const DesktopNotification& notification);
    Q_SLOT void actionInvoked(const QDBusMessage& signal);
    Q_SLOT void notificationClosed(const QDBusMessage& signal);

    QDBusConnection bus;
    std::optional<bool> takesMarkup; // unknown until the service has answered
    std::map<QString, uint> numbers; // of the visible notifications
    std::deque<std::function<void()>>
        steps; // the first is running; replacing a notification needs the number that the step before it received
};

} // namespace zembrastel::ui
