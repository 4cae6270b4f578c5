#include "ui/desktop/window_settings.h"

#include "platform/standard_paths.h"
#include "ui/theme/qt_text.h"

namespace zembrastel::ui {
namespace {

const QString notificationsKey = QStringLiteral("notifications");
const QString trayExplainedKey = QStringLiteral("toldOfTray");
const QString geometryKey = QStringLiteral("geometry");
const QString profileKey = QStringLiteral("selectedProfile");

} // namespace

WindowSettings::WindowSettings(bool isDemo) {
    if (isDemo) return;
    const auto file = configFolder() / "Zembrastel" / "window.ini";
    stored = std::make_unique<QSettings>(toQString(file.string()), QSettings::IniFormat);
    notifications = stored->value(notificationsKey, true).toBool();
    explained = stored->value(trayExplainedKey, false).toBool();
    place = stored->value(geometryKey).toByteArray();
    profile = stored->value(profileKey).toString();
}

void WindowSettings::setNotifies(bool wanted) {
    notifications = wanted;
    if (stored) stored->setValue(notificationsKey, wanted);
}

void WindowSettings::setTrayExplained() {
    explained = true;
    if (stored) stored->setValue(trayExplainedKey, true);
}

void WindowSettings::setGeometry(const QByteArray& geometry) {
    if (place == geometry) return;
    place = geometry;
    if (stored) stored->setValue(geometryKey, geometry);
}

void WindowSettings::setSelectedProfile(const QString& id) {
    if (profile == id) return;
    profile = id;
    if (stored) stored->setValue(profileKey, id);
}

} // namespace zembrastel::ui
