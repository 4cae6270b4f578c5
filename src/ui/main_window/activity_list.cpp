#include "ui/main_window/activity_list.h"

#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"
#include "ui/widgets/symbol_widgets.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int inset = 16;
constexpr int gap = 12;
constexpr int timeGap = 24;
constexpr int symbolSide = 16;
constexpr int textLeft = inset + symbolSide + gap;

ColourRole symbolColour(const Activity& activity) {
    if (activity.error()) return &Colours::warn;
    return activity.kind == Activity::Kind::note ? &Colours::edge : &Colours::accent;
}

// A list that passes wheel events to the page around it.
class LineView : public QListView {
public:
    using QListView::QListView;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

constexpr int edge = 4;
constexpr int emptyHeight = 152;

} // namespace

void ActivityListModel::setActivity(const std::deque<Activity>& activity) {
    const auto known = lines.empty() ? activity.end() : std::ranges::find(activity, lines.front().id, &Activity::id);
    if (known == activity.end()) {
        if (!activity.empty() || !lines.empty()) replace(activity);
        return;
    }
    if (const auto added = known - activity.begin(); added > 0) {
        beginInsertRows({}, 0, static_cast<int>(added) - 1);
        lines.insert(lines.begin(), activity.begin(), known);
        endInsertRows();
    }
    if (lines.size() > activity.size()) {
        beginRemoveRows({}, static_cast<int>(activity.size()), rowCount() - 1);
        lines.resize(activity.size());
        endRemoveRows();
    }
}

void ActivityListModel::replace(const std::deque<Activity>& activity) {
    beginResetModel();
    lines = activity;
    endResetModel();
}

const Activity& ActivityListModel::at(const QModelIndex& index) const {
    return lines.at(static_cast<std::size_t>(index.row()));
}

int ActivityListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

QVariant ActivityListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const QString text = engineText(at(index).text);
    switch (role) {
    case Qt::DisplayRole:
        return text;
    case Qt::ToolTipRole:
        return asToolTip(text);
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(text, logTime(localTime(at(index).date), QDateTime::currentDateTime()));
    default:
        return {};
    }
}

std::string_view activitySymbol(const Activity& activity) {
    switch (activity.kind) {
    case Activity::Kind::failure:
        return "exclamationmark.circle";
    case Activity::Kind::uploaded:
        return "arrow.up";
    case Activity::Kind::downloaded:
        return "arrow.down";
    case Activity::Kind::note:
        break;
    }
    return "dot";
}

ActivityListDelegate::ActivityListDelegate(const ActivityListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

int ActivityListDelegate::height() { return std::max(32, lineHeight(TextStyle::body) + 12); }

void ActivityListDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const Activity& activity = rows.at(index);
    const Colours& now = colours();
    const QRect& row = option.rect;
    const QRect text = row.adjusted(textLeft, 0, -inset, 0);
    RowPainter to(*painter, option);
    to.symbol(
        centredIn(row, row.left() + inset, {symbolSide, symbolSide}), activitySymbol(activity),
        now.*symbolColour(activity));
    const int timeWidth = to.line(
        text, logTime(localTime(activity.date), QDateTime::currentDateTime()),
        {.style = TextStyle::small, .colour = now.dim, .side = Qt::AlignRight});
    to.line(
        text.adjusted(0, 0, -timeWidth - timeGap, 0), index.data().toString(),
        {.colour = activity.error() ? now.warnText : now.text});
    if (index.row() + 1 < rows.rowCount()) to.divider(text.left(), text.right());
    to.focusRing(row.adjusted(8, 0, -8, -1), 7);
}

QSize ActivityListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {200, height()}; }

ActivityList::ActivityList(QWidget* parent)
    : QFrame(parent), lines(new ActivityListModel(this)), view(new LineView), emptyPage(makeEmptyPage()) {
    setSurface(*this, Surface::card);
    view->setAccessibleName(tr("Recent activity"));
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setSelectionMode(QAbstractItemView::NoSelection);
    view->setUniformItemSizes(true);
    view->setModel(lines);
    view->setItemDelegate(new ActivityListDelegate(*lines, view));
    auto* const copy = new QAction(tr("Copy"), view);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, [this] {
        QGuiApplication::clipboard()->setText(view->currentIndex().data().toString());
    });
    view->addAction(copy);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& line) {
        if (line.isValid()) Q_EMIT lineReached(view->visualRect(line).translated(view->pos()));
    });
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, edge, 1, edge);
    layout->addWidget(view);
    layout->addWidget(emptyPage);
    fitLines();
}

void ActivityList::setActivity(const std::deque<Activity>& activity) {
    lines->setActivity(activity);
    fitLines();
}

void ActivityList::fitLines() {
    const int count = lines->rowCount();
    view->setVisible(count > 0);
    emptyPage->setVisible(count == 0);
    setMinimumHeight(count == 0 ? emptyHeight : count * ActivityListDelegate::height() + 2 * edge + 2);
}

QWidget* ActivityList::makeEmptyPage() {
    auto* const page = new QWidget;
    auto* const layout = new QVBoxLayout(page);
    layout->setSpacing(0);
    layout->addStretch(1);
    layout->addWidget(new Tile("arrow.up"), 0, Qt::AlignHCenter);
    layout->addSpacing(8);
    layout->addWidget(makeLabel(tr("Your uploads will appear here."), TextStyle::strong), 0, Qt::AlignHCenter);
    layout->addSpacing(2);
    layout->addWidget(
        makeLabel(tr("Edit a file in your local folder to get started."), TextStyle::body, Tone::dim), 0,
        Qt::AlignHCenter);
    layout->addStretch(1);
    return page;
}

} // namespace zembrastel::ui
