// The main window: the profiles at its side, and the page of the selected one, or a welcome where there is none.
//
// Main thread. The dialogs in which profiles are edited and reviews decided are not the window's: it calls the hooks,
// which whoever owns both sets. The window itself asks before it destroys something and tells the model's alert.
// Closing hides it; all goes on meanwhile, and what wants to be seen waits until the window is shown again.
#pragma once

#include "ui/bridge/model_bridge.h"
#include "ui/main_window/profile_detail.h"
#include "ui/main_window/sidebar.h"
#include "ui/main_window/welcome_page.h"
#include "ui/widgets/confirm_dialog.h"

#include <QMainWindow>
#include <QPointer>
#include <QStackedWidget>

#include <functional>
#include <optional>

namespace zembrastel::ui {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    struct Hooks {
        std::function<void()> newProfile = [] {};
        std::function<void()> importProfiles = [] {};
        std::function<void(const Uuid&)> editProfile = [](const Uuid&) {};
        std::function<void(const Uuid&)> editContents = [](const Uuid&) {};
        std::function<void(const Uuid&)> showBackups = [](const Uuid&) {};
        // A review that is to be decided now, either because the user has asked for it or because it was found. The
        // bridge tells when it no longer is.
        std::function<void(const RemoteReview&, bool askedFor)> showReview = [](const RemoteReview&, bool) {};
    };

    // The bridge must outlive the window.
    explicit MainWindow(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void setHooks(Hooks chosen);

    // Shows the window in front of others, wherever it was.
    void bringForward();

    // "New Sync Profile…", and the contents of the selected profile, as a menu or another program asks for them.
    void createProfile();
    void editSelectedContents();

    // The review of a profile, which the user has asked for.
    void openReview(const Uuid& id);

    // For entries of whoever puts the program together, below the window's own.
    [[nodiscard]] WindowMenu& menu() const { return sidebar->menu(); }

    // The profile was moved to another place on a server: offers to send everything there.
    void offerToSendAll(const Uuid& id);

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
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeLayout();
    void connectParts();
    void orderTabs();
    void showSelected();
    void showWaiting();
    void showPresentedReview();
    [[nodiscard]] QWidget* inUse() const;
    void showAlert();
    void askToRemove(const Uuid& id);
    void askToSkipCheck(const Uuid& id);
    void askToSendAll(const Uuid& id);
    void sendAll(const Uuid& id);

    ModelBridge& bridge;
    Hooks hooks;
    Sidebar* sidebar;
    ProfileDetail* detail;
    WelcomePage* welcome;
    QStackedWidget* pages;
    QPointer<ConfirmDialog> alertDialog;
    bool reviewWaits = true; // to be shown
    std::optional<Uuid> reviewAskedFor;
};

} // namespace zembrastel::ui
