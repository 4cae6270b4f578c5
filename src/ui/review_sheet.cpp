#include "ui/review_sheet.h"

#include "ui/surface.h"
#include "ui/symbol_icon.h"
#include "ui/text_style.h"
#include "ui/theme.h"
#include "ui/tile.h"
#include "ui/wrap_label.h"

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zembrastel {
namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

QDateTime atSecond(double sinceEpoch) { return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(sinceEpoch) * 1000); }

} // namespace

PathSet preselection(const std::vector<RemoteChange>& changes) {
    PathSet ticked;
    for (const auto& change : changes) {
        if (!change.bothChanged) ticked.insert(change.path);
    }
    return ticked;
}

QString confirmLabel(std::size_t ticked) {
    if (ticked == 0) return RemoteChangesView::tr("Keep local & start watching");
    return RemoteChangesView::tr("Download %1 & start watching").arg(ticked);
}

QString reviewDate(const QDateTime& date, const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(QStringLiteral("dddd")).replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    // What stood between the weekday and the rest.
    const auto isSeparator = [](QChar each) { return each == u',' || each == u'،' || each.isSpace(); };
    while (!format.isEmpty() && isSeparator(format.front())) format.remove(0, 1);
    while (!format.isEmpty() && isSeparator(format.back())) format.chop(1);
    return RemoteChangesView::tr("%1, %2").arg(
        locale.toString(date.date(), format), locale.toString(date.time(), QLocale::ShortFormat));
}

// The changes of a review as a list, each with its tick.
class ReviewRows : public QAbstractListModel {
    Q_DECLARE_TR_FUNCTIONS(zembrastel::RemoteChangesView)

public:
    ReviewRows(const RemoteReview& review, QObject* parent)
        : QAbstractListModel(parent), changes(review.changes), ticked(preselection(review.changes)) {}

    [[nodiscard]] const PathSet& selected() const { return ticked; }
    [[nodiscard]] const RemoteChange& change(const QModelIndex& index) const {
        return changes[static_cast<std::size_t>(index.row())];
    }

    [[nodiscard]] static QString localDate(const RemoteChange& change) {
        return tr("Local: %1").arg(reviewDate(atSecond(change.local.modified), QLocale()));
    }
    [[nodiscard]] static QString serverDate(const RemoteChange& change) {
        return tr("Server: %1").arg(reviewDate(atSecond(sinceUnixEpoch(change.remoteDate).count()), QLocale()));
    }
    [[nodiscard]] static QString warning() { return tr("Also changed locally since the last sync"); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(changes.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
        const RemoteChange& shown = change(index);
        switch (role) {
        case Qt::DisplayRole:
            return text(shown.path);
        case Qt::ToolTipRole: // takes what looks like markup for markup
            return QStringLiteral("<span>%1</span>").arg(text(shown.path).toHtmlEscaped());
        case Qt::CheckStateRole:
            return ticked.contains(shown.path) ? Qt::Checked : Qt::Unchecked;
        case Qt::AccessibleTextRole:
            return spoken(shown);
        default:
            return {};
        }
    }

    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex&) const override {
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemNeverHasChildren;
    }

    void toggle(const QModelIndex& index) {
        const std::string& path = change(index).path;
        if (ticked.erase(path) == 0) ticked.insert(path);
        Q_EMIT dataChanged(index, index);
    }

