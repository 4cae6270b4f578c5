#include "ui/widgets/progress_label.h"

#include "app/progress_text.h"
#include "ui/theme/text_style.h"

#include <QPainter>
#include <QStyle>

namespace zembrastel::ui {

ProgressLabel::ProgressLabel(QWidget* parent) : QLabel(parent) {
    setFont(fontOf(TextStyle::small));
    setTone(*this, Tone::dim);
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ProgressLabel::setProgress(const std::optional<TransferProgress>& progress) {
    shortText = progress ? QString::fromStdString(shortProgressText(*progress)) : QString();
    setText(progress ? QString::fromStdString(progressText(*progress)) : QString());
    update();
}

QString ProgressLabel::visibleText() const {
    const QFontMetrics metrics = fontMetrics();
    if (metrics.horizontalAdvance(text()) <= contentsRect().width()) return text();
    return metrics.elidedText(shortText, Qt::ElideRight, contentsRect().width());
}

QSize ProgressLabel::minimumSizeHint() const { return {0, QLabel::minimumSizeHint().height()}; }

void ProgressLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const auto alignment =
        QStyle::visualAlignment(layoutDirection(), Qt::AlignRight | Qt::AlignVCenter) | Qt::AlignAbsolute;
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(contentsRect(), static_cast<int>(alignment) | Qt::TextSingleLine, visibleText());
}

} // namespace zembrastel::ui
