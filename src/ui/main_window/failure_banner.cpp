#include "ui/main_window/failure_banner.h"

#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/button_flow.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/row_painter.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QAccessible>
#include <QLocale>

#include <algorithm>
#include <array>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int maxDetailLines = 8;

bool offers(const Explanation& explanation, FailureAction action) {
    return std::ranges::find(explanation.actions, action) != explanation.actions.end();
}

QPlainTextEdit* makeWords() {
    auto* const words = new QPlainTextEdit;
    words->setReadOnly(true);
    words->setFrameShape(QFrame::NoFrame);
    words->setFont(fontOf(TextStyle::small));
    words->setTabChangesFocus(true);
    words->setAccessibleName(FailureBanner::tr("Details"));
    words->viewport()->setAutoFillBackground(false);
    words->document()->setDocumentMargin(0);
    words->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return words;
}

} // namespace

std::optional<ShownFailure> shownFailure(
    const ProfileStatus& status, const std::string* checkFailure, const Profile& profile) {
    if (checkFailure != nullptr) {
        const Failure failure = status.failure.value_or(Failure{.message = *checkFailure});
        return ShownFailure{.explanation = explain(failure, profile), .ofCheck = true};
    }
    const bool waits = status.phase == Phase::waitingToRetry || status.phase == Phase::retryingDownload;
    if (!waits || status.unsaved || !status.failure) return std::nullopt;
    const bool isOfFile = std::ranges::find(status.refused, *status.failure) != status.refused.end();
    if (isOfFile) return std::nullopt; // other files go on
    return ShownFailure{
        .explanation = explain(*status.failure, profile),
        .path = status.failure->path,
        .retryAt = status.retryAt,
        .waiting = status.waiting};
}

QString retryText(const ShownFailure& failure) {
    if (!failure.retryAt) return {};
    const QString time = QLocale().toString(localTime(*failure.retryAt).time(), QStringLiteral("HH:mm:ss"));
    if (failure.path.empty()) return FailureBanner::tr("The next attempt is at %1.").arg(time);
    const QString next = FailureBanner::tr("%1 is tried again at %2.").arg(onOneLine(toQString(failure.path)), time);
    const auto others = static_cast<int>(std::max<std::int64_t>(failure.waiting - 1, 0));
    if (others == 0) return next;
    return next + u' ' + FailureBanner::tr("%n more files wait behind it.", nullptr, others);
}

FailureBanner::FailureBanner(QWidget* parent)
    : QFrame(parent), triangle(new SymbolView("exclamationmark.triangle", &Colours::warn)),
      clock(new SymbolView("clock", &Colours::warn)), heading(new WrapLabel(QString(), TextStyle::strong)),
      text(new WrapLabel(QString())), certificate(new PushButton(tr("Review certificate…"))),
      keys(new PushButton(tr("Compare keys…"))), create(new PushButton(tr("Create it"))),
      edit(new PushButton(tr("Edit profile…"))), retry(new PushButton(tr("Retry now"))),
      skip(new PushButton(tr("Start without checking…"))), pause(new PushButton(tr("Pause"))),
      details(new PushButton(tr("Details"), ButtonKind::link)),
      flow(new ButtonFlow({certificate, keys, create, edit, retry, skip, pause}, details)),
      divider(makeDivider(Qt::Horizontal)), words(makeWords()) {
    setSurface(*this, Surface::warningBanner);
    retry->setSymbol("arrow.clockwise");
    auto* const layout = layOutBanner(*this, triangle, {heading, text});
    layout->addWidget(clock, 0, 0, Qt::AlignTop);
    int row = 1;
    for (QWidget* const part : {static_cast<QWidget*>(flow), divider, static_cast<QWidget*>(words)}) {
        layout->addWidget(part, row++, bannerTextColumn);
    }
    connect(certificate, &QPushButton::clicked, this, &FailureBanner::certificateRequested);
    connect(keys, &QPushButton::clicked, this, &FailureBanner::certificateRequested);
    connect(create, &QPushButton::clicked, this, &FailureBanner::createFolderRequested);
    connect(edit, &QPushButton::clicked, this, &FailureBanner::editRequested);
    connect(retry, &QPushButton::clicked, this, &FailureBanner::retryRequested);
    connect(skip, &QPushButton::clicked, this, &FailureBanner::skipRequested);
    connect(pause, &QPushButton::clicked, this, &FailureBanner::pauseRequested);
    connect(details, &QPushButton::clicked, this, [this] { unfold(words->isHidden()); });
    unfold(false);
}

void FailureBanner::setFailure(const ShownFailure& failure) {
    const Explanation& explanation = failure.explanation;
    const QString happened = engineText(explanation.heading.text());
    // A server that may answer again soon needs no step of the user.
    const bool passes = failure.retryAt && explanation.actions.front() == FailureAction::retry;
    QStringList next;
    if (!passes) next << engineText(explanation.next.text());
    next << retryText(failure);
    next.removeAll(QString());
    const QString step = next.join(u' ');
    const bool isNew = heading->text() != happened || accessibleName().isEmpty();
    heading->setWrappedText(happened);
    text->setWrappedText(step);
    text->setVisible(!step.isEmpty());
    triangle->setVisible(!failure.retryAt);
    clock->setVisible(failure.retryAt.has_value());
    const QString curls = toQString(explanation.details);
    if (words->toPlainText() != curls) words->setPlainText(curls);
    details->setVisible(!curls.isEmpty());
    if (isNew) unfold(!explanation.known);
    showActions(failure);
    setAccessibleName(happened + u' ' + step);
    if (!isNew) return;
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void FailureBanner::showActions(const ShownFailure& failure) {
    const Explanation& explanation = failure.explanation;
    const std::array known{
        std::pair(certificate, FailureAction::reviewCertificate),
        std::pair(keys, FailureAction::compareKeys),
        std::pair(create, FailureAction::createFolder),
        std::pair(edit, FailureAction::editProfile),
        std::pair(retry, FailureAction::retry),
        std::pair(pause, FailureAction::pause)};
    for (const auto& [button, action] : known) {
        button->setVisible(offers(explanation, action));
        button->setKind(explanation.actions.front() == action ? ButtonKind::primary : ButtonKind::outlined);
    }
    retry->setLabel(failure.ofCheck ? tr("Retry server check") : tr("Retry now"));
    skip->setVisible(failure.ofCheck);
}

QList<QWidget*> FailureBanner::buttons() const {
    return {certificate, keys, create, edit, retry, skip, pause, details, words};
}

void FailureBanner::unfold(bool open) {
    const bool shows = open && !words->toPlainText().isEmpty();
    divider->setVisible(shows);
    words->setVisible(shows);
    details->setSymbol(shows ? "chevron.down" : "chevron.right");
    details->setAccessibleDescription(shows ? tr("Expanded") : tr("Collapsed"));
    fitDetails();
}

void FailureBanner::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    fitDetails();
}

void FailureBanner::fitDetails() {
    const int lines = std::clamp(static_cast<int>(words->document()->size().height()), 1, maxDetailLines);
    words->setFixedHeight(lines * lineHeight(TextStyle::small) + 2);
}

} // namespace zembrastel::ui
