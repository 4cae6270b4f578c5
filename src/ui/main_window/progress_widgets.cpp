#include "ui/main_window/progress_widgets.h"

#include "app/progress_text.h"
#include "ui/theme/theme.h"

#include <QPainter>

namespace zembrastel::ui {
namespace {

constexpr int thickness = 4;

} // namespace

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
    setAccessibleName(tr("Transfer of %1").arg(QString::fromStdString(progress->file->path)));
    setAccessibleDescription(QString::fromStdString(progressText(*progress)));
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
    // Never less than a dot, which tells that there is a bar.
    QRectF done = track;
    done.setWidth(qMax<double>(thickness, track.width() * fraction));
    if (layoutDirection() == Qt::RightToLeft) done.moveRight(track.right());
    paint(done, colours().accent);
}

} // namespace zembrastel::ui
