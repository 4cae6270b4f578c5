// The item in the desktop's tray: opens the window, starts and pauses profiles, quits.
//
// Main thread. The item exists while the desktop has a tray (a StatusNotifierWatcher with a host). Qt's tray icon is
// created only then: created earlier, it would never appear.
#pragma once

#include "ui/bridge/model_bridge.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>
#include <vector>

namespace zembrastel::ui {

class TrayItem : public QObject {
    Q_OBJECT

public:
    explicit TrayItem(
        ModelBridge& observed, const QDBusConnection& sessionBus = QDBusConnection::sessionBus(),
        QObject* parent = nullptr);
    ~TrayItem() override;

    // True if the user can reach the program through the tray.
    [[nodiscard]] bool isShown() const { return icon != nullptr; }

    [[nodiscard]] const QMenu& menu() const { return actions; }

    // The program's name, followed by the progress of each transfer that takes longer than a moment.
    [[nodiscard]] QString toolTip() const;

Q_SIGNALS:
    void openRequested();
    void quitRequested();
    // Starting or pausing a profile could not be saved.
    void failed(const QString& message);
    // The item appeared or disappeared, or the first check for a tray has ended.
    void shownChanged();

private:
    struct Entry {
        Uuid id; // of the profile
        QString label;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    Q_SLOT void checkForTray();
    void setTrayAvailable(bool there);
    void fillMenu();
    void showToolTip();
    [[nodiscard]] std::vector<Entry> profileEntries() const;
    void toggle(const Uuid& id);

    ModelBridge& bridge;
    QDBusConnection bus;
    QDBusServiceWatcher watcher;
    QMenu actions;
    std::vector<Entry> entries; // as they are in the menu
    bool answered = false;      // the desktop has reported whether it has a tray
    std::unique_ptr<QSystemTrayIcon> icon;
};

} // namespace zembrastel::ui
