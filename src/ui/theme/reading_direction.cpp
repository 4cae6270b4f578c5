#include "ui/theme/reading_direction.h"

#include <QGuiApplication>

namespace zembrastel::ui {

bool readsFromRight() { return QGuiApplication::layoutDirection() == Qt::RightToLeft; }

QMargins readingMargins(int start, int top, int end, int bottom) {
    return readsFromRight() ? QMargins(end, top, start, bottom) : QMargins(start, top, end, bottom);
}

Qt::Alignment readingStart() { return Qt::AlignAbsolute | (readsFromRight() ? Qt::AlignRight : Qt::AlignLeft); }

QString inItsOwnDirection(const QString& label) {
    constexpr QChar leftToRightMark(0x200e);
    const bool foreign = readsFromRight() && !label.isEmpty() && !label.isRightToLeft();
    return foreign ? label + leftToRightMark : label;
}

} // namespace zembrastel::ui
