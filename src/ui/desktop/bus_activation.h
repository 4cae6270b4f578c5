// The program under its own name on the session bus, where launchers ask it to show itself
// (org.freedesktop.Application).
//
// Main thread; nothing waits for the bus. Without a session bus, or when another program has the name, it does nothing.
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
