#include "ui/widgets/wrap_label.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace zembrastel::ui {
namespace {

// The width that size hints assume before the real width is known.
constexpr int usualWidth = 400;

// Breaks one paragraph into lines and returns their height.
double arrange(QTextLayout& layout, const QLabel& label, double width) {
    QTextOption option(QStyle::visualAlignment(label.layoutDirection(), label.alignment()));
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(layout.text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    option.setAlignment(option.alignment() | Qt::AlignAbsolute);
    layout.setTextOption(option);
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

QString withLineSeparators(QString text) { return text.replace(u'\n', QChar::LineSeparator); }

} // namespace

WrapLabel::WrapLabel(const QString& text, TextStyle style, Tone tone, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setFont(fontOf(style));
    setTone(*this, tone);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setWrappedText(text);
}

void WrapLabel::setWrappedText(const QString& text) {
    if (text == QLabel::text()) return;
    setText(text);
    fitHeight();
}

int WrapLabel::heightForWidth(int width) const {
    QTextLayout layout(withLineSeparators(text()), font());
    const QMargins margins = contentsMargins();
    const int room = std::max(1, width - margins.left() - margins.right());
    return static_cast<int>(std::ceil(arrange(layout, *this, room))) + margins.top() + margins.bottom();
}

QSize WrapLabel::sizeHint() const {
    const int natural = fontMetrics().size(0, text()).width() + 1;
    const int width = std::min(natural, usualWidth);
    return {width, heightForWidth(width)};
}

QSize WrapLabel::minimumSizeHint() const { return {std::min(40, sizeHint().width()), fontMetrics().height()}; }

void WrapLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    QTextLayout layout(withLineSeparators(text()), font());
    const QRect room = contentsRect();
    arrange(layout, *this, room.width());
    layout.draw(&painter, room.topLeft());
}

void WrapLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    fitHeight();
}

void WrapLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) fitHeight();
}

// Some parent layouts ignore height-for-width, but all of them respect a minimum height.
void WrapLabel::fitHeight() {
    if (testAttribute(Qt::WA_Resized)) setMinimumHeight(heightForWidth(width()));
}

} // namespace zembrastel::ui