    void tickAll(bool wanted) {
        ticked.clear();
        if (wanted) {
            for (const auto& each : changes) ticked.insert(each.path);
        }
        if (!changes.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }

private:
    [[nodiscard]] QString spoken(const RemoteChange& change) const {
        QStringList parts{
            text(change.path), ticked.contains(change.path) ? tr("Selected") : tr("Not selected"), localDate(change),
            serverDate(change)};
        if (change.bothChanged) parts += warning();
        return parts.join(QStringLiteral(", "));
    }

    const std::vector<RemoteChange>& changes;
    PathSet ticked;
};

namespace {

constexpr int rowHeight = 56;
constexpr int rowHeightWithWarning = 80;
constexpr int lineHeight = 20;
constexpr int endMargin = 6; // room to the scroll bar
constexpr int tickLeft = 10;
constexpr int textLeft = 40;
constexpr int textEnd = 10;
constexpr int columnWidth = 196;

// What each line of a row needs above the design's where the desktop's text is large.
int extraPerLine() { return std::max(0, QFontMetrics(fontOf(TextStyle::strong)).height() - lineHeight); }

class ChangeDelegate : public QStyledItemDelegate {
public:
    ChangeDelegate(const ReviewRows& shown, QObject* parent) : QStyledItemDelegate(parent), rows(shown) {}

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
        const int extra = extraPerLine();
        return {1, rows.change(index).bothChanged ? rowHeightWithWarning + 3 * extra : rowHeight + 2 * extra};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const RemoteChange& change = rows.change(index);
        const Painting to{*painter, option, option.rect.adjusted(0, 0, -endMargin, 0)};
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        paintGround(to, index.row() + 1 == rows.rowCount());
        const bool ticked = rows.selected().contains(change.path);
        paintSymbol(
            *painter, to.visual({to.row.left() + tickLeft, to.row.top() + 10 + extraPerLine() / 2, 18, 18}),
            ticked ? "checkmark.square.fill" : "square", ticked ? colours().accent : colours().edge, 0, colours().card);
        paintTexts(to, change);
        painter->restore();
    }

private:
    struct Painting {
        QPainter& painter;
        const QStyleOptionViewItem& option;
        QRect row; // as though the reading direction were from left to right

        [[nodiscard]] QRect visual(const QRect& part) const {
            return QStyle::visualRect(option.direction, option.rect, part);
        }
    };

    static void paintGround(const Painting& to, bool last) {
        const QRectF ground = to.visual(to.row.adjusted(0, 1, 0, -2));
        if (!last) {
            const QRect divider(to.row.left() + textLeft, to.row.bottom(), to.row.width() - textLeft - textEnd, 1);
            to.painter.fillRect(to.visual(divider), colours().line);
        }
        if (to.option.state.testFlag(QStyle::State_MouseOver)) {
            to.painter.setPen(Qt::NoPen);
            to.painter.setBrush(colours().hover);
            to.painter.drawRoundedRect(ground, 8, 8);
        }
        if (to.option.state.testFlag(QStyle::State_HasFocus)) {
            to.painter.setPen(QPen(colours().accent, 2));
            to.painter.setBrush(Qt::NoBrush);
            to.painter.drawRoundedRect(ground.adjusted(1, 1, -1, -1), 7, 7);
        }
    }

