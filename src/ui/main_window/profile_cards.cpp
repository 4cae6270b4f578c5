#include "ui/main_window/profile_cards.h"

#include "platform/text.h"
#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/button_flow.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/symbol_widgets.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <ranges>

namespace zembrastel::ui {
namespace {

constexpr int maxPaths = 3; // in a banner

// One path per line.
QString firstPaths(const PathSet& paths) {
    QStringList lines;
    for (const auto& path : paths | std::views::take(maxPaths)) lines << onOneLine(toQString(path));
    const int more = static_cast<int>(paths.size()) - maxPaths;
    if (more > 0) lines << DetailBanners::tr("and %n more", nullptr, more);
    return lines.join(u'\n');
}

// The banner has the failure itself.
std::string detailBesideBanner(const ProfileStatus& status) {
    if (!status.failure || status.unsaved) return status.detail;
    if (status.phase == Phase::checkFailed) return status.outlook;
    const bool waits = status.phase == Phase::waitingToRetry || status.phase == Phase::retryingDownload;
    return waits ? printable(status.failure->path) : status.detail;
}

} // namespace

DetailHeader::DetailHeader(QWidget* parent)
    : QWidget(parent), name(new ElideLabel), watching(new PushButton(QString())) {
    name->setFont(fontOf(TextStyle::profileName));
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(makeCaption(tr("FOLDER SYNC")));
    texts->addWidget(name);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 2);
    layout->setSpacing(16);
    layout->addLayout(texts, 1);
    layout->addWidget(watching, 0, Qt::AlignBottom);
    setRunning(false);
}

void DetailHeader::setName(const QString& text) { name->setWholeText(text); }

void DetailHeader::setRunning(bool running) {
    watching->setLabel(running ? tr("Pause watching") : tr("Start watching"));
    watching->setKind(running ? ButtonKind::outlined : ButtonKind::primary);
    watching->setSymbol(running ? "pause.fill" : "play");
}

StatusLine::StatusLine(QWidget* parent)
    : QWidget(parent), symbol(new StatusSymbol), title(makeLabel(QString(), TextStyle::strong)),
      progress(new ProgressLabel), detail(new WrapLabel(QString(), TextStyle::body, Tone::dim)) {
    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 2, 0, 0);
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(2);
    layout->setColumnStretch(2, 1);
    title->setContentsMargins(0, 1, 0, 0); // beside the middle of the symbol
    layout->addWidget(symbol, 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(title, 0, 1);
    layout->addWidget(progress, 0, 2);
    layout->addWidget(detail, 1, 1, 1, 2);
}

void StatusLine::setStatus(const ProfileStatus& status, bool running) {
    symbol->setStatus(status, running);
    title->setText(engineText(status.title()));
    setTone(*title, status.failed() ? Tone::warn : Tone::normal);
    progress->setProgress(status.progress);
    // A comparison of contents shows its file, as an upload does.
    const bool compares = status.phase == Phase::comparingContents && status.progress && status.progress->file;
    detail->setWrappedText(compares ? toQString(status.progress->file->path) : engineText(detailBesideBanner(status)));
}

DetailBanners::DetailBanners(QWidget* parent)
    : QWidget(parent), review(new PushButton(tr("Review newer server files…"), ButtonKind::primary)),
      forget(new PushButton(tr("Forget the missing files"))),
      send(new PushButton(tr("Send again"), ButtonKind::primary)), leave(new PushButton(tr("Leave them"))),
      missingHeading(new WrapLabel(QString(), TextStyle::strong)), missingText(new WrapLabel(QString())),
      missingPaths(new WrapLabel(QString(), TextStyle::small, Tone::dim)), reviewBanner(makeReviewBanner()),
      failureBanner(new FailureBanner), refusedBanner(new RefusedFilesBanner), missingBanner(makeMissingBanner()),
      serverLacksBanner(makeServerLacksBanner()) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(reviewBanner);
    layout->addWidget(failureBanner);
    layout->addWidget(refusedBanner);
    layout->addWidget(missingBanner);
    layout->addWidget(serverLacksBanner);
    connect(review, &QPushButton::clicked, this, &DetailBanners::reviewRequested);
    connect(forget, &QPushButton::clicked, this, &DetailBanners::forgetRequested);
    connect(send, &QPushButton::clicked, this, &DetailBanners::sendAgainRequested);
    connect(leave, &QPushButton::clicked, this, &DetailBanners::leaveRequested);
    setWaiting(false, std::nullopt);
}

QString missingOnServerText(std::size_t files) {
    return DetailBanners::tr("%n files are missing on the server.", nullptr, static_cast<int>(files));
}

