// The main window: the profiles at its side, and the page of the selected one, or a welcome where there is none.
//
// Main thread. The dialogs in which profiles are edited and reviews decided are not the window's: it calls the hooks,
// which whoever owns both sets. The window itself asks before it destroys something and tells the model's alert.
// Closing hides it; all goes on meanwhile, and what wants to be seen waits until the window is shown again.
#pragma once

#include "ui/confirm_dialog.h"
#include "ui/model_bridge.h"
#include "ui/profile_detail.h"
#include "ui/sidebar.h"
#include "ui/welcome_page.h"

#include <QMainWindow>
#include <QPointer>
#include <QStackedWidget>

#include <functional>

namespace zembrastel {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    struct Hooks {
        std::function<void()> newProfile = [] {};
        std::function<void()> importProfiles = [] {};
        std::function<void(const Uuid&)> editProfile = [](const Uuid&) {};
        std::function<void(const Uuid&)> editContents = [](const Uuid&) {};
        std::function<void(const Uuid&)> showBackups = [](const Uuid&) {};
        // A review that is to be decided now. That it no longer is, the bridge tells.
        std::function<void(const RemoteReview&)> showReview = [](const RemoteReview&) {};
    };

    // The bridge must outlive the window.
    explicit MainWindow(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void setHooks(Hooks chosen);

    // Shows the window in front of others, wherever it was.
    void bringForward();

    // "New Sync Profile…", and the contents of the selected profile, as a menu or another program asks for them.
    void createProfile();
    void editSelectedContents();

    // For entries of whoever puts the program together, below the window's own.
    [[nodiscard]] WindowMenu& menu() const { return sidebar->menu(); }

    // Where no tray offers it: shows a way to quit, which is told by quitRequested().
    void offerQuit(bool offered);

    // Tells it through the model's alert: at once, or when the window is next shown.
    void tellFailure(const QString& message);

Q_SIGNALS:
    // The user closed the window.
    void closed();
    void quitRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void makeLayout();
    void connectParts();
    void orderTabs();
    void showSelected();
    void showWaiting();
    void showPresentedReview();
    void showAlert();
    void askToRemove(const Uuid& id);
    void askToSkipCheck(const Uuid& id);

    ModelBridge& bridge;
    Hooks hooks;
    Sidebar* sidebar;
    ProfileDetail* detail;
    WelcomePage* welcome;
    QStackedWidget* pages;
    QPointer<ConfirmDialog> alertDialog;
    bool reviewWaits = true; // for the window to be shown
};

} // namespace zembrastel
