#include "ui/desktop/notifier.h"

#include "app/diagnosis/failure_catalogue.h"
#include "ui/theme/qt_text.h"

#include <QApplication>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

const QString trayKey = QStringLiteral("tray");
const QString networkKey = QStringLiteral("network");

// Each profile has one notification for failure and recovery, one for its review, and one for its choice.
QString healthKey(const Uuid& id) { return QStringLiteral("health ") + toQString(id.text()); }
QString reviewKey(const Uuid& id) { return QStringLiteral("review ") + toQString(id.text()); }

QString choiceKey(const Uuid& id) { return QStringLiteral("choice ") + toQString(id.text()); }

QString keyOf(const Notice& notice) {
    switch (notice.kind) {
    case Notice::Kind::reviewWaits:
    case Notice::Kind::reviewIsOver:
        return reviewKey(notice.id);
    case Notice::Kind::choiceWaits:
    case Notice::Kind::choiceIsOver:
        return choiceKey(notice.id);
    case Notice::Kind::noNetwork:
    case Notice::Kind::networkIsBack:
        return networkKey;
    default:
        return healthKey(notice.id);
    }
}

} // namespace

Notifier::Notifier(
    ModelBridge& observed, const WindowSettings& chosen, const QDBusConnection& sessionBus,
    std::function<Notices::Time()> clock, QObject* parent)
    : QObject(parent), bridge(observed), settings(chosen), now(std::move(clock)), desktop(sessionBus) {
    nextUpdate.setSingleShot(true);
    connect(&nextUpdate, &QTimer::timeout, this, &Notifier::check);
    connect(&bridge, &ModelBridge::statusChanged, this, &Notifier::scheduleCheck);
    connect(&bridge, &ModelBridge::reviewChanged, this, &Notifier::scheduleCheck);
    connect(&bridge, &ModelBridge::profilesChanged, this, &Notifier::scheduleCheck);
    connect(&desktop, &DesktopNotifications::acted, this, &Notifier::act);
}

// One check for all changes that busy profiles report within that time.
void Notifier::scheduleCheck() {
    constexpr int gatheringMilliseconds = 100;
    if (!nextUpdate.isActive() || nextUpdate.remainingTime() > gatheringMilliseconds)
        nextUpdate.start(gatheringMilliseconds);
}

void Notifier::check() {
    const AppModel& model = bridge.model();
    std::vector<ObservedProfile> looks;
    for (const auto& profile : model.profiles()) looks.push_back(observe(model, profile));
    const auto checked = now();
    const bool seen = QApplication::activeWindow() != nullptr;
    for (const auto& notice : notices.update(looks, checked, seen)) show(notice);
    nextUpdate.stop();
    if (const auto due = notices.nextUpdate()) {
        nextUpdate.start(std::chrono::ceil<std::chrono::milliseconds>(std::max(*due - checked, {})));
    }
}

// Notifications shown before the user switched them off are still withdrawn.
void Notifier::show(const Notice& notice) {
    const Profile* const profile = bridge.model().profile(notice.id);
    const QString key = keyOf(notice);
    if (profile == nullptr || !settings.notifies()) {
        desktop.close(key);
        return;
    }
    switch (notice.kind) {
    case Notice::Kind::reviewWaits:
        showReview(key, *profile);
        break;
    case Notice::Kind::failing:
        showFailure(key, *profile);
        break;
    case Notice::Kind::recovered:
        showRecovery(key, *profile);
        break;
    case Notice::Kind::choiceWaits:
        showChoice(key, *profile);
        break;
    case Notice::Kind::noNetwork:
        showNetwork();
        break;
    case Notice::Kind::reviewIsOver:
    case Notice::Kind::choiceIsOver:
    case Notice::Kind::networkIsBack:
    case Notice::Kind::failureIsOver:
        desktop.close(key);
        break;
    }
}

void Notifier::showNetwork() {
    const Explanation explanation = explain({.kind = Failure::Kind::noNetwork}, {});
    desktop.show(
        networkKey, {.title = toQString(explanation.heading.text()),
                     .text = tr("Nothing is wrong with your profiles. Zembrastel goes on when the network is back."),
                     .action = tr("Open window")});
}

void Notifier::showChoice(const QString& key, const Profile& profile) {
    desktop.show(
        key, {.title = tr("%1: choose what to upload").arg(onOneLine(toQString(profile.name))),
              .text = tr("Some files are on the server already. Uploads are paused until you choose."),
              .action = tr("Choose")});
}

void Notifier::showReview(const QString& key, const Profile& profile) {
    const auto review = bridge.model().reviews().find(profile.id);
    const std::size_t files = review == bridge.model().reviews().end() ? 0 : review->second.changes.size();
    const QString count = tr("%n files are newer on the server.", nullptr, static_cast<int>(files));
    desktop.show(
        key, {.title = tr("%1: newer files on the server").arg(onOneLine(toQString(profile.name))),
              .text = count + u' ' + tr("Uploads are paused until you choose which versions to keep."),
              .action = tr("Review")});
}

void Notifier::showFailure(const QString& key, const Profile& profile) {
    const ProfileStatus& status = bridge.model().status(profile.id);
    const auto text = status.failure && !status.unsaved ? explain(*status.failure, profile).text() : status.detail;
    desktop.show(
        key, {.title = tr("%1 cannot be kept up to date").arg(onOneLine(toQString(profile.name))),
              .text = toQString(text),
              .action = tr("Show")});
}

void Notifier::showRecovery(const QString& key, const Profile& profile) {
    desktop.show(
        key, {.title = tr("%1 is kept up to date again").arg(onOneLine(toQString(profile.name))),
              .text = tr("The problem is resolved."),
              .action = tr("Show")});
}

void Notifier::explainTray() {
    if (!settings.notifies()) return;
    desktop.show(
        trayKey, {.title = tr("Zembrastel keeps syncing"),
                  .text = tr("Its window is closed; its icon in the tray opens it again. Quitting stops transfers."),
                  .action = tr("Open window")});
}

void Notifier::act(const QString& key) {
    for (const auto& profile : bridge.model().profiles()) {
        if (key != reviewKey(profile.id) && key != healthKey(profile.id) && key != choiceKey(profile.id)) continue;
        const Uuid id = profile.id;
        Q_EMIT profileRequested(id);
        return;
    }
    Q_EMIT windowRequested();
}

} // namespace zembrastel::ui
