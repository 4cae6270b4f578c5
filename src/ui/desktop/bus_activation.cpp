#include "ui/desktop/bus_activation.h"

#include <QDBusMessage>

namespace zembrastel::ui {
namespace {

const QString interface = QStringLiteral("org.freedesktop.Application");

QDBusMessage nameRequest() {
    constexpr uint doNotQueue = 4;
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    call.setArguments({QStringLiteral("org.zembrastel.Zembrastel"), doNotQueue});
    return call;
}

} // namespace

// Registers the object before the name: the bus delivers queued calls as soon as the name has an owner.
BusActivation::BusActivation(QDBusConnection sessionBus, QObject* parent) : QDBusVirtualObject(parent) {
    if (!sessionBus.registerVirtualObject(QStringLiteral("/org/zembrastel/Zembrastel"), this)) return;
    sessionBus.send(nameRequest());
}

QString BusActivation::introspect(const QString&) const {
    return QStringLiteral(R"(<interface name="org.freedesktop.Application">
  <method name="Activate"><arg name="platform_data" type="a{sv}" direction="in"/></method>
  <method name="Open">
    <arg name="uris" type="as" direction="in"/><arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
  <method name="ActivateAction">
    <arg name="action_name" type="s" direction="in"/><arg name="parameter" type="av" direction="in"/>
    <arg name="platform_data" type="a{sv}" direction="in"/>
  </method>
</interface>
)");
}

// The program opens no files and has no actions of its own, so every request shows the window.
bool BusActivation::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const bool isAsked = message.member() == QLatin1String("Activate") || message.member() == QLatin1String("Open")
                         || message.member() == QLatin1String("ActivateAction");
    if (message.interface() != interface || !isAsked) return false;
    Q_EMIT showRequested();
    if (message.isReplyRequired()) connection.send(message.createReply());
    return true;
}

} // namespace zembrastel::ui
