#include "ui/shell.h"

#include "app/diagnosis/failure_catalogue.h"
#include "model/error.h"
#include "platform/standard_paths.h"
#include "ui/backups/backups_sheet.h"
#include "ui/certificate/certificate_sheet.h"
#include "ui/content_picker/content_picker.h"
#include "ui/help/about_dialog.h"
#include "ui/import/import_sheet.h"
#include "ui/remote_changes/review_sheet.h"
#include "ui/remote_folder/remote_folder_sheet.h"
#include "ui/theme/qt_text.h"
#include "ui/widgets/confirm_dialog.h"

#include <QAction>
#include <QApplication>

namespace zembrastel::ui {

namespace {

// With "~" for the home folder.
QString shortPath(const std::filesystem::path& path) {
    const auto inHome = path.lexically_relative(homeFolder());
    const bool below = !inHome.empty() && *inHome.begin() != "..";
    return toQString(below ? "~/" + inHome.string() : path.string());
}

} // namespace

Shell::Shell(AppModel& model, MainContext& mainContext, std::optional<LoginEntry> loginEntry)
    : context(mainContext), bridge(model), window(bridge), tray(bridge), settings(model.isDemo()),
      notifier(bridge, settings), startEntry(std::move(loginEntry)), folderCreation(mainContext),
      certificates(bridge, mainContext) {
    window.setHooks(
        {.newProfile = [this] { openEditor(std::nullopt, false); },
         .importProfiles = [this] { importProfiles(); },
         .editProfile = [this](const Uuid& id) { openEditor(id, false); },
         .editContents = [this](const Uuid& id) { openEditor(id, true); },
         .showBackups = [this](const Uuid& id) { showBackups(id); },
         .reviewCertificate = [this](const Uuid& id) { certificates.start(id, window); },
         .createFolder = [this](const Uuid& id) { createFolder(id); },
         .showReview =
             [this](const RemoteReview& review, bool requestedByUser) { showReview(review, requestedByUser); }});
    // Queued, because quitting also closes the window; after that no more events are handled.
    connect(&window, &MainWindow::closed, this, &Shell::explainBackgroundSync, Qt::QueuedConnection);
    connect(&tray, &TrayItem::openRequested, this, &Shell::showWindow);
    connect(&tray, &TrayItem::failed, this, [this](const QString& message) {
        window.showFailure(message);
        showWindow();
    });
    connect(&tray, &TrayItem::quitRequested, qApp, &QApplication::quit);
    connect(&tray, &TrayItem::shownChanged, &window, [this] { window.offerQuit(!tray.isShown()); });
    connect(&notifier, &Notifier::profileRequested, this, &Shell::showProfile);
    connect(&notifier, &Notifier::windowRequested, this, &Shell::showWindow);
    connect(&window, &MainWindow::quitRequested, qApp, &QApplication::quit);
    auto* const quit = new QAction(tr("Quit Zembrastel"), this);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, &QApplication::quit);
    window.addAction(quit);
    fillMenu();
    window.menu().addSeparator();
    window.menu().add(quit);
    restoreWindow();
}

Shell::~Shell() {
    rememberWindow();
    delete help;
}

// The window opens where it was, with the profile that it showed.
void Shell::restoreWindow() {
    window.restoreGeometry(settings.geometry());
    AppModel& model = bridge.model();
    const auto last = Uuid::parse(settings.selectedProfile().toStdString());
    if (last && model.profile(*last) != nullptr) model.select(*last);
    connect(&bridge, &ModelBridge::selectionChanged, this, &Shell::rememberWindow);
    connect(&window, &MainWindow::closed, this, &Shell::rememberWindow);
}

void Shell::rememberWindow() {
    settings.setGeometry(window.saveGeometry());
    if (const auto& selected = bridge.model().selection()) settings.setSelectedProfile(toQString(selected->text()));
}

void Shell::fillMenu() {
    WindowMenu& menu = window.menu();
    menu.addSeparator();
    menu.addSwitch(
        tr("Show notifications"), [this] { return settings.notifies(); },
        [this](bool wanted) { settings.setNotifies(wanted); });
    if (startEntry) {
        menu.addSwitch(
            tr("Start at login"), [this] { return startEntry->isOn(); }, [this](bool wanted) { startAtLogin(wanted); });
    }
    menu.addSeparator();
    auto* const manual = new QAction(tr("Help"), this);
    manual->setShortcut(QKeySequence(Qt::Key_F1));
    connect(manual, &QAction::triggered, this, &Shell::showHelp);
    window.addAction(manual);
    menu.add(manual);
    menu.add(tr("About Zembrastel"), [this] { showAbout(); });
}

void Shell::showHelp() {
    const QString folder = manualFolder();
    if (folder.isEmpty()) {
        window.showFailure(tr("The manual is not installed. It belongs to the package zembrastel-cli."));
        return;
    }
    if (!help) {
        help = new HelpWindow(folder);
        help->setAttribute(Qt::WA_DeleteOnClose);
    }
    help->bringForward();
}

