// The item in the desktop's tray: opens the window, starts and pauses profiles, quits.
//
// Main thread. The item is there whenever the desktop has a tray (a StatusNotifierWatcher with a host) and comes and
// goes with it. Qt's own tray icon is made only then: asked too early, it would never appear.
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

    // Can the user reach the program through the tray?
    [[nodiscard]] bool isShown() const { return icon != nullptr; }

    [[nodiscard]] const QMenu& menu() const { return actions; }

    // The program's name, and below it how far the profiles are that take longer than a moment.
    [[nodiscard]] QString toolTip() const;

Q_SIGNALS:
    void openRequested();
    void quitRequested();
    // A profile was started or paused, and that could not be saved.
    void failed(const QString& message);
    // It is known for the first time whether there is an item, or that has changed.
    void shownChanged();

private:
    struct Entry {
        Uuid id; // of the profile
        QString label;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    Q_SLOT void lookForTray();
    void takeHostAnswer(bool there);
    void fillMenu();
    void showToolTip();
    [[nodiscard]] std::vector<Entry> profileEntries() const;
    void toggle(const Uuid& id);

    ModelBridge& bridge;
    QDBusConnection bus;
    QDBusServiceWatcher watcher;
    QMenu actions;
    std::vector<Entry> entries; // as they are in the menu
    bool answered = false;      // by the desktop, whether it has a tray
    std::unique_ptr<QSystemTrayIcon> icon;
};

} // namespace zembrastel::ui
