#include "ui/main_window/status_line.h"

#include <QGridLayout>

namespace zembrastel::ui {

StatusLine::StatusLine(QWidget* parent)
    : QWidget(parent), symbol(new StatusSymbol), title(makeLabel(QString(), TextStyle::strong)),
      progress(new ProgressLabel), detail(new WrapLabel(QString(), TextStyle::body, Tone::dim)) {
    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(1);
    layout->setColumnStretch(2, 1);
    layout->addWidget(symbol, 0, 0);
    layout->addWidget(title, 0, 1);
    layout->addWidget(progress, 0, 2);
    layout->addWidget(detail, 1, 1, 1, 2);
}

void StatusLine::setStatus(const ProfileStatus& status, bool running) {
    symbol->setStatus(status, running);
    title->setText(QString::fromStdString(status.title()));
    setTone(*title, status.failed() ? Tone::warn : Tone::normal);
    progress->setProgress(status.progress);
    detail->setWrappedText(QString::fromStdString(status.detail));
}

} // namespace zembrastel::ui
