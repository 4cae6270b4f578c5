#include "ui/widgets/banner_layout.h"

#include "ui/theme/style.h"

#include <QVBoxLayout>

namespace zembrastel::ui {

QGridLayout* layOutBanner(QFrame& banner, QWidget* symbol, const QList<WrapLabel*>& labels, int rowGap) {
    labels.front()->setContentsMargins(0, 2, 0, 0); // in line with the symbol
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(4);
    for (auto* const label : labels) texts->addWidget(label);
    auto* const layout = new QGridLayout(&banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(rowGap);
    layout->setColumnStretch(bannerTextColumn, 1);
    layout->addWidget(symbol, 0, 0, Qt::AlignTop);
    layout->addLayout(texts, 0, bannerTextColumn);
    return layout;
}

} // namespace zembrastel::ui
