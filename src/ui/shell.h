// The desktop program put together: the window with its dialogs, the tray item, and how it ends.
//
// Main thread. Closing the window leaves the program running; it ends when the user quits, by the tray's menu or
// Ctrl+Q, or when the desktop or a signal asks it to.
#pragma once

#include "ui/main_window.h"
#include "ui/model_bridge.h"
#include "ui/tray_item.h"

#include <QObject>

#include <optional>

namespace zembrastel {

class ProfileEditor;

class Shell : public QObject {
    Q_OBJECT

public:
    // The model and the context must outlive the shell.
    Shell(AppModel& model, MainContext& mainContext);

    void showWindow() { window.bringForward(); }

private:
    void openEditor(const std::optional<Uuid>& id, bool onContents);
    void browse(
        ProfileEditor& editor, const Profile& draft, const std::string& password, bool syncMode,
        const DownloadSelection& current, std::function<void(const DownloadSelection& chosen)> apply);
    void showBackups(const Uuid& id);
    void showReview(const RemoteReview& review);
    void tellThatSyncingGoesOn();

    MainContext& context;
    ModelBridge bridge;
    MainWindow window;
    TrayItem tray;
    bool toldOfClosing = false;
};

} // namespace zembrastel