void Shell::showAbout() {
    window.bringForward();
    auto* const about = new AboutDialog(&window);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
}

void Shell::startAtLogin(bool wanted) {
    try {
        wanted ? startEntry->switchOn() : startEntry->switchOff();
    } catch (const std::exception& error) {
        window.showFailure(engineText(describe(error)));
        return;
    }
    ConfirmDialog::inform(
        &window, tr("Start at login"),
        (wanted ? tr("Zembrastel will start in the background when you log in: the entry %1 was written.")
                : tr("Zembrastel will not start when you log in: the entry %1 was removed."))
            .arg(shortPath(startEntry->file())));
}

void Shell::createFolder(const Uuid& id) {
    const auto create = [this, id](const std::string& password) {
        const Profile* const profile = bridge.model().profile(id);
        if (profile == nullptr) return; // removed meanwhile
        folderCreation.createFolder(
            *profile, password, [this, id, created = *profile](const ConnectionCheck::Result& result) {
                if (result.failure) {
                    window.showFailure(engineText(explainCreation(*result.failure, created).text()));
                } else if (bridge.model().running(id)) {
                    bridge.model().retryCheck(id);
                }
            });
    };
    bridge.model().withPassword(
        id, create, [this](const std::string& failure) { window.showFailure(engineText(failure)); });
}

void Shell::importProfiles() {
    window.bringForward();
    chooseImportFile(&window, [this](const std::filesystem::path& file) {
        auto* const sheet = new ImportSheet(bridge, context, file, &window);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->open();
    });
}

void Shell::showProfile(const Uuid& id) {
    AppModel& model = bridge.model();
    model.select(id);
    const bool presented = model.presentedReview() && model.presentedReview()->id == id;
    if (model.reviews().contains(id) && !presented) window.openReview(id);
    showWindow();
}

void Shell::openEditor(const std::optional<Uuid>& id, bool onContents) {
    window.bringForward();
    auto* const editor = new ProfileEditor(bridge, context, id, &window);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->setBrowse(
        [this, editor](
            const Profile& draft, const std::string& password, bool syncMode, const DownloadSelection& current,
            ProfileEditor::Apply apply) { browse(*editor, draft, password, syncMode, current, std::move(apply)); });
    editor->setReviewCertificate(
        [editor](const Profile& draft, const InspectedCertificate& seen, std::function<void(const TrustedKey&)> trust) {
            auto* const sheet = new CertificateSheet(draft, seen, {}, std::move(trust), editor);
            sheet->setAttribute(Qt::WA_DeleteOnClose);
            sheet->open();
        });
    editor->setChooseRemoteFolder(
        [this,
         editor](const Profile& draft, const std::string& password, std::function<void(const std::string&)> apply) {
            auto* const sheet = new RemoteFolderSheet(context, draft, password, std::move(apply), editor);
            sheet->setAttribute(Qt::WA_DeleteOnClose);
            connect(sheet, &RemoteFolderSheet::certificateRefused, editor, &ProfileEditor::testConnection);
            sheet->open();
        });
    if (onContents) editor->openSyncContentsOnAppear();
    editor->open();
}

void Shell::browse(
    ProfileEditor& editor, const Profile& draft, const std::string& password, bool syncMode,
    const DownloadSelection& current, ProfileEditor::Apply apply) {
    auto* const picker =
        new RemoteDownloadPicker(context, draft, password, current, syncMode, std::move(apply), &editor);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    connect(picker, &RemoteDownloadPicker::nothingToDownload, &editor, &ProfileEditor::continueWithoutDownload);
    connect(picker, &RemoteDownloadPicker::certificateRefused, &editor, &ProfileEditor::testConnection);
    picker->open();
}

void Shell::showBackups(const Uuid& id) {
    const Profile* const profile = bridge.model().profile(id);
    if (profile == nullptr) return; // removed meanwhile
    auto* const sheet = new BackupsSheet(context, *profile, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void Shell::showReview(const RemoteReview& review, bool requestedByUser) {
    auto* const sheet = new RemoteChangesView(bridge, review, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    requestedByUser ? sheet->open() : sheet->openByItself();
}

void Shell::explainBackgroundSync() {
    if (tray.isShown()) {
        if (!settings.trayExplained() && settings.notifies()) {
            notifier.explainTray();
            settings.setTrayExplained();
        }
        return;
    }
    if (closingExplained) return;
    closingExplained = true;
    // Without a tray the user must learn how to reach the program again.
    ConfirmDialog::inform(
        nullptr, tr("Zembrastel keeps syncing"),
        tr("Its window is closed and this desktop has no tray to show it in. Start Zembrastel again to open the "
           "window; Ctrl+Q there quits and stops transfers."));
}

} // namespace zembrastel::ui
