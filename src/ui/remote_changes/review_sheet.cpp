#include "ui/remote_changes/review_sheet.h"

#include "ui/remote_changes/change_list.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize defaultSize(680, 480);
constexpr QSize smallestSize(560, 400);
constexpr int maxRowsWithoutScrolling = 6;
constexpr int listInset = 3;
constexpr std::chrono::seconds pauseInTyping{1};

} // namespace

QString confirmLabel(std::size_t ticked) {
    if (ticked == 0) return RemoteChangesView::tr("Keep local & start watching");
    return RemoteChangesView::tr("Download %n & start watching", nullptr, static_cast<int>(ticked));
}

RemoteChangesView::RemoteChangesView(ModelBridge& bridge, RemoteReview toDecide, QWidget* parent)
    : QDialog(parent), model(bridge.model()), review(std::move(toDecide)), rows(new ChangeListModel(review, this)) {
    setWindowModality(Qt::WindowModal);
    QLayout* const head = makeHead();
    QLayout* const tools = makeTools();
    list = new ChangeListView(*rows);
    list->setAccessibleName(windowTitle());
    layOutSheet(*this, head, tools, makeListCard(list, listInset), makeFoot());
    fitHeight();
    connect(rows, &QAbstractItemModel::dataChanged, this, &RemoteChangesView::showCount);
    connect(&bridge, &ModelBridge::presentedReviewChanged, this, &RemoteChangesView::closeWhenOver);
    showCount();
    list->setFocus();
    typing.setSingleShot(true);
    typing.setInterval(pauseInTyping);
    connect(&typing, &QTimer::timeout, this, [this] {
        if (focusWidget() == this) list->setFocus();
    });
}

void RemoteChangesView::openByItself() {
    setAttribute(Qt::WA_ShowWithoutActivating, QApplication::activeWindow() == nullptr);
    typing.start();
    open();
    setFocus(); // so that event() receives the keys
}

bool RemoteChangesView::event(QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (!isKey || !typing.isActive()) return QDialog::event(event);
    typing.start();
    event->accept();
    return true;
}

const PathSet& RemoteChangesView::selected() const { return rows->selected(); }

QLayout* RemoteChangesView::makeHead() {
    return makeSheetHead(
        *this, "arrow.down.doc", title(),
        {tr("Uploads are paused. Choose the server versions to download before watching resumes. Downloading replaces "
            "those local files and keeps backups in .zembrastel-backups inside your local folder."),
         tr("Unticked files keep their local versions. Pending local edits may upload and replace server copies when "
            "watching resumes.")});
}

QString RemoteChangesView::title() const {
    const Profile* const profile = model.profile(review.id);
    const QString heading = tr("Newer files on the server");
    if (profile == nullptr) return heading;
    return tr("%1 – %2").arg(heading, onOneLine(toQString(profile->name)));
}

QLayout* RemoteChangesView::makeTools() {
    auto* const all = new PushButton(tr("Select all"));
    connect(all, &QPushButton::clicked, this, [this] { rows->tickAll(true); });
    auto* const none = new PushButton(tr("Select none"));
    connect(none, &QPushButton::clicked, this, [this] { rows->tickAll(false); });
    count = makeLabel(QString(), TextStyle::strong);
    return makeSheetTools({all, none}, count);
}

QWidget* RemoteChangesView::makeFoot() {
    auto* const pause = new PushButton(tr("Stay paused"));
    connect(pause, &QPushButton::clicked, this, &RemoteChangesView::reject);
    confirm = new PushButton(QString(), ButtonKind::primary);
    connect(confirm, &QPushButton::clicked, this, &RemoteChangesView::decide);
    return makeSheetFoot({pause, confirm});
}

// As high as up to six rows need, and no higher than the screen.
void RemoteChangesView::fitHeight() {
    const QSize usual = scaledToText(defaultSize);
    const int shown = std::min(maxRowsWithoutScrolling, rows->rowCount());
    int needed = 0;
    for (int row = 0; row < shown; ++row) needed += list->sizeHintForRow(row);
    const int others = layout()->heightForWidth(usual.width()) - list->sizeHint().height();
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(QSize(usual.width(), std::max(usual.height(), others + needed)).boundedTo(room));
}

void RemoteChangesView::showCount() {
    count->setText(tr("%1 of %2 selected").arg(selected().size()).arg(rows->rowCount()));
    confirm->setLabel(confirmLabel(selected().size()));
}

// If the decision is refused, the review stays presented and the sheet stays open.
void RemoteChangesView::decide() {
    if (model.resolveReview(review.id, review.reviewId, selected()) != Decision::outdated) return;
    accept();
    model.setAlert(outdatedDecision);
}

void RemoteChangesView::closeWhenOver() {
    const auto& presented = model.presentedReview();
    if (isVisible() && (!presented || presented->reviewId != review.reviewId)) accept();
}

void RemoteChangesView::reject() {
    // Closes the sheet first: the calls below report to all observers that its review is no longer presented.
    AppModel& decided = model;
    const RemoteReview shown = review;
    QDialog::reject();
    decided.pauseReview(shown.id, shown.reviewId);
    const auto& presented = decided.presentedReview();
    if (presented && presented->reviewId == shown.reviewId) decided.closeReview();
}

} // namespace zembrastel::ui
