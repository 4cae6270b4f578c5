#include "ui/desktop/desktop_notifications.h"

#include <QDBusPendingCallWatcher>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

// A service that hangs must not delay later notifications for longer.
constexpr int timeoutMilliseconds = 5000;

QDBusMessage methodCall(const char* method) {
    return QDBusMessage::createMethodCall(service, path, service, QString::fromLatin1(method));
}

} // namespace

DesktopNotifications::DesktopNotifications(QDBusConnection sessionBus, QObject* parent)
    : QObject(parent), bus(std::move(sessionBus)) {
    // The slots take the whole message, because a service may send arguments of any type.
    for (const auto& [signal, slot] :
         {std::pair("ActionInvoked", SLOT(actionInvoked(QDBusMessage))),
          std::pair("NotificationClosed", SLOT(notificationClosed(QDBusMessage)))}) {
        bus.connect(QString(), path, service, QString::fromLatin1(signal), this, slot);
    }
}

void DesktopNotifications::ask(const QDBusMessage& question, Answered answered) {
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(question, timeoutMilliseconds), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, answered = std::move(answered)] {
        answer->deleteLater();
        answered(answer->reply());
    });
}

void DesktopNotifications::enqueue(std::function<void()> step) {
    steps.push_back(std::move(step));
    if (steps.size() == 1) steps.front()();
}

void DesktopNotifications::next() {
    steps.pop_front();
    if (!steps.empty()) steps.front()();
}

void DesktopNotifications::show(const QString& name, const DesktopNotification& notification) {
    enqueue([this, name, notification] { readCapabilities([this, name, notification] { send(name, notification); }); });
}

void DesktopNotifications::close(const QString& name) {
    enqueue([this, name] {
        const auto shown = numbers.find(name);
        if (shown != numbers.end()) {
            auto call = methodCall("CloseNotification");
            call.setArguments({shown->second});
            bus.send(call);
            numbers.erase(shown);
        }
        next();
    });
}

void DesktopNotifications::readCapabilities(std::function<void()> then) {
    if (takesMarkup) {
        then();
        return;
    }
    ask(methodCall("GetCapabilities"), [this, then = std::move(then)](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) { // there is no service
            next();
            return;
        }
        takesMarkup = reply.arguments().value(0).toStringList().contains(QStringLiteral("body-markup"));
        then();
    });
}

void DesktopNotifications::send(const QString& name, const DesktopNotification& notification) {
    const auto replaced = numbers.find(name);
    const QStringList actions{
        QStringLiteral("default"), notification.action, QStringLiteral("act"), notification.action};
    constexpr int defaultTimeout = -1;
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("org.zembrastel.Zembrastel")}};
    auto call = methodCall("Notify");
    call.setArguments(
        {QStringLiteral("Zembrastel"), replaced == numbers.end() ? 0U : replaced->second,
         QStringLiteral("org.zembrastel.Zembrastel"), notification.title,
         *takesMarkup ? notification.text.toHtmlEscaped() : notification.text, actions, hints, defaultTimeout});
    ask(call, [this, name](const QDBusMessage& reply) {
        numbers.erase(name);
        if (reply.type() == QDBusMessage::ReplyMessage) numbers[name] = reply.arguments().value(0).toUInt();
        next();
    });
}

void DesktopNotifications::actionInvoked(const QDBusMessage& signal) {
    const uint number = signal.arguments().value(0).toUInt();
    const auto shown =
        std::find_if(numbers.begin(), numbers.end(), [number](const auto& each) { return each.second == number; });
    if (shown == numbers.end()) return;
    const QString name = shown->first; // a copy, because the slot may close the notification
    Q_EMIT acted(name);
}

void DesktopNotifications::notificationClosed(const QDBusMessage& signal) {
    const uint number = signal.arguments().value(0).toUInt();
    std::erase_if(numbers, [number](const auto& each) { return each.second == number; });
}

} // namespace zembrastel::ui
