// Assembles the desktop program: the window with its dialogs, and the tray item.
//
// Main thread. Closing the window leaves the program running. The program ends when the user quits, by the tray's menu
// or Ctrl+Q, or when the desktop or a signal requests it.
#pragma once

#include "ui/bridge/model_bridge.h"
#include "ui/certificate/certificate_review.h"
#include "ui/desktop/login_entry.h"
#include "ui/desktop/notifier.h"
#include "ui/desktop/tray_item.h"
#include "ui/desktop/window_settings.h"
#include "ui/help/help_window.h"
#include "ui/main_window/main_window.h"
#include "ui/profile_editor/connection_check.h"
#include "ui/profile_editor/profile_editor.h"

#include <QObject>
#include <QPointer>

#include <optional>

namespace zembrastel::ui {

class Shell : public QObject {
    Q_OBJECT

public:
    // The model and the context must outlive the shell. With `loginEntry` the menu offers to start the program at
    // login.
    Shell(AppModel& model, MainContext& mainContext, std::optional<LoginEntry> loginEntry = std::nullopt);
    ~Shell() override;

    void showWindow() { window.bringForward(); }

private:
    void fillMenu();
    void restoreWindow();
    void rememberWindow();
    void showHelp();
    void showAbout();
    void startAtLogin(bool wanted);
    void importProfiles();
    void showProfile(const Uuid& id);
    void openEditor(const std::optional<Uuid>& id, bool onContents);
    void browse(
        ProfileEditor& editor, const Profile& draft, const std::string& password, bool syncMode,
        const DownloadSelection& current, ProfileEditor::Apply apply);
    void createFolder(const Uuid& id);
    void showBackups(const Uuid& id);
    void showReview(const RemoteReview& review, bool requestedByUser);
    void explainBackgroundSync();

    MainContext& context;
    ModelBridge bridge;
    MainWindow window;
    TrayItem tray;
    WindowSettings settings;
    Notifier notifier;
    const std::optional<LoginEntry> startEntry;
    bool closingExplained = false;
    ConnectionCheck folderCreation;
    CertificateReview certificates;
    QPointer<HelpWindow> help;
};

} // namespace zembrastel::ui