    static void paintText(
        const Painting& to, const QRect& where, const QString& shown, TextStyle style, const QColor& colour,
        Qt::TextElideMode elide = Qt::ElideRight) {
        const QFont font = fontOf(style);
        to.painter.setFont(font);
        to.painter.setPen(colour);
        // A path reads from left to right wherever it stands.
        to.painter.setLayoutDirection(shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
        const auto side = QStyle::visualAlignment(to.option.direction, Qt::AlignLeft | Qt::AlignVCenter);
        to.painter.drawText(
            to.visual(where), static_cast<int>(side | Qt::AlignAbsolute) | Qt::TextSingleLine,
            QFontMetrics(font).elidedText(shown, elide, where.width()));
    }

    static void paintTexts(const Painting& to, const RemoteChange& change) {
        const QRect whole = to.row.adjusted(textLeft, 0, -textEnd, 0);
        const int extra = extraPerLine();
        const auto lineAt = [&whole, extra](int number, int top) {
            return QRect(whole.left(), whole.top() + top + number * extra, whole.width(), lineHeight + extra);
        };
        paintText(to, lineAt(0, 9), text(change.path), TextStyle::strong, colours().text, Qt::ElideMiddle);
        const QString local = ReviewRows::localDate(change);
        const int localWidth = QFontMetrics(fontOf(TextStyle::small)).horizontalAdvance(local) + 1;
        QRect dates = lineAt(1, 28);
        paintText(to, dates, local, TextStyle::small, colours().dim);
        dates.setLeft(dates.left() + std::max(columnWidth, localWidth + 16));
        paintText(to, dates, ReviewRows::serverDate(change), TextStyle::small, colours().dim);
        if (!change.bothChanged) return;
        QRect warning = lineAt(2, 50);
        const QRect triangle(warning.left(), warning.top() + 2 + extra / 2, 16, 16);
        paintSymbol(to.painter, to.visual(triangle), "exclamationmark.triangle", colours().warn);
        warning.setLeft(triangle.right() + 7);
        paintText(to, warning, ReviewRows::warning(), TextStyle::fieldLabel, colours().warnText);
    }

    const ReviewRows& rows;
};

// A list of which a click anywhere in a row, or Space, changes the tick.
class ChangeView : public QListView {
public:
    ChangeView(ReviewRows& shown, QWidget* parent) : QListView(parent), rows(shown) {
        setModel(&rows);
        setItemDelegate(new ChangeDelegate(rows, this));
        setSelectionMode(NoSelection);
        setEditTriggers(NoEditTriggers);
        setVerticalScrollMode(ScrollPerPixel);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        verticalScrollBar()->setSingleStep(rowHeight / 2);
        viewport()->setAttribute(Qt::WA_Hover);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        QListView::mousePressEvent(event);
        pressed = indexAt(event->position().toPoint());
    }
    // The second click of two fast ones is a click like any other.
    void mouseDoubleClickEvent(QMouseEvent* event) override { pressed = indexAt(event->position().toPoint()); }

    void mouseReleaseEvent(QMouseEvent* event) override {
        QListView::mouseReleaseEvent(event);
        const QModelIndex index = indexAt(event->position().toPoint());
        const bool same = index.isValid() && index == pressed;
        pressed = QPersistentModelIndex();
        if (same && event->button() == Qt::LeftButton) rows.toggle(index);
    }

    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Space && currentIndex().isValid()) {
            rows.toggle(currentIndex());
            event->accept();
            return;
        }
        QListView::keyPressEvent(event);
    }

private:
    ReviewRows& rows;
    QPersistentModelIndex pressed;
};

constexpr int margin = 24;
constexpr int gap = 12;
constexpr QSize defaultSize(680, 480);
constexpr QSize smallestSize(560, 400);
constexpr int mostRowsWithoutScrolling = 6;

} // namespace

RemoteChangesView::RemoteChangesView(ModelBridge& bridge, RemoteReview toDecide, QWidget* parent)
    : QDialog(parent), model(bridge.model()), review(std::move(toDecide)), rows(new ReviewRows(review, this)) {
    setWindowModality(Qt::WindowModal);
    auto* const body = new QVBoxLayout;
    body->setContentsMargins(margin, 20, margin, 16);
    body->setSpacing(gap);
    body->addLayout(makeHeader());
    body->addLayout(makeTools());
    body->addWidget(makeList(), 1);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(body, 1);
    layout->addWidget(makeFooter());
    fitHeight();
    connect(rows, &QAbstractItemModel::dataChanged, this, &RemoteChangesView::showCount);
    connect(&bridge, &ModelBridge::presentedReviewChanged, this, &RemoteChangesView::closeWhenOver);
    showCount();
    list->setFocus();
}

const PathSet& RemoteChangesView::selected() const { return rows->selected(); }

