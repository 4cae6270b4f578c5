#include "ui/detail_banners.h"

#include "ui/reading_direction.h"
#include "ui/surface.h"
#include "ui/symbol_view.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel {

DetailBanners::DetailBanners(QWidget* parent)
    : QWidget(parent), review(new PushButton(tr("Review newer server files…"), ButtonKind::primary)),
      retry(new PushButton(tr("Retry server check"), ButtonKind::primary)),
      skip(new PushButton(tr("Start without checking…"))), forget(new PushButton(tr("Forget the missing files"))),
      message(new WrapLabel(QString())), reviewBanner(makeReviewBanner()), failureBanner(makeFailureBanner()),
      missingBanner(makeMissingBanner()) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(reviewBanner);
    layout->addWidget(failureBanner);
    layout->addWidget(missingBanner);
    connect(review, &QPushButton::clicked, this, &DetailBanners::reviewRequested);
    connect(retry, &QPushButton::clicked, this, &DetailBanners::retryRequested);
    connect(skip, &QPushButton::clicked, this, &DetailBanners::skipRequested);
    connect(forget, &QPushButton::clicked, this, &DetailBanners::forgetRequested);
    setWaiting(false, std::nullopt, false);
}

void DetailBanners::setWaiting(bool reviewWaits, const std::optional<std::string>& checkFailure, bool filesMissing) {
    message->setWrappedText(QString::fromStdString(checkFailure.value_or(std::string())));
    reviewBanner->setVisible(reviewWaits);
    failureBanner->setVisible(!reviewWaits && checkFailure.has_value());
    missingBanner->setVisible(filesMissing);
    setVisible(reviewWaits || checkFailure.has_value() || filesMissing);
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

QFrame* DetailBanners::makeFailureBanner() {
    QFrame* const banner = makeSurface(Surface::warningBanner);
    // Its first line is level with the symbol.
    message->setContentsMargins(0, 2, 0, 2);
    retry->setSymbol("arrow.clockwise");
    auto* const actions = new QHBoxLayout;
    actions->setSpacing(8);
    actions->addWidget(retry);
    actions->addWidget(skip);
    actions->addStretch(1);
    auto* const layout = new QGridLayout(banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(12);
    layout->setColumnStretch(1, 1);
    layout->addWidget(new SymbolView("exclamationmark.triangle", &Colours::warn), 0, 0, Qt::AlignTop);
    layout->addWidget(message, 0, 1);
    layout->addLayout(actions, 1, 1);
    return banner;
}

QFrame* DetailBanners::makeMissingBanner() {
    QFrame* const banner = makeSurface(Surface::warningBanner);
    auto* const layout = new QHBoxLayout(banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setSpacing(12);
    layout->addWidget(new SymbolView("exclamationmark.triangle", &Colours::warn));
    layout->addWidget(
        new WrapLabel(tr("The local folder is empty. If you deleted its files, forget them; on the server they stay.")),
        1);
    layout->addWidget(forget);
    return banner;
}

} // namespace zembrastel
