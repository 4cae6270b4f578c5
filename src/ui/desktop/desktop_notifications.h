// Notifications through the desktop's service (org.freedesktop.Notifications), each under a name of the program's own.
//
// Main thread; nothing waits for the service. Where there is none, what is shown is seen by nobody.
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
    QString action; // the label of its button, and what a click on it does
};

class DesktopNotifications : public QObject {
    Q_OBJECT

public:
    explicit DesktopNotifications(
        QDBusConnection sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    // In place of the one of that name, where that can still be seen.
    void show(const QString& name, const DesktopNotification& notification);
    void close(const QString& name);

Q_SIGNALS:
    // The user has pressed the button of one, or clicked on it.
    void acted(const QString& name);

private:
    using Answered = std::function<void(const QDBusMessage& reply)>;

    void ask(const QDBusMessage& question, Answered answered);
    void enqueue(std::function<void()> step);
    void next();
    void learnAbilities(std::function<void()> then);
    void send(const QString& name, const DesktopNotification& notification);
    Q_SLOT void actionInvoked(const QDBusMessage& signal);
    Q_SLOT void notificationClosed(const QDBusMessage& signal);

    QDBusConnection bus;
    std::optional<bool> takesMarkup;         // once the service has said so
    std::map<QString, uint> numbers;         // of those that can be seen
    std::deque<std::function<void()>> steps; // the first is under way: a notification is replaced by its number
};

} // namespace zembrastel::ui
