// The layout of a banner: a symbol, a heading and texts beside it, and what the caller adds below the texts.
//
// Main thread.
#pragma once

#include "ui/widgets/wrap_label.h"

#include <QFrame>
#include <QGridLayout>
#include <QList>

namespace zembrastel::ui {

inline constexpr int bannerTextColumn = 1;

// The first label is the heading. The caller adds to the rows below: `rowGap` is the space above each of them.
[[nodiscard]] QGridLayout* layOutBanner(
    QFrame& banner, QWidget* symbol, const QList<WrapLabel*>& labels, int rowGap = 12);

} // namespace zembrastel::ui
