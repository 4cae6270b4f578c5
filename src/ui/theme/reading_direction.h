// What has a beginning and an end, put the right way round for the direction in which the user reads.
//
// Main thread. For what Qt does not mirror by itself: margins of layouts, and texts in a script of the other direction.
#pragma once

#include <QMargins>
#include <QString>

namespace zembrastel::ui {

[[nodiscard]] bool readsFromRight();

[[nodiscard]] QMargins readingMargins(int start, int top, int end, int bottom);

// The side where lines begin, whatever script a text is in.
[[nodiscard]] Qt::Alignment readingStart();

// Keeps the dots at the end of an untranslated label at its end.
[[nodiscard]] QString inItsOwnDirection(const QString& label);

} // namespace zembrastel::ui
