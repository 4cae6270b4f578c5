#include "ui/main_window/profile_detail.h"

#include "app/diagnosis/failure_catalogue.h"
#include "app/diagnosis/support_details.h"
#include "model/error.h"
#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QScrollBar>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int margin = 24;
constexpr int pageTop = 8;
constexpr int cardGap = 16;
constexpr int widest = 1120;

bool openInFileManager(const std::string& folder) {
    const QString path = toQString(folder);
    // Starting the file manager succeeds even if the folder does not exist.
    return QFileInfo(path).isDir() && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

} // namespace

void copyDetails(ModelBridge& bridge, const Uuid& id, std::function<void()> copied) {
    const auto copy = [&model = bridge.model(), id, copied = std::move(copied)](const std::string& password) {
        const Profile* const profile = model.profile(id);
        if (profile == nullptr) return; // removed meanwhile
        const auto failure = model.checkFailures().find(id);
        QGuiApplication::clipboard()->setText(toQString(supportDetails(
            {.program = "zembrastel " ZEMBRASTEL_VERSION,
             .profile = *profile,
             .password = password,
             .status = &model.status(id),
             .failure = failure == model.checkFailures().end() ? std::nullopt : std::optional(failure->second)})));
        copied();
    };
    bridge.model().withPassword(id, copy, [copy](const std::string&) { copy(std::string()); });
}

ProfileDetail::ProfileDetail(ModelBridge& modelBridge, QWidget* parent)
    : QWidget(parent), bridge(modelBridge), header(new DetailHeader), scroll(new QScrollArea),
      statusLine(new StatusLine), progress(new ProgressStrip(cardGap)), choice(new ChoiceBanner),
      banners(new DetailBanners), route(new RouteCard), counters(new CountersCard),
      copy(new PushButton(tr("Copy details"), ButtonKind::link)),
      backups(new PushButton(tr("Backups…"), ButtonKind::link)), activity(new ActivityList) {
    page = makePage();
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->verticalScrollBar()->installEventFilter(this);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(header);
    layout->addWidget(scroll, 1);
    connectModel();
    connectControls();
    tomorrow.setSingleShot(true);
    tomorrow.setTimerType(Qt::VeryCoarseTimer);
}

QWidget* ProfileDetail::makePage() {
    auto* const content = new QWidget;
    setStyleProperty(*content, "page", true);
    auto* const all = new QVBoxLayout(content);
    all->setContentsMargins(margin, pageTop, margin, margin);
    all->setSpacing(0);
    all->addWidget(statusLine);
    all->addWidget(progress); // instead of spacing
    auto* const layout = new QVBoxLayout;
    layout->setSpacing(cardGap);
    all->addLayout(layout, 1);
    layout->addWidget(choice); // without other banners
    layout->addWidget(banners);
    layout->addWidget(route);
    layout->addWidget(counters);
    auto* const log = new QVBoxLayout;
    log->setSpacing(7);
    log->addLayout(makeActivityHead());
    log->addWidget(activity, 1);
    layout->addLayout(log, 1);
    return content;
}

QLayout* ProfileDetail::makeActivityHead() {
    auto* const head = new QHBoxLayout;
    head->setSpacing(8);
    head->addWidget(makeLabel(tr("Recent activity"), TextStyle::section), 1);
    head->addWidget(copy);
    head->addWidget(backups);
    if (bridge.model().isDemo()) backups->hide(); // a demonstration has no files
    return head;
}

void ProfileDetail::connectModel() {
    const auto ifShown = [this](void (ProfileDetail::*refreshPart)()) {
        return [this, refreshPart](const Uuid& changed) {
            if (changed == id) (this->*refreshPart)();
        };
    };
    connect(&bridge, &ModelBridge::profilesChanged, this, &ProfileDetail::refresh);
    connect(&bridge, &ModelBridge::statusChanged, this, ifShown(&ProfileDetail::refreshStatus));
    connect(&bridge, &ModelBridge::activityChanged, this, ifShown(&ProfileDetail::refreshActivity));
    connect(&bridge, &ModelBridge::reviewChanged, this, ifShown(&ProfileDetail::refreshBanners));
}

void ProfileDetail::connectControls() {
    connect(&header->mainSwitch(), &QPushButton::clicked, this, &ProfileDetail::toggle);
    connect(choice, &ChoiceBanner::adoptRequested, this, &ProfileDetail::adopt);
    connect(choice, &ChoiceBanner::compareRequested, this, [this] { bridge.model().compareContents(id); });
    connect(choice, &ChoiceBanner::stopRequested, this, [this] { bridge.model().stopComparing(id); });
    connect(banners, &DetailBanners::reviewRequested, this, [this] { Q_EMIT reviewRequested(id); });
    const FailureBanner* const failure = &banners->failure();
    connect(failure, &FailureBanner::retryRequested, this, &ProfileDetail::retry);
    connect(failure, &FailureBanner::skipRequested, this, [this] { Q_EMIT skipCheckRequested(id); });
    connect(failure, &FailureBanner::editRequested, this, [this] { Q_EMIT editRequested(id); });
    connect(failure, &FailureBanner::certificateRequested, this, [this] { Q_EMIT certificateRequested(id); });
    connect(failure, &FailureBanner::createFolderRequested, this, [this] { Q_EMIT createFolderRequested(id); });
    connect(failure, &FailureBanner::pauseRequested, this, [this] { saving([this] { bridge.model().pause(id); }); });
    connect(&banners->refused(), &RefusedFilesBanner::retryRequested, this, [this](const QString& path) {
        bridge.model().retryFile(id, path.toStdString());
    });
    connect(banners, &DetailBanners::sendAgainRequested, this, [this] {
        saving([this] { bridge.model().sendAgain(id, Resend::missing); });
    });
    connect(
        banners, &DetailBanners::leaveRequested, this, [this] { saving([this] { bridge.model().leaveMissing(id); }); });
    connect(banners, &DetailBanners::forgetRequested, this, [this] { bridge.model().forgetMissingFiles(id); });
    connect(copy, &QPushButton::clicked, this, [this] {
        copyDetails(bridge, id, [button = QPointer(copy)] {
            if (button) button->setLabel(tr("Details copied"));
        });
    });
    connect(backups, &QPushButton::clicked, this, [this] { Q_EMIT backupsRequested(id); });
    connect(route, &RouteCard::openFolderRequested, this, &ProfileDetail::openFolder);
    connect(route, &RouteCard::editContentsRequested, this, [this] { Q_EMIT editContentsRequested(id); });
    connect(activity, &ActivityList::lineReached, this, [this](const QRect& place) {
        const QPoint middle = activity->mapTo(page, place.center());
        scroll->ensureVisible(margin, middle.y(), 0, place.height());
    });
    connect(&tomorrow, &QTimer::timeout, this, &ProfileDetail::refresh);
}