void DetailBanners::setWaiting(
    bool reviewWaits, const std::optional<ShownFailure>& failure, bool filesMissing, const PathSet& missingOnServer) {
    if (failure) failureBanner->setFailure(*failure);
    refusedBanner->hide();
    reviewBanner->setVisible(reviewWaits);
    failureBanner->setVisible(!reviewWaits && failure.has_value());
    missingBanner->setVisible(filesMissing);
    const bool waits = reviewWaits || failure.has_value() || filesMissing;
    missingHeading->setWrappedText(missingOnServerText(missingOnServer.size()));
    const bool isOne = missingOnServer.size() == 1;
    missingText->setWrappedText(
        isOne ? tr("It was uploaded before and is gone from the server now. Your local copy is unchanged.")
              : tr("They were uploaded before and are gone from the server now. Your local copies are unchanged."));
    leave->setLabel(isOne ? tr("Leave it") : tr("Leave them"));
    missingPaths->setWrappedText(firstPaths(missingOnServer));
    serverLacksBanner->setVisible(!waits && !missingOnServer.empty());
    setVisible(waits || !missingOnServer.empty());
}

void DetailBanners::setRefused(const ProfileStatus& status, const Profile& profile) {
    const bool others = !reviewBanner->isHidden() || !failureBanner->isHidden() || !missingBanner->isHidden();
    if (others || status.refused.empty()) return;
    refusedBanner->setFiles(status, profile);
    refusedBanner->show();
    serverLacksBanner->hide();
    show();
}

QList<QWidget*> DetailBanners::buttons() const {
    return QList<QWidget*>{review} + failureBanner->buttons() + QList<QWidget*>{forget, send, leave};
}

QFrame* DetailBanners::makeReviewBanner() {
    QFrame* const banner = makeSurface(Surface::infoBanner);
    auto* const layout = new QHBoxLayout(banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setSpacing(12);
    layout->addWidget(new SymbolView("arrow.down.doc"));
    layout->addWidget(new WrapLabel(tr("Newer files on the server"), TextStyle::strong), 1);
    layout->addWidget(review);
    return banner;
}

QFrame* DetailBanners::makeMissingBanner() {
    QFrame* const banner = makeSurface(Surface::warningBanner);
    auto* const layout = new QHBoxLayout(banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setSpacing(12);
    layout->addWidget(new SymbolView("exclamationmark.triangle", &Colours::warn));
    layout->addWidget(
        new WrapLabel(tr("The local folder is empty. If you deleted its files yourself, forget them; the copies on the "
                         "server stay.")),
        1);
    layout->addWidget(forget);
    return banner;
}

QFrame* DetailBanners::makeServerLacksBanner() {
    QFrame* const banner = makeSurface(Surface::infoBanner);
    auto* const actions = new ButtonFlow({send, leave});
    layOutBanner(*banner, new SymbolView("file.missing"), {missingHeading, missingText, missingPaths})
        ->addWidget(actions, 1, bannerTextColumn);
    return banner;
}

CountersCard::CountersCard(QWidget* parent) : QFrame(parent) {
    setSurface(*this, Surface::card);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 12, 0, 12);
    row->setSpacing(0);
    uploaded = addCounter(*row, tr("UPLOADED THIS SESSION"), 3);
    row->addWidget(makeDivider(Qt::Vertical));
    pending = addCounter(*row, tr("PENDING"), 2);
    row->addWidget(makeDivider(Qt::Vertical));
    lastUpload = addCounter(*row, tr("LAST UPLOAD"), 3);
    setStatus({});
}

void CountersCard::setStatus(const ProfileStatus& status) {
    const QLocale locale;
    const auto waiting = std::max(status.pending, status.waiting);
    uploaded->setWholeText(locale.toString(static_cast<qlonglong>(status.uploaded)));
    pending->setWholeText(locale.toString(static_cast<qlonglong>(waiting)));
    lastUpload->setWholeText(
        status.lastUpload ? dayAndTime(localTime(*status.lastUpload), QDateTime::currentDateTime())
                          : QStringLiteral("—"));
}

ElideLabel* CountersCard::addCounter(QHBoxLayout& row, const QString& caption, int share) {
    auto* const value = new ElideLabel;
    value->setFont(fontOf(TextStyle::counter));
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const texts = new QVBoxLayout;
    texts->setContentsMargins(readingMargins(16, 0, 8, 0));
    texts->setSpacing(2);
    texts->addWidget(makeCaption(caption));
    texts->addWidget(value);
    row.addLayout(texts, share);
    return value;
}

} // namespace zembrastel::ui
