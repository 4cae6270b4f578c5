#include "ui/desktop/notifier.h"

#include "ui/theme/qt_text.h"

#include <QApplication>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

const QString trayKey = QStringLiteral("tray");

// One notification for what goes wrong with a profile and for its recovery, and one for its review.
QString healthKey(const Uuid& id) { return QStringLiteral("health ") + toQString(id.text()); }
QString reviewKey(const Uuid& id) { return QStringLiteral("review ") + toQString(id.text()); }

} // namespace

Notifier::Notifier(
    ModelBridge& observed, const WindowSettings& chosen, const QDBusConnection& sessionBus,
    std::function<Notices::Time()> clock, QObject* parent)
    : QObject(parent), bridge(observed), settings(chosen), now(std::move(clock)), desktop(sessionBus) {
    nextLook.setSingleShot(true);
    connect(&nextLook, &QTimer::timeout, this, &Notifier::look);
    connect(&bridge, &ModelBridge::statusChanged, this, &Notifier::lookSoon);
    connect(&bridge, &ModelBridge::reviewChanged, this, &Notifier::lookSoon);
    connect(&bridge, &ModelBridge::profilesChanged, this, &Notifier::lookSoon);
    connect(&desktop, &DesktopNotifications::acted, this, &Notifier::act);
}

// Once for what a hundred busy profiles tell in that time.
void Notifier::lookSoon() {
    constexpr int gatheringMilliseconds = 100;
    if (!nextLook.isActive() || nextLook.remainingTime() > gatheringMilliseconds) nextLook.start(gatheringMilliseconds);
}

void Notifier::look() {
    const AppModel& model = bridge.model();
    std::vector<ProfileLook> looks;
    for (const auto& profile : model.profiles()) looks.push_back(lookAt(model, profile));
    const auto looked = now();
    const bool seen = QApplication::activeWindow() != nullptr;
    for (const auto& notice : notices.look(looks, looked, seen)) tell(notice);
    nextLook.stop();
    if (const auto due = notices.nextLook()) {
        nextLook.start(std::chrono::ceil<std::chrono::milliseconds>(std::max(*due - looked, {})));
    }
}

// What was told before they were switched off is still taken away.
void Notifier::tell(const Notice& notice) {
    const Profile* const profile = bridge.model().profile(notice.id);
    const QString key = notice.kind == Notice::Kind::reviewWaits || notice.kind == Notice::Kind::reviewIsOver
                            ? reviewKey(notice.id)
                            : healthKey(notice.id);
    if (profile == nullptr || !settings.notifies()) {
        desktop.close(key);
        return;
    }
    switch (notice.kind) {
    case Notice::Kind::reviewWaits:
        tellReview(key, *profile);
        break;
    case Notice::Kind::failing:
        tellFailure(key, *profile);
        break;
    case Notice::Kind::recovered:
        tellRecovery(key, *profile);
        break;
    case Notice::Kind::reviewIsOver:
    case Notice::Kind::failureIsOver:
        desktop.close(key);
        break;
    }
}

void Notifier::tellReview(const QString& key, const Profile& profile) {
    const auto review = bridge.model().reviews().find(profile.id);
    const std::size_t files = review == bridge.model().reviews().end() ? 0 : review->second.changes.size();
    const QString count =
        files == 1 ? tr("1 file is newer on the server.") : tr("%1 files are newer on the server.").arg(files);
    desktop.show(
        key, {.title = tr("%1: newer files on the server").arg(onOneLine(toQString(profile.name))),
              .text = count + u' ' + tr("Uploads are paused until you choose which versions to keep."),
              .action = tr("Review")});
}

void Notifier::tellFailure(const QString& key, const Profile& profile) {
    desktop.show(
        key, {.title = tr("%1 cannot be kept up to date").arg(onOneLine(toQString(profile.name))),
              .text = toQString(bridge.model().status(profile.id).detail),
              .action = tr("Show")});
}

void Notifier::tellRecovery(const QString& key, const Profile& profile) {
    desktop.show(
        key, {.title = tr("%1 is kept up to date again").arg(onOneLine(toQString(profile.name))),
              .text = tr("What had failed works again."),
              .action = tr("Show")});
}

void Notifier::tellOfTray() {
    if (!settings.notifies()) return;
    desktop.show(
        trayKey, {.title = tr("Zembrastel keeps syncing"),
                  .text = tr("Its window is closed; its icon in the tray opens it again. Quitting stops transfers."),
                  .action = tr("Open window")});
}

void Notifier::act(const QString& key) {
    for (const auto& profile : bridge.model().profiles()) {
        if (key != reviewKey(profile.id) && key != healthKey(profile.id)) continue;
        const Uuid id = profile.id;
        Q_EMIT profileWanted(id);
        return;
    }
    Q_EMIT windowWanted();
}

} // namespace zembrastel::ui
