#include "ui/main_window/progress_widgets.h"

#include "app/progress_text.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"

#include <QPainter>
#include <QStyle>

namespace zembrastel::ui {
namespace {

constexpr int thickness = 4;

} // namespace

ProgressLabel::ProgressLabel(QWidget* parent) : QLabel(parent) {
    setFont(fontOf(TextStyle::small));
    setTone(*this, Tone::dim);
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ProgressLabel::setProgress(const std::optional<TransferProgress>& progress) {
    shortText = progress ? progressInWords(shortProgressText(*progress)) : QString();
    setText(progress ? progressInWords(progressText(*progress)) : QString());
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

ProgressStrip::ProgressStrip(int height, QWidget* parent) : QProgressBar(parent) {
    setFixedHeight(height);
    setTextVisible(false);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void ProgressStrip::setProgress(const std::optional<TransferProgress>& progress) {
    const auto known = progress ? fileFraction(*progress) : std::nullopt;
    setVisible(known.has_value());
    if (!known) return;
    fraction = *known;
    setValue(static_cast<int>(fraction * maximum()));
    setAccessibleName(
        progress->work == TransferProgress::Work::comparingContents
            ? tr("Comparison of contents")
            : tr("Transfer of %1").arg(toQString(progress->file->path)));
    setAccessibleDescription(progressInWords(progressText(*progress)));
    update();
}

void ProgressStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto paint = [&painter](const QRectF& bar, const QColor& colour) {
        painter.setBrush(colour);
        painter.drawRoundedRect(bar, thickness / 2.0, thickness / 2.0);
    };
    const QRectF track(0, (height() - thickness) / 2.0, width(), thickness);
    paint(track, colours().line);
    // At least a dot, so that the bar is recognisable at 0 %.
    QRectF done = track;
    done.setWidth(qMax<double>(thickness, track.width() * fraction));
    if (layoutDirection() == Qt::RightToLeft) done.moveRight(track.right());
    paint(done, colours().accent);
}

} // namespace zembrastel::ui
