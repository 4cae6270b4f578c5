// The main window: the sidebar with the profiles, and the page of the selected profile, or a welcome page without
// profiles.
//
// Main thread. The window opens no screen itself: it calls the hooks that its owner sets. It asks before it removes or
// overwrites anything, and shows the model's alert. Closing hides the window and stops nothing; alerts and reviews wait
// until it is shown again.
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
        // Shows the certificate of the profile's server for a decision.
        std::function<void(const Uuid&)> reviewCertificate = [](const Uuid&) {};
        // Creates the profile's folder on the server, and checks the server again.
        std::function<void(const Uuid&)> createFolder = [](const Uuid&) {};
        // Shows a review for a decision, because the user asked for it or because a check found it. The bridge reports
        // when its review is no longer presented.
        std::function<void(const RemoteReview&, bool requestedByUser)> showReview = [](const RemoteReview&, bool) {};
    };

    // The bridge must outlive the window.
    explicit MainWindow(ModelBridge& modelBridge, QWidget* parent = nullptr);

    void setHooks(Hooks chosen);

    // Shows the window in front of other windows.
    void bringForward();

    // "New Sync Profile…", and the contents of the selected profile.
    void createProfile();
    void editSelectedContents();

    // Opens the review of a profile at the user's request.
    void openReview(const Uuid& id);

    // The owner adds entries below the window's own.
    [[nodiscard]] WindowMenu& menu() const { return sidebar->menu(); }

    // Shows or hides a quit button, needed on a desktop without a tray. A click emits quitRequested().
    void offerQuit(bool offered);

    // Shows the message as the model's alert, at once or when the window is next shown.
    void showFailure(const QString& message);

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
    void focusFirst();
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
    bool reviewWaits = true; // the presented review was not yet shown
    std::optional<Uuid> requestedReview;
};

} // namespace zembrastel::ui
