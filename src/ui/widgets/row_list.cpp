#include "ui/widgets/row_list.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace zembrastel::ui {

RowList::RowList(QWidget* parent) : QListView(parent) {
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
}

void RowList::mousePressEvent(QMouseEvent* event) {
    QListView::mousePressEvent(event);
    rememberPressed(*event);
}

// The second click of a double click counts as a click of its own.
void RowList::mouseDoubleClickEvent(QMouseEvent* event) { rememberPressed(*event); }

void RowList::rememberPressed(const QMouseEvent& event) {
    const QPoint point = event.position().toPoint();
    pressedRow = indexAt(point);
    pressedPart = pressedRow.isValid() ? partAt(pressedRow, point) : 0;
}

void RowList::mouseReleaseEvent(QMouseEvent* event) {
    QListView::mouseReleaseEvent(event);
    const QPoint point = event->position().toPoint();
    const QModelIndex row = indexAt(point);
    const bool same = row.isValid() && row == pressedRow && pressedPart != 0 && partAt(row, point) == pressedPart;
    pressedRow = QPersistentModelIndex();
    if (same && event->button() == Qt::LeftButton) partClicked(row, pressedPart);
}

// A part may look different under the pointer, and the delegate knows only that the pointer is somewhere on the row.
void RowList::mouseMoveEvent(QMouseEvent* event) {
    QListView::mouseMoveEvent(event);
    if (const QModelIndex under = indexAt(event->position().toPoint()); under.isValid()) update(under);
}

void RowList::keyPressEvent(QKeyEvent* event) {
    // Keyboard users must see the focus, even if the window was opened with the pointer.
    if (!window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
        window()->setAttribute(Qt::WA_KeyboardFocusChange);
        viewport()->update();
    }
    const QModelIndex row = currentIndex();
    if (row.isValid() && event->modifiers() == Qt::NoModifier && keyPressed(row, event->key())) {
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
}

} // namespace zembrastel::ui
