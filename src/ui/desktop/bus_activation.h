// Owns the program's name on the session bus, so that launchers can ask it to show its window
// (org.freedesktop.Application).
//
// Main thread; never blocks on the bus. Does nothing without a session bus or while another program owns the name.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>

namespace zembrastel::ui {

class BusActivation : public QDBusVirtualObject {
    Q_OBJECT

public:
    explicit BusActivation(QDBusConnection sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

Q_SIGNALS:
    void showRequested();
};

} // namespace zembrastel::ui
