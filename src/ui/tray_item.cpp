#include "ui/tray_item.h"

#include "model/error.h"
#include "ui/symbol_icon.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace zembrastel {
namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

TrayItem::TrayItem(ModelBridge& observed, const QDBusConnection& sessionBus, QObject* parent)
    : QObject(parent), bridge(observed), bus(sessionBus),
      watcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { lookForTray(); });
    // A host may come to a watcher that is there already.
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(
            watcherService, watcherPath, watcherService, QString::fromLatin1(change), this, SLOT(lookForTray()));
    }
    connect(&bridge, &ModelBridge::profilesChanged, this, &TrayItem::fillMenu);
    connect(&bridge, &ModelBridge::statusChanged, this, &TrayItem::fillMenu);
    fillMenu();
    lookForTray();
}

TrayItem::~TrayItem() = default;

void TrayItem::lookForTray() {
    auto question = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        answer->deleteLater();
        takeHostAnswer(reply.isValid() && reply.value().variant().toBool());
    });
}

void TrayItem::takeHostAnswer(bool there) {
    if (there == isShown()) return;
    if (there) {
        icon = std::make_unique<QSystemTrayIcon>(symbolIcon("arrow.up.forward.square"));
        icon->setToolTip(QStringLiteral("Zembrastel"));
        icon->setContextMenu(&actions);
        connect(icon.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason != QSystemTrayIcon::Context) Q_EMIT openRequested();
        });
        icon->show();
    } else {
        icon.reset();
    }
    Q_EMIT shownChanged();
}

void TrayItem::fillMenu() {
    actions.clear();
    connect(actions.addAction(tr("Open Zembrastel")), &QAction::triggered, this, &TrayItem::openRequested);
    actions.addSeparator();
    addProfiles();
    actions.addSeparator();
    auto* quit = actions.addAction(tr("Quit Zembrastel"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, this, &TrayItem::quitRequested);
}

void TrayItem::addProfiles() {
    AppModel& model = bridge.model();
    if (model.profiles().empty()) {
        actions.addAction(tr("No sync profiles"))->setEnabled(false);
        return;
    }
    for (const auto& profile : model.profiles()) {
        const QString name = QString::fromStdString(profile.name).replace(QLatin1Char('&'), QLatin1String("&&"));
        auto* action = actions.addAction((model.running(profile.id) ? tr("Pause %1") : tr("Start %1")).arg(name));
        connect(action, &QAction::triggered, this, [this, id = profile.id] { toggle(id); });
    }
}

void TrayItem::toggle(const Uuid& id) {
    try {
        bridge.model().toggle(id);
    } catch (const std::exception& error) {
        Q_EMIT failed(QString::fromStdString(describe(error)));
    }
}

} // namespace zembrastel
