#include "ui/system_appearance.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace zembrastel;

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

// A bus that nobody else is on.
class PrivateBus {
public:
    PrivateBus() {
        daemon.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        while (!daemon.canReadLine() && daemon.waitForReadyRead()) {
        }
        address = QString::fromUtf8(daemon.readLine()).trimmed();
    }
    ~PrivateBus() {
        for (const QString& name : names) QDBusConnection::disconnectFromBus(name);
        daemon.kill();
        daemon.waitForFinished();
    }

    QDBusConnection connection(const QString& name) {
        names.append(name);
        return QDBusConnection::connectToBus(address, name);
    }

private:
    QProcess daemon;
    QString address;
    QStringList names;
};

// The desktop's side of the settings portal.
class Portal : public QDBusVirtualObject {
public:
    explicit Portal(const QDBusConnection& connection) : bus(connection) {
        bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
    }

    void appear() { bus.registerService(service); }
    void vanish() { bus.unregisterService(service); }

    void choose(uint value) {
        scheme = value;
        QDBusMessage signal = QDBusMessage::createSignal(path, settings, QStringLiteral("SettingChanged"));
        signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(scheme))});
        bus.send(signal);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& connection) override {
        if (call.interface() != settings || call.arguments().value(1) != key) return false;
        const auto inner = QVariant::fromValue(QDBusVariant(scheme));
        return connection.send(call.createReply(QVariant::fromValue(QDBusVariant(inner))));
    }

    uint scheme = 0;

private:
    QDBusConnection bus;
};

} // namespace

TEST(SystemAppearance, PortalThatComesLateOrComesAgainIsFollowed) {
    PrivateBus bus;
    Portal portal(bus.connection(QStringLiteral("portal")));
    const SystemAppearance desktop(bus.connection(QStringLiteral("program")));
    const auto becomes = [&desktop](Appearance wanted) {
        return QTest::qWaitFor([&] { return desktop.appearance() == wanted; });
    };
    EXPECT_EQ(desktop.appearance(), Appearance::light) << "no portal yet";

    portal.scheme = 1;
    portal.appear();
    EXPECT_TRUE(becomes(Appearance::dark));
    portal.choose(2);
    EXPECT_TRUE(becomes(Appearance::light));

    portal.vanish();
    portal.scheme = 1;
    portal.appear();
    EXPECT_TRUE(becomes(Appearance::dark));
    portal.choose(0);
    EXPECT_TRUE(becomes(Appearance::light)) << "no preference";
}

TEST(SystemAppearance, ThemeFollowsAtOnce) {
    PrivateBus bus;
    Portal portal(bus.connection(QStringLiteral("portal")));
    const SystemAppearance desktop(bus.connection(QStringLiteral("program")));
    followSystemAppearance(desktop);
    EXPECT_EQ(theme().appearance(), Appearance::light);
    portal.scheme = 1;
    portal.appear();
    EXPECT_TRUE(QTest::qWaitFor([] { return theme().appearance() == Appearance::dark; }));
}
