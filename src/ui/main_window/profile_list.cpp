#include "ui/main_window/profile_list.h"

#include "ui/main_window/status_symbol.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/symbol_icon.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/row_painter.h"

#include <QAbstractScrollArea>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyle>
#include <QToolTip>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int minRowHeight = 56;
constexpr int sideInset = 8;
constexpr int padding = 12;
constexpr int moreSide = 28;
constexpr int moreSymbol = 20;
constexpr int lineGap = 2;

// The symbol; beside it the texts, up to the button.
constexpr int symbolLeft = sideInset + padding;
constexpr int textLeft = symbolLeft + StatusSymbol::side + padding;

int textHeight() { return lineHeight(TextStyle::strong) + lineGap + lineHeight(TextStyle::small); }

// For a left-to-right layout.
QRect moreIn(const QRect& row) {
    QRect area(0, 0, moreSide, moreSide);
    area.moveTopRight({row.right() - 2 * sideInset, row.top() + 5});
    return area;
}

void paintMore(RowPainter& painter, const QRect& row) {
    const QRect area = moreIn(row);
    if (painter.hovered(area)) {
        painter.plate(area.adjusted(2, 4, -2, -4), painter.selected() ? colours().hover : colours().selected, 6);
    }
    QRect where(0, 0, moreSymbol, moreSymbol);
    where.moveCenter(area.center());
    painter.symbol(where, "ellipsis", colours().text);
}

// The row with its side inset. A scroll bar beside the rows takes the place of the inset at their end.
QRect wholeRow(const QStyleOptionViewItem& option) {
    const auto* const view = qobject_cast<const QAbstractScrollArea*>(option.widget);
    const bool scrolls = view != nullptr && view->verticalScrollBar()->isVisible();
    return option.rect.adjusted(0, 0, scrolls ? sideInset : 0, 0);
}

QRect moreArea(const QStyleOptionViewItem& option) {
    return QStyle::visualRect(option.direction, option.rect, moreIn(wholeRow(option)));
}

// Watching goes on without these files.
bool hasRefusedFiles(const ProfileStatus& status) {
    return !status.unsaved && !status.failed() && !status.refused.empty();
}

QColor titleColour(const ProfileStatus& status, bool selected) {
    if (status.failed() || hasRefusedFiles(status)) return colours().warnText;
    return selected ? colours().selectedDim : colours().dim;
}

} // namespace

ProfileListModel::ProfileListModel(ModelBridge& modelBridge, QObject* parent)
    : QAbstractListModel(parent), bridge(modelBridge), rows(wantedRows()) {
    connect(&bridge, &ModelBridge::profilesChanged, this, &ProfileListModel::updateRows);
    const auto repaint = [this](const Uuid& id) {
        const QModelIndex row = indexOf(id);
        if (row.isValid()) Q_EMIT dataChanged(row, row);
    };
    connect(&bridge, &ModelBridge::statusChanged, this, repaint);
    connect(&bridge, &ModelBridge::reviewChanged, this, repaint);
}

const Uuid& ProfileListModel::idAt(const QModelIndex& index) const {
    return rows.at(static_cast<std::size_t>(index.row()));
}

QModelIndex ProfileListModel::indexOf(const Uuid& id) const {
    const auto found = std::ranges::find(rows, id);
    return found == rows.end() ? QModelIndex() : index(static_cast<int>(found - rows.begin()));
}

const ProfileStatus& ProfileListModel::statusAt(const QModelIndex& index) const {
    return bridge.model().status(idAt(index));
}

bool ProfileListModel::runningAt(const QModelIndex& index) const { return bridge.model().running(idAt(index)); }

QString profileSummary(const ProfileStatus& status, std::size_t missing) {
    if (hasRefusedFiles(status)) {
        return ProfileListModel::tr("%n files cannot be uploaded", nullptr, static_cast<int>(status.refused.size()));
    }
    if (missing == 0 || status.unsaved || status.phase != Phase::watching) return engineText(status.title());
    return ProfileListModel::tr("%n files are missing", nullptr, static_cast<int>(missing));
}

QString ProfileListModel::summaryAt(const QModelIndex& index) const {
    return profileSummary(statusAt(index), bridge.model().missingOnServer(idAt(index)).size());
}

int ProfileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

QVariant ProfileListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Profile* const profile = bridge.model().profile(idAt(index));
    if (profile == nullptr) return {};
    const QString name = toQString(profile->name);
    switch (role) {
    case Qt::DisplayRole:
        return name;
    case Qt::ToolTipRole:
        return asToolTip(name);
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(name, summaryAt(index));
    case Qt::AccessibleDescriptionRole:
        return tr("Edit profile, Remove profile");
    default:
        return {};
    }
}

std::vector<Uuid> ProfileListModel::wantedRows() const {
    std::vector<Uuid> ids;
    for (const auto& profile : bridge.model().profiles()) {
        if (toQString(profile.name).contains(filter, Qt::CaseInsensitive)) ids.push_back(profile.id);
    }
    return ids;
}

void ProfileListModel::setFilter(const QString& text) {
    filter = text;
    updateRows();
}

