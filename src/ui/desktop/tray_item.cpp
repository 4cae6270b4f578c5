#include "ui/desktop/tray_item.h"

#include "app/progress_text.h"
#include "model/error.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/theme.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace zembrastel::ui {
namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");

constexpr std::string_view symbol = "arrow.up.forward.square";

} // namespace

TrayItem::TrayItem(ModelBridge& observed, const QDBusConnection& sessionBus, QObject* parent)
    : QObject(parent), bridge(observed), bus(sessionBus),
      watcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { checkForTray(); });
    // A host may register with a watcher that is already running.
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        bus.connect(
            watcherService, watcherPath, watcherService, QString::fromLatin1(change), this, SLOT(checkForTray()));
    }
    connect(&bridge, &ModelBridge::profilesChanged, this, &TrayItem::fillMenu);
    connect(&bridge, &ModelBridge::statusChanged, this, &TrayItem::fillMenu);
    connect(&bridge, &ModelBridge::statusChanged, this, &TrayItem::showToolTip);
    // The desktop keeps the old picture until it receives a new one.
    connect(&theme(), &Theme::changed, this, [this] {
        if (icon) icon->setIcon(symbolIcon(symbol));
    });
    fillMenu();
    checkForTray();
}

TrayItem::~TrayItem() = default;

void TrayItem::checkForTray() {
    auto question = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        answer->deleteLater();
        setTrayAvailable(reply.isValid() && reply.value().variant().toBool());
    });
}

void TrayItem::setTrayAvailable(bool there) {
    if (std::exchange(answered, true) && there == isShown()) return;
    if (there) {
        icon = std::make_unique<QSystemTrayIcon>(symbolIcon(symbol));
        icon->setToolTip(toolTip());
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

QString TrayItem::toolTip() const {
    QStringList lines{QStringLiteral("Zembrastel")};
    for (const auto& profile : bridge.model().profiles()) {
        const auto& progress = bridge.model().status(profile.id).progress;
        if (!progress) continue;
        const QString text = progressInWords(shortProgressText(*progress));
        lines << withoutMarkup(tr("%1: %2").arg(toQString(profile.name), text));
    }
    return lines.join(QLatin1Char('\n'));
}

void TrayItem::showToolTip() {
    if (const QString wanted = toolTip(); icon && icon->toolTip() != wanted) icon->setToolTip(wanted);
}

// An unchanged menu is not rebuilt: a click on an entry that was replaced at that moment would be lost.
void TrayItem::fillMenu() {
    std::vector<Entry> wanted = profileEntries();
    if (!actions.isEmpty() && wanted == entries) return;
    entries = std::move(wanted);
    actions.clear();
    connect(actions.addAction(tr("Open Zembrastel")), &QAction::triggered, this, &TrayItem::openRequested);
    actions.addSeparator();
    if (entries.empty()) actions.addAction(tr("No sync profiles"))->setEnabled(false);
    for (const auto& [id, label] : entries) {
        connect(actions.addAction(label), &QAction::triggered, this, [this, id = id] { toggle(id); });
    }
    actions.addSeparator();
    auto* quit = actions.addAction(tr("Quit Zembrastel"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, this, &TrayItem::quitRequested);
}

std::vector<TrayItem::Entry> TrayItem::profileEntries() const {
    const AppModel& model = bridge.model();
    std::vector<Entry> found;
    for (const auto& profile : model.profiles()) {
        // On the bus, the first "&" and every single "_" mark a mnemonic; other "&" have no meaning. So a name with "&"
        // needs one before it.
        const QString name = onOneLine(toQString(profile.name)).replace(QLatin1Char('_'), QLatin1String("__"));
        const QString label = (model.running(profile.id) ? tr("Pause %1") : tr("Start %1")).arg(name);
        found.push_back({profile.id, name.contains(QLatin1Char('&')) ? QLatin1Char('&') + label : label});
    }
    return found;
}

void TrayItem::toggle(const Uuid& id) {
    try {
        bridge.model().toggle(id);
    } catch (const std::exception& error) {
        Q_EMIT failed(engineText(describe(error)));
    }
}

} // namespace zembrastel::ui
