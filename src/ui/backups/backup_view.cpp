#include "ui/backups/backup_view.h"

#include "ui/backups/backup_row.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"

#include <QPainter>

namespace zembrastel::ui {
namespace {

constexpr int emptyMargin = 32;
constexpr int emptyGap = 6;

} // namespace

BackupView::BackupView(BackupRows& shown, QWidget* parent) : RowList(parent) {
    setSelectionMode(SingleSelection);
    setUniformItemSizes(true);
    setModel(&shown);
    setItemDelegate(new BackupRow(shown, this));
}

void BackupView::setPlaceholder(const QString& title, const QString& explanation) {
    emptyTitle = title;
    emptyExplanation = explanation;
    // Without rows these are all there is to be read.
    setAccessibleDescription(title.isEmpty() ? QString() : title + QStringLiteral(". ") + explanation);
    viewport()->update();
}

// A press has chosen the row already.
int BackupView::partAt(const QModelIndex&, const QPoint&) const { return 0; }
void BackupView::partClicked(const QModelIndex&, int) {}

bool BackupView::keyPressed(const QModelIndex&, int key) {
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
    Q_EMIT openRequested();
    return true;
}

void BackupView::paintEvent(QPaintEvent* event) {
    RowList::paintEvent(event);
    if (model()->rowCount() > 0) return;
    QPainter painter(viewport());
    const QRect room = viewport()->rect().adjusted(emptyMargin, emptyMargin, -emptyMargin, -emptyMargin);
    painter.setFont(fontOf(TextStyle::strong));
    painter.setPen(colours().text);
    const int above = room.top() + room.height() / 3;
    QRect used;
    painter.drawText(
        QRect(room.left(), above, room.width(), room.bottom() - above),
        Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyTitle, &used);
    painter.setFont(fontOf(TextStyle::explanation));
    painter.setPen(colours().dim);
    const int below = used.bottom() + emptyGap;
    painter.drawText(
        QRect(room.left(), below, room.width(), room.bottom() - below),
        Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyExplanation);
}

} // namespace zembrastel::ui
