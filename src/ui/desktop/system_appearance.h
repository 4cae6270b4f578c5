// Follows the desktop's settings for dark colours, high contrast and animations, as the settings portal reports them.
//
// Main thread. Without a bus or a portal, and until the portal answers, the appearance is light without high contrast,
// and animations are on.
#pragma once

#include "ui/theme/theme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace zembrastel::ui {

class SystemAppearance : public QObject {
    Q_OBJECT

public:
    // Asks a running portal before it returns, for at most 50 ms, so that the window opens in the right colours. If the
    // portal is not running, the bus starts it and the answer arrives later.
    explicit SystemAppearance(
        const QDBusConnection& sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    [[nodiscard]] Appearance appearance() const { return current; }
    [[nodiscard]] bool highContrast() const { return contrast; }
    [[nodiscard]] bool animated() const { return animationsOn; }

Q_SIGNALS:
    void changed();

private:
    Q_SLOT void settingChanged(const QDBusMessage& change);
    void listen(const QString& newOwner);
    void ask(const QString& group, const QString& key);
    void readNow(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection bus;
    QString owner; // unique name of the portal; empty while it is not running
    Appearance current = Appearance::light;
    bool contrast = false;
    bool animationsOn = true;
};

// Applies the desktop's appearance to the theme, now and after each change.
void followSystemAppearance(const SystemAppearance& source);

} // namespace zembrastel::ui
