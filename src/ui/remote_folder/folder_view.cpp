#include "ui/remote_folder/folder_view.h"

#include "ui/theme/style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/tree_row.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QStyle>

#include <algorithm>

namespace zembrastel::ui {
namespace {

constexpr int folderSide = 18;
constexpr int nameLeft = 56;
constexpr int fieldWidth = 240;

enum Part { none, chevron, retry };

TreeRow::Message messageKind(FolderLine::Kind kind) {
    using Kind = FolderLine::Kind;
    if (kind == Kind::loading || kind == Kind::creating) return TreeRow::Message::loading;
    return kind == Kind::empty ? TreeRow::Message::note : TreeRow::Message::failure;
}

void paintFolder(RowPainter& to, const TreeRow& row, const FolderTreeModel& rows, const QModelIndex& index) {
    const Colours& now = colours();
    const FolderLine& line = rows.line(index);
    const QString name = rows.shownText(line);
    to.symbol(row.chevron(), rows.isOpen(index) ? "chevron.down" : "chevron.right", now.dim);
    to.symbol(row.symbol(TreeRow::afterChevron, folderSide), line.path.empty() ? "server" : "folder", now.accent);
    const QString badge = rows.isLoginFolder(line) ? FolderTreeModel::tr("Login folder") : QString();
    QRect place = row.textFrom(nameLeft);
    const int badgeRoom = badge.isEmpty() ? 0 : TreeRow::gap + RowPainter::badgeWidth(badge);
    place.setWidth(std::min(lineWidth(TextStyle::strong, name) + 1, std::max(0, place.width() - badgeRoom)));
    to.line(place, name, {.style = TextStyle::strong, .colour = now.text});
    if (badge.isEmpty()) return;
    const QSize size(RowPainter::badgeWidth(badge), RowPainter::badgeHeight());
    to.badge(centredIn(row.plate(), place.right() + TreeRow::gap, size), badge, true);
}

} // namespace

QSize FolderDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const { return {1, TreeRow::height()}; }

void FolderDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const FolderLine& line = rows.line(index);
    const TreeRow row(option.rect, line.depth);
    RowPainter to(*painter, option);
    if (rows.isFolder(index) || to.selected()) to.rowPlate(row.plate());
    to.focusRing(row.plate());
    if (rows.isFolder(index)) {
        paintFolder(to, row, rows, index);
    } else if (line.kind != FolderLine::Kind::edit) {
        row.paintMessage(to, messageKind(line.kind), rows.shownText(line));
    }
}

FolderView::FolderView(FolderTreeModel& shown, QWidget* parent) : FoldingList(shown, parent), rows(shown) {
    setSelectionMode(SingleSelection);
    setItemDelegate(new FolderDelegate(shown, this));
}

int FolderView::partAt(const QModelIndex& index, const QPoint& point) const {
    const FolderLine& line = rows.line(index);
    const QRect whole = visualRect(index);
    const TreeRow row(whole, line.depth);
    const QPoint hit = QStyle::visualRect(layoutDirection(), whole, QRect(point, QSize(1, 1))).topLeft();
    if (rows.isFolder(index)) return TreeRow::isNear(row.chevron(), hit) ? chevron : none;
    const bool failed = messageKind(line.kind) == TreeRow::Message::failure && line.kind != FolderLine::Kind::edit;
    return failed && row.retryButton(rows.shownText(line)).contains(hit) ? retry : none;
}

void FolderView::partClicked(const QModelIndex& row, int part) {
    part == chevron ? rows.toggleFold(row) : rows.retry(row);
}

bool FolderView::keyPressed(const QModelIndex& row, int key) {
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (!isEnter || !rows.isFolder(row)) return FoldingList::keyPressed(row, key);
    Q_EMIT chosen();
    return true;
}

void FolderView::mousePressEvent(QMouseEvent* event) {
    Q_EMIT movedByUser();
    FoldingList::mousePressEvent(event);
}

void FolderView::keyPressEvent(QKeyEvent* event) {
    Q_EMIT movedByUser();
    FoldingList::keyPressEvent(event);
}

void FolderView::openField() {
    const QModelIndex row = rows.editedRow();
    if (!row.isValid()) return;
    auto* const place = new QWidget;
    auto* const layout = makeLayout<QHBoxLayout>(0, place);
    const int left = TreeRow(visualRect(row), rows.depthOf(row)).textFrom(TreeRow::afterChevron).left();
    layout->setContentsMargins(readingMargins(left - visualRect(row).left(), 0, TreeRow::gap, 0));
    field = new QLineEdit;
    field->setAccessibleName(rows.shownText(rows.line(row)));
    field->setPlaceholderText(rows.shownText(rows.line(row)));
    field->setMaximumWidth(scaledToText(fieldWidth));
    field->installEventFilter(this);
    layout->addWidget(field, 1);
    layout->addStretch(0);
    setIndexWidget(row, place);
    scrollTo(row);
    field->setFocus();
}

bool FolderView::eventFilter(QObject* watched, QEvent* event) {
    if (watched != field || event->type() != QEvent::KeyPress) return FoldingList::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape) {
        Q_EMIT namingDropped();
        return true;
    }
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    if (const QString name = field->text(); !name.isEmpty()) Q_EMIT named(name);
    return true;
}

} // namespace zembrastel::ui
