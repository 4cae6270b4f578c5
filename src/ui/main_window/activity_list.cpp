#include "ui/main_window/activity_list.h"

#include "ui/main_window/activity_row.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/symbol_widgets.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace zembrastel::ui {
namespace {

// A list that leaves the wheel to the page around it.
class LineView : public QListView {
public:
    using QListView::QListView;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

constexpr int edge = 4;
constexpr int emptyHeight = 152;

} // namespace

ActivityList::ActivityList(QWidget* parent)
    : QFrame(parent), lines(new ActivityModel(this)), view(new LineView), emptyPage(makeEmptyPage()) {
    setSurface(*this, Surface::card);
    view->setAccessibleName(tr("Recent activity"));
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setSelectionMode(QAbstractItemView::NoSelection);
    view->setUniformItemSizes(true);
    view->setModel(lines);
    view->setItemDelegate(new ActivityRow(*lines, view));
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
    layout->setContentsMargins(1, edge, 0, edge);
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
    setMinimumHeight(count == 0 ? emptyHeight : count * ActivityRow::height() + 2 * edge + 2);
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
