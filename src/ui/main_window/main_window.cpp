#include "ui/main_window/main_window.h"

#include "model/error.h"
#include "ui/theme/qt_text.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QScreen>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize usualSize{980, 640};
constexpr QSize smallestSize{760, 520};

} // namespace

MainWindow::MainWindow(ModelBridge& modelBridge, QWidget* parent)
    : QMainWindow(parent), bridge(modelBridge), sidebar(new Sidebar(modelBridge)),
      detail(new ProfileDetail(modelBridge)), welcome(new WelcomePage), pages(new QStackedWidget) {
    setWindowTitle(tr("Zembrastel"));
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    makeLayout();
    connectParts();
    orderTabs();
    showSelected();
    resize(scaledToText(usualSize).boundedTo(room));
    focusFirst();
}

void MainWindow::setHooks(Hooks chosen) {
    hooks = std::move(chosen);
    if (isVisible()) showWaiting();
}

void MainWindow::makeLayout() {
    pages->addWidget(detail);
    pages->addWidget(welcome);
    auto* const content = new QWidget;
    auto* const layout = new QHBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(sidebar);
    layout->addWidget(pages, 1);
    setCentralWidget(content);
}

void MainWindow::connectParts() {
    connect(&bridge, &ModelBridge::selectionChanged, this, &MainWindow::showSelected);
    connect(&bridge, &ModelBridge::profilesChanged, this, &MainWindow::showSelected);
    connect(&bridge, &ModelBridge::alertChanged, this, &MainWindow::showAlert);
    connect(&bridge, &ModelBridge::presentedReviewChanged, this, [this] {
        reviewWaits = true;
        showPresentedReview();
    });
    connect(&sidebar->list(), &ProfileListView::editRequested, this, [this](const Uuid& id) { hooks.editProfile(id); });
    connect(&sidebar->list(), &ProfileListView::removeRequested, this, &MainWindow::askToRemove);
    connect(&sidebar->list(), &ProfileListView::sendAllRequested, this, &MainWindow::askToSendAll);
    connect(&sidebar->plus(), &QPushButton::clicked, this, [this] { hooks.newProfile(); });
    connect(&sidebar->quitButton(), &QPushButton::clicked, this, &MainWindow::quitRequested);
    connect(&welcome->createButton(), &QPushButton::clicked, this, [this] { hooks.newProfile(); });
    connect(&welcome->importButton(), &QPushButton::clicked, this, [this] { hooks.importProfiles(); });
    connect(detail, &ProfileDetail::reviewRequested, this, &MainWindow::openReview);
    connect(detail, &ProfileDetail::editContentsRequested, this, [this](const Uuid& id) { hooks.editContents(id); });
    connect(detail, &ProfileDetail::backupsRequested, this, [this](const Uuid& id) { hooks.showBackups(id); });
    connect(detail, &ProfileDetail::skipCheckRequested, this, &MainWindow::askToSkipCheck);
    connect(detail, &ProfileDetail::editRequested, this, [this](const Uuid& id) { hooks.editProfile(id); });
    connect(
        detail, &ProfileDetail::certificateRequested, this, [this](const Uuid& id) { hooks.reviewCertificate(id); });
    connect(detail, &ProfileDetail::createFolderRequested, this, [this](const Uuid& id) { hooks.createFolder(id); });
    connect(detail, &ProfileDetail::failed, this, &MainWindow::showFailure);
    auto* const create = new QAction(tr("New Sync Profile…"), this);
    create->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    connect(create, &QAction::triggered, this, [this] { hooks.newProfile(); });
    addAction(create);
    menu().add(create);
    menu().add(tr("Import profiles…"), [this] { hooks.importProfiles(); });
}

void MainWindow::orderTabs() {
    QList<QWidget*> order{
        &sidebar->list(), &sidebar->plus(), &sidebar->menu(), &welcome->createButton(), &welcome->importButton()};
    order += detail->controls();
    order += &sidebar->quitButton();
    for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
}

void MainWindow::offerQuit(bool offered) { sidebar->quitButton().setVisible(offered); }

void MainWindow::bringForward() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::createProfile() {
    bringForward();
    hooks.newProfile();
}

void MainWindow::editSelectedContents() {
    bringForward();
    const auto& selected = bridge.model().selection();
    if (selected && bridge.model().profile(*selected) != nullptr) hooks.editContents(*selected);
}