void ProfileListModel::updateRows() {
    auto next = wantedRows();
    if (next == rows) {
        if (!rows.empty()) Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    rows = std::move(next);
    endResetModel();
}

ProfileListDelegate::ProfileListDelegate(const ProfileListModel& rowModel, QObject* parent)
    : QStyledItemDelegate(parent), rows(rowModel) {}

void ProfileListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QRect row = wholeRow(option);
    const QRect plate = row.adjusted(sideInset, 2, -sideInset, -2);
    RowPainter to(*painter, option);
    to.rowPlate(plate);
    to.focusRing(plate);
    const QRect symbol(row.left() + symbolLeft, row.top(), StatusSymbol::side, row.height());
    if (auto* const view = qobject_cast<const QAbstractScrollArea*>(option.widget)) {
        const ProfileStatus& status = rows.statusAt(index);
        paintStatus(
            *painter, QStyle::visualRect(option.direction, option.rect, symbol),
            hasRefusedFiles(status) ? StatusPresentation{"exclamationmark.circle", &Colours::warn, false}
                                    : present(status, rows.runningAt(index)),
            *view->viewport());
    }
    paintTexts(to, row, index);
    if (to.selected() || to.hovered()) paintMore(to, row);
}

void ProfileListDelegate::paintTexts(RowPainter& painter, const QRect& row, const QModelIndex& index) const {
    const ProfileStatus& status = rows.statusAt(index);
    QRect name(row.left() + textLeft, row.top() + (row.height() - textHeight()) / 2, 0, lineHeight(TextStyle::strong));
    name.setRight(moreIn(row).left() - 5);
    painter.line(name, index.data().toString(), {.style = TextStyle::strong, .colour = colours().text});
    QRect title(name.left(), name.bottom() + 1 + lineGap, 0, lineHeight(TextStyle::small));
    title.setRight(row.right() - sideInset - 5);
    painter.line(
        title, rows.summaryAt(index), {.style = TextStyle::small, .colour = titleColour(status, painter.selected())});
}

QSize ProfileListDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {200, std::max(minRowHeight, textHeight() + 20)};
}

bool ProfileListDelegate::helpEvent(
    QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option, const QModelIndex& index) {
    const QRect more = moreArea(option);
    if (event->type() != QEvent::ToolTip || !more.contains(event->pos()))
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), tr("Profile menu"), view, more);
    return true;
}

bool ProfileListDelegate::editorEvent(
    QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease) {
        const auto* const mouse = static_cast<QMouseEvent*>(event);
        const bool hit = moreArea(option).contains(mouse->position().toPoint());
        if (hit && mouse->button() == Qt::LeftButton) {
            if (event->type() == QEvent::MouseButtonRelease) {
                Q_EMIT moreRequested(index, mouse->globalPosition().toPoint());
            }
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

ProfileListView::ProfileListView(ModelBridge& modelBridge, QWidget* parent)
    : QListView(parent), bridge(modelBridge), rows(new ProfileListModel(modelBridge, this)) {
    setAccessibleName(tr("SYNC PROFILES"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setUniformItemSizes(true);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
    setModel(rows);
    auto* const row = new ProfileListDelegate(*rows, this);
    setItemDelegate(row);
    connect(row, &ProfileListDelegate::moreRequested, this, &ProfileListView::showMenu);
    connect(rows, &QAbstractItemModel::modelReset, this, &ProfileListView::showSelection);
    connect(&bridge, &ModelBridge::selectionChanged, this, &ProfileListView::showSelection);
    showSelection();
}

void ProfileListView::showSelection() {
    const auto& selected = bridge.model().selection();
    setCurrentIndex(selected ? rows->indexOf(*selected) : QModelIndex());
}

void ProfileListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QListView::currentChanged(current, previous);
    if (current.isValid()) bridge.model().select(rows->idAt(current));
}

void ProfileListView::keyPressEvent(QKeyEvent* event) {
    const QModelIndex index = currentIndex();
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (index.isValid() && enter) {
        Q_EMIT editRequested(rows->idAt(index));
    } else if (index.isValid() && event->key() == Qt::Key_Delete) {
        Q_EMIT removeRequested(rows->idAt(index));
    } else {
        QListView::keyPressEvent(event);
    }
}

// The "more" button looks different under the pointer, and the delegate knows only that the pointer is somewhere on the
// row.
void ProfileListView::mouseMoveEvent(QMouseEvent* event) {
    QListView::mouseMoveEvent(event);
    const QModelIndex under = indexAt(event->position().toPoint());
    if (under.isValid()) update(under);
}

void ProfileListView::contextMenuEvent(QContextMenuEvent* event) {
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = byKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid()) return;
    showMenu(index, byKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos());
}

void ProfileListView::showMenu(const QModelIndex& index, const QPoint& globalPosition) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const Uuid id = rows->idAt(index);
    menu->addAction(symbolIcon("pencil"), tr("Edit profile"), this, [this, id] { Q_EMIT editRequested(id); });
    const Profile* const profile = bridge.model().profile(id);
    auto* const send = menu->addAction(
        symbolIcon("arrow.up"), tr("Send everything again…"), this, [this, id] { Q_EMIT sendAllRequested(id); });
    send->setEnabled(profile != nullptr && !profile->needsDownload && !profile->hasEmptySyncSelection());
    menu->addAction(symbolIcon("trash"), tr("Remove profile"), this, [this, id] { Q_EMIT removeRequested(id); });
    menu->popup(globalPosition);
}

} // namespace zembrastel::ui
