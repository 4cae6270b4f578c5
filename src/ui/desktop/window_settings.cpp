#include "ui/desktop/window_settings.h"

#include "platform/standard_paths.h"
#include "ui/theme/qt_text.h"

namespace zembrastel::ui {
namespace {

const QString notificationsKey = QStringLiteral("notifications");
const QString trayExplainedKey = QStringLiteral("toldOfTray");

} // namespace

WindowSettings::WindowSettings(bool isDemo) {
    if (isDemo) return;
    const auto file = configFolder() / "Zembrastel" / "window.ini";
    stored = std::make_unique<QSettings>(toQString(file.string()), QSettings::IniFormat);
    notifications = stored->value(notificationsKey, true).toBool();
    explained = stored->value(trayExplainedKey, false).toBool();
}

void WindowSettings::setNotifies(bool wanted) {
    notifications = wanted;
    if (stored) stored->setValue(notificationsKey, wanted);
}

void WindowSettings::setTrayExplained() {
    explained = true;
    if (stored) stored->setValue(trayExplainedKey, true);
}

} // namespace zembrastel::ui