QLayout* RemoteChangesView::makeHeader() {
    const QString title = tr("Newer files on the server");
    const QStringList explanation{
        tr("Uploads are paused. Choose the server versions to download before watching resumes. Downloading replaces "
           "those local files and keeps backups in .zembrastel-backups inside your local folder."),
        tr("Unticked files keep their local versions. Pending local edits may upload and replace server copies when "
           "watching resumes.")};
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(explanation.join(u' '));
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(4);
    texts->addWidget(new WrapLabel(title, TextStyle::dialogTitle));
    for (const QString& part : explanation) texts->addWidget(new WrapLabel(part, TextStyle::explanation, Tone::dim));
    auto* const header = new QHBoxLayout;
    header->setSpacing(16);
    header->addWidget(new Tile("arrow.down.doc", TileKind::soft, 44), 0, Qt::AlignTop);
    header->addLayout(texts, 1);
    return header;
}

QLayout* RemoteChangesView::makeTools() {
    auto* const all = new PushButton(tr("Select all"));
    connect(all, &QPushButton::clicked, this, [this] { rows->tickAll(true); });
    auto* const none = new PushButton(tr("Select none"));
    connect(none, &QPushButton::clicked, this, [this] { rows->tickAll(false); });
    count = makeLabel(QString(), TextStyle::strong);
    auto* const tools = new QHBoxLayout;
    tools->setSpacing(8);
    tools->addWidget(all);
    tools->addWidget(none);
    tools->addStretch(1);
    tools->addWidget(count);
    return tools;
}

QWidget* RemoteChangesView::makeList() {
    QFrame* const card = makeSurface(Surface::card);
    auto* const layout = new QVBoxLayout(card);
    // The scroll bar stands nearer to the edge than the rows do.
    const bool mirrored = isRightToLeft();
    layout->setContentsMargins(mirrored ? 1 : 7, 3, mirrored ? 7 : 1, 3);
    list = new ChangeView(*rows, card);
    list->setAccessibleName(windowTitle());
    layout->addWidget(list);
    return card;
}

QWidget* RemoteChangesView::makeFooter() {
    QFrame* const footer = makeSurface(Surface::footer);
    auto* const layout = new QHBoxLayout(footer);
    layout->setContentsMargins(margin, gap, margin, gap);
    layout->setSpacing(8);
    auto* const pause = new PushButton(tr("Stay paused"));
    connect(pause, &QPushButton::clicked, this, &RemoteChangesView::reject);
    confirm = new PushButton(QString(), ButtonKind::primary);
    confirm->setDefault(true);
    // Where the decision cannot be carried out, the review stays presented and the sheet open.
    connect(confirm, &QPushButton::clicked, this, [this] { model.resolveReview(review.id, selected()); });
    layout->addStretch(1);
    layout->addWidget(pause);
    layout->addWidget(confirm);
    return footer;
}

// As high as some rows need, and no higher than the screen.
void RemoteChangesView::fitHeight() {
    const int shown = std::min(mostRowsWithoutScrolling, rows->rowCount());
    int needed = 0;
    for (int row = 0; row < shown; ++row) needed += list->sizeHintForRow(row);
    const int others = layout()->heightForWidth(defaultSize.width()) - list->sizeHint().height();
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(smallestSize.boundedTo(room));
    resize(QSize(defaultSize.width(), std::max(defaultSize.height(), others + needed)).boundedTo(room));
}

void RemoteChangesView::showCount() {
    count->setText(tr("%1 of %2 selected").arg(selected().size()).arg(rows->rowCount()));
    confirm->setLabel(confirmLabel(selected().size()));
}

void RemoteChangesView::closeWhenOver() {
    const auto& presented = model.presentedReview();
    if (isVisible() && (!presented || presented->id != review.id)) accept();
}

void RemoteChangesView::reject() {
    // The sheet goes first: what follows tells everyone that its review is no longer presented.
    AppModel& decided = model;
    const Uuid id = review.id;
    QDialog::reject();
    decided.pauseReview(id);
    if (decided.presentedReview() && decided.presentedReview()->id == id) decided.closeReview();
}

} // namespace zembrastel
