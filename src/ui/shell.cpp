#include "ui/shell.h"

#include "ui/backups_sheet.h"
#include "ui/confirm_dialog.h"
#include "ui/content_picker.h"
#include "ui/profile_editor.h"
#include "ui/review_sheet.h"

#include <QAction>
#include <QApplication>

namespace zembrastel {

Shell::Shell(AppModel& model, MainContext& mainContext)
    : context(mainContext), bridge(model), window(bridge), tray(bridge) {
    window.setHooks(
        {.newProfile = [this] { openEditor(std::nullopt, false); },
         .editProfile = [this](const Uuid& id) { openEditor(id, false); },
         .editContents = [this](const Uuid& id) { openEditor(id, true); },
         .showBackups = [this](const Uuid& id) { showBackups(id); },
         .showReview = [this](const RemoteReview& review) { showReview(review); }});
    connect(&window, &MainWindow::closed, this, &Shell::tellThatSyncingGoesOn);
    connect(&tray, &TrayItem::openRequested, this, &Shell::showWindow);
    connect(&tray, &TrayItem::failed, this, [this](const QString& message) {
        window.tellFailure(message);
        showWindow();
    });
    connect(&tray, &TrayItem::quitRequested, qApp, &QApplication::quit);
    connect(&tray, &TrayItem::shownChanged, &window, [this] { window.offerQuit(!tray.isShown()); });
    connect(&window, &MainWindow::quitRequested, qApp, &QApplication::quit);
    auto* const quit = new QAction(tr("Quit Zembrastel"), this);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, &QApplication::quit);
    window.addAction(quit);
}

void Shell::openEditor(const std::optional<Uuid>& id, bool onContents) {
    window.bringForward();
    auto* const editor = new ProfileEditor(bridge, context, id, &window);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->setBrowse([this, editor](
                          const Profile& draft, const std::string& password, bool syncMode,
                          const DownloadSelection& current, std::function<void(const DownloadSelection&)> apply) {
        browse(*editor, draft, password, syncMode, current, std::move(apply));
    });
    if (onContents) editor->openSyncContentsOnAppear();
    editor->open();
}

void Shell::browse(
    ProfileEditor& editor, const Profile& draft, const std::string& password, bool syncMode,
    const DownloadSelection& current, std::function<void(const DownloadSelection& chosen)> apply) {
    auto* const picker = new RemoteDownloadPicker(
        context, draft, password, current, syncMode,
        [apply = std::move(apply)](const DownloadSelection& chosen) { apply(chosen); }, &editor);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->open();
}

void Shell::showBackups(const Uuid& id) {
    const Profile* const profile = bridge.model().profile(id);
    if (profile == nullptr) return; // removed meanwhile
    auto* const sheet = new BackupsSheet(context, *profile, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void Shell::showReview(const RemoteReview& review) {
    auto* const sheet = new RemoteChangesView(bridge, review, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void Shell::tellThatSyncingGoesOn() {
    if (tray.isShown() || toldOfClosing) return;
    toldOfClosing = true;
    // The desktop has no tray to come back from: the user must know the way.
    ConfirmDialog::tell(
        nullptr, tr("Zembrastel keeps syncing"),
        tr("Its window is closed and this desktop has no tray to show it in. Start Zembrastel again to open the "
           "window; Ctrl+Q there quits and stops transfers."));
}

} // namespace zembrastel