void MainWindow::openReview(const Uuid& id) {
    if (bridge.model().reviews().contains(id)) requestedReview = id;
    bridge.model().openReview(id);
}

void MainWindow::showSelected() {
    const auto& selected = bridge.model().selection();
    const auto& profiles = bridge.model().profiles();
    QWidget* const shown = pages->currentWidget();
    if (profiles.empty()) {
        pages->setCurrentWidget(welcome);
    } else {
        // While a profile is being removed, the selection may still name it.
        const bool valid = selected && bridge.model().profile(*selected) != nullptr;
        detail->showProfile(valid ? *selected : profiles.front().id);
        pages->setCurrentWidget(detail);
    }
    // What had the focus may be on the page that went.
    if (pages->currentWidget() != shown) focusFirst();
}

void MainWindow::focusFirst() {
    if (pages->currentWidget() == welcome) {
        welcome->createButton().setFocus();
    } else {
        sidebar->list().setFocus();
    }
}

void MainWindow::showWaiting() {
    showAlert();
    showPresentedReview();
}

void MainWindow::showPresentedReview() {
    const auto& review = bridge.model().presentedReview();
    if (!reviewWaits || !review || !isVisible()) return;
    const bool requestedByUser = std::exchange(requestedReview, std::nullopt) == review->id;
    if (QWidget* const other = inUse()) {
        other->installEventFilter(this); // until it closes or loses the focus
        return;
    }
    reviewWaits = false;
    const RemoteReview shown = *review;
    bridge.model().select(shown.id);
    hooks.showReview(shown, requestedByUser);
}

// The menu, dialog or text field that the user is working in. A sheet that opened over it would receive keys that were
// meant for it.
QWidget* MainWindow::inUse() const {
    if (QWidget* const menu = QApplication::activePopupWidget()) return menu;
    if (QWidget* const dialog = QApplication::activeModalWidget()) return dialog;
    QWidget* const focused = isActiveWindow() ? focusWidget() : nullptr;
    const bool isTextField = focused != nullptr && focused->testAttribute(Qt::WA_InputMethodEnabled);
    return isTextField ? focused : nullptr;
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide || event->type() == QEvent::FocusOut) {
        watched->removeEventFilter(this);
        QMetaObject::invokeMethod(this, &MainWindow::showPresentedReview, Qt::QueuedConnection);
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::showAlert() {
    const auto& alert = bridge.model().alert();
    if (!alert || !isVisible() || alertDialog) return;
    // If another alert arrived while this one was open, it is shown next.
    alertDialog = ConfirmDialog::showMessage(this, tr("Zembrastel"), toQString(*alert), [this, shown = *alert] {
        alertDialog.clear();
        if (bridge.model().alert() == shown) {
            bridge.model().dismissAlert();
        } else {
            showAlert();
        }
    });
}

void MainWindow::showFailure(const QString& message) { bridge.model().setAlert(message.toStdString()); }

void MainWindow::askToRemove(const Uuid& id) {
    ConfirmDialog::ask(
        this, tr("Remove this sync profile?"),
        tr("This removes the saved connection and its Keychain password. Your local and remote files are kept."),
        tr("Remove profile"), [this, id] { bridge.model().remove(id); });
}

void MainWindow::askToSkipCheck(const Uuid& id) {
    ConfirmDialog::ask(
        this, tr("Start without comparing server files?"),
        tr("Queued local edits may overwrite newer server files. Use this only if you want to proceed without a "
           "successful comparison."),
        tr("Start without checking"), [this, id] { bridge.model().startWithoutCheck(id); });
}

void MainWindow::askToSendAll(const Uuid& id) {
    ConfirmDialog::ask(
        this, tr("Send everything again?"),
        tr("Every file is compared with the server first. Identical files are skipped, and all others are uploaded. If "
           "the server has a version that was not uploaded from here, you decide first. A paused profile starts "
           "watching."),
        tr("Send everything"), [this, id] { sendAll(id); });
}

void MainWindow::sendAll(const Uuid& id) {
    try {
        bridge.model().sendAgain(id, Resend::everything);
    } catch (const std::exception& error) {
        showFailure(toQString(describe(error)));
    }
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    sidebar->fitWindow(width());
    detail->setNarrow(width() < scaledToText(Sidebar::narrowBelow));
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    // Queued, because a dialog needs a visible window.
    QMetaObject::invokeMethod(this, &MainWindow::showWaiting, Qt::QueuedConnection);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    Q_EMIT closed();
}

} // namespace zembrastel::ui