QList<QWidget*> ProfileDetail::controls() const {
    QList<QWidget*> all{&header->mainSwitch()};
    all += choice->buttons();
    all += banners->buttons();
    all += route->buttons();
    all += copy;
    all += backups;
    all += &activity->list();
    return all;
}

void ProfileDetail::showProfile(const Uuid& profileId) {
    if (id != profileId) scroll->verticalScrollBar()->setValue(0);
    id = profileId;
    refresh();
}

void ProfileDetail::setNarrow(bool narrow) { route->setNarrow(narrow); }

void ProfileDetail::refresh() {
    const Profile* const profile = bridge.model().profile(id);
    if (profile == nullptr) return;
    header->setName(toQString(profile->name));
    route->setProfile(*profile, bridge.model().baseline(id));
    refreshStatus();
    refreshActivity();
    refreshBanners();
    startMidnightTimer();
}

void ProfileDetail::refreshStatus() {
    const ProfileStatus& status = bridge.model().status(id);
    const bool running = bridge.model().running(id);
    header->setRunning(running);
    statusLine->setStatus(status, running);
    progress->setProgress(status.progress);
    counters->setStatus(status);
    refreshBanners();
}

// A failure is shown by its explanation; its words are in the details.
void ProfileDetail::refreshActivity() {
    const Profile* const profile = bridge.model().profile(id);
    auto lines = bridge.model().status(id).activity;
    for (auto& line : lines) {
        if (!line.failure || profile == nullptr) continue;
        const std::string& path = line.failure->path;
        line.text = (path.empty() ? "" : path + ": ") + explain(*line.failure, *profile).heading.text();
    }
    activity->setActivity(lines);
}

void ProfileDetail::refreshBanners() {
    const Profile* const profile = bridge.model().profile(id);
    if (profile == nullptr) return;
    const ProfileStatus& status = bridge.model().status(id);
    const auto& failures = bridge.model().checkFailures();
    const auto failure = failures.find(id);
    banners->setWaiting(
        bridge.model().reviews().contains(id),
        shownFailure(status, failure == failures.end() ? nullptr : &failure->second, *profile), status.filesMissing(),
        bridge.model().watching(id) ? bridge.model().missingOnServer(id) : PathSet());
    choice->setChoice(bridge.model().firstComparison(id), bridge.model().comparingContents(id));
    banners->setRefused(status, *profile);
    offerDetails();
}

void ProfileDetail::offerDetails() {
    copy->setLabel(tr("Copy details"));
    copy->setVisible(bridge.model().status(id).failed() || bridge.model().checkFailures().contains(id));
}

void ProfileDetail::retry() {
    if (bridge.model().checkFailures().contains(id)) {
        bridge.model().retryCheck(id);
    } else {
        bridge.model().retryNow(id);
    }
}

void ProfileDetail::toggle() {
    saving([this] { bridge.model().toggle(id); });
}

void ProfileDetail::adopt(Adoption what) {
    (void)bridge.model().adopt(id, what); // the model shows why it failed; a choice that is over has left the screen
}

void ProfileDetail::saving(const std::function<void()>& change) {
    try {
        change();
    } catch (const std::exception& error) {
        Q_EMIT failed(engineText(describe(error)));
    }
}

void ProfileDetail::openFolder() {
    const Profile* const profile = bridge.model().profile(id);
    if (profile == nullptr || openInFileManager(profile->localFolder)) return;
    Q_EMIT failed(tr("Could not open the local folder in Finder. Check that the folder is still available."));
}

// The scroll bar lies in the margin beside the cards, so that their right edge does not move.
void ProfileDetail::fitMargin() {
    const QScrollBar* const bar = scroll->verticalScrollBar();
    const int taken = bar->isVisibleTo(scroll) ? bar->sizeHint().width() : 0;
    // Lines across a very wide window would be hard to follow.
    const int side = std::max(margin, (width() - scaledToText(widest)) / 2);
    page->layout()->setContentsMargins(readingMargins(side, pageTop, side - taken, margin));
    header->setContentsMargins(side - margin, 0, side - margin, 0);
}

void ProfileDetail::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitMargin();
}

bool ProfileDetail::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::ShowToParent || type == QEvent::HideToParent) {
        fitMargin();
    }
    return QWidget::eventFilter(watched, event);
}

void ProfileDetail::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // The page may have been hidden for days, and timers do not run while the machine sleeps.
    refresh();
}

void ProfileDetail::startMidnightTimer() {
    if (isVisible()) tomorrow.start(untilTomorrow(QDateTime::currentDateTime()) + std::chrono::seconds(1));
    activity->list().viewport()->update();
}

} // namespace zembrastel::ui
