#include "ui/desktop/system_appearance.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <tuple>

namespace zembrastel::ui {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colourScheme = QStringLiteral("color-scheme");
const QString contrastSetting = QStringLiteral("contrast");
const QString interfaceGroup = QStringLiteral("org.gnome.desktop.interface");
const QString enableAnimations = QStringLiteral("enable-animations");

constexpr int maxWaitMilliseconds = 50;
constexpr uint prefersDark = 1;
constexpr uint prefersContrast = 1;

QDBusMessage readCall(const QString& group, const QString& key) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    call.setArguments({group, key});
    return call;
}

// A portal wraps the value once or twice.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

SystemAppearance::SystemAppearance(const QDBusConnection& sessionBus, QObject* parent)
    : QObject(parent), bus(sessionBus) {
    if (!bus.isConnected()) return;
    auto* const watcher = new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(
        watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& newOwner) { listen(newOwner); });
    readNow(appearanceGroup, colourScheme);
    readNow(appearanceGroup, contrastSetting);
    listen(bus.interface()->serviceOwner(service).value());
    // The bus starts the portal for this call; its answer is only a default until the portal reports changes itself.
    if (owner.isEmpty()) ask(appearanceGroup, colourScheme);
}

// Connects to each owner under its unique name: a connection to a name without an owner may never become active. The
// slot takes the whole message, because Qt refuses a QDBusVariant parameter until such a value was received once.
void SystemAppearance::listen(const QString& newOwner) {
    const QString signal = QStringLiteral("SettingChanged");
    const char* const slot = SLOT(settingChanged(QDBusMessage));
    if (!owner.isEmpty()) bus.disconnect(owner, path, interface, signal, this, slot);
    owner = newOwner;
    if (owner.isEmpty()) return;
    bus.connect(owner, path, interface, signal, this, slot);
    ask(appearanceGroup, colourScheme);
    ask(appearanceGroup, contrastSetting);
    ask(interfaceGroup, enableAnimations);
}

void SystemAppearance::readNow(const QString& group, const QString& key) {
    QDBusMessage call = readCall(group, key);
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, maxWaitMilliseconds);
    if (reply.type() == QDBusMessage::ReplyMessage) take(group, key, reply.arguments().value(0));
}

void SystemAppearance::ask(const QString& group, const QString& key) {
    auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(readCall(group, key)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, group, key] {
        answer->deleteLater();
        const QDBusMessage reply = answer->reply();
        if (reply.type() == QDBusMessage::ReplyMessage) take(group, key, reply.arguments().value(0));
    });
}

void SystemAppearance::settingChanged(const QDBusMessage& change) {
    const QVariantList values = change.arguments();
    if (values.size() == 3) take(values[0].toString(), values[1].toString(), values[2]);
}

void SystemAppearance::take(const QString& group, const QString& key, const QVariant& value) {
    const auto before = std::tuple(current, contrast, animationsOn);
    const QVariant plain = unwrapped(value);
    if (group == appearanceGroup && key == colourScheme) {
        current = plain.toUInt() == prefersDark ? Appearance::dark : Appearance::light;
    } else if (group == appearanceGroup && key == contrastSetting) {
        contrast = plain.typeId() == QMetaType::UInt && plain.toUInt() == prefersContrast;
    } else if (group == interfaceGroup && key == enableAnimations) {
        animationsOn = plain.toBool();
    }
    if (before != std::tuple(current, contrast, animationsOn)) Q_EMIT changed();
}

void followSystemAppearance(const SystemAppearance& source) {
    const auto follow = [&source] {
        theme().setHighContrast(source.highContrast());
        theme().apply(source.appearance());
        theme().setAnimated(source.animated());
    };
    QObject::connect(&source, &SystemAppearance::changed, &theme(), follow);
    follow();
}

} // namespace zembrastel::ui
