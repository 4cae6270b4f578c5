// Follows the desktop's dark setting and its wish for no animations, as the settings portal tells them.
//
// Main thread. Without a bus, without a portal, or before it answers, the appearance is light and things may move.
#pragma once

#include "ui/theme/theme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace zembrastel::ui {

class SystemAppearance : public QObject {
    Q_OBJECT

public:
    // A portal that runs already is asked before this returns, for at most 50 ms, so that a window opens in the right
    // colours. One that does not is started by the bus and heard later.
    explicit SystemAppearance(
        const QDBusConnection& sessionBus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    [[nodiscard]] Appearance appearance() const { return current; }
    [[nodiscard]] bool animated() const { return moves; }

Q_SIGNALS:
    void changed();

private:
    Q_SLOT void settingChanged(const QDBusMessage& change);
    void listen(const QString& newOwner);
    void ask(const QString& group, const QString& key);
    void askNow(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection bus;
    QString owner; // of the portal's name; empty while there is none
    Appearance current = Appearance::light;
    bool moves = true;
};

// Applies the desktop's appearance to the theme, now and whenever it changes.
void followSystemAppearance(const SystemAppearance& source);

} // namespace zembrastel::ui
