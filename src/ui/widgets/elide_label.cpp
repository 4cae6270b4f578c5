#include "ui/widgets/elide_label.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QStyle>

namespace zembrastel::ui {

ElideLabel::ElideLabel(const QString& text, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setWholeText(text);
}

void ElideLabel::setWholeText(const QString& text) {
    setText(text);
    setToolTip(asToolTip(text));
    setAccessibleDescription(text); // without the markup of the tool tip
}

QString ElideLabel::visibleText() const {
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

QSize ElideLabel::sizeHint() const { return {fontMetrics().horizontalAdvance(text()) + 1, fontMetrics().height()}; }

QSize ElideLabel::minimumSizeHint() const {
    const int fewLetters = fontMetrics().averageCharWidth() * 8;
    return {std::min(fewLetters, sizeHint().width()), fontMetrics().height()};
}

void ElideLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // A path reads from left to right in every layout.
    painter.setLayoutDirection(text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter.setPen(palette().color(foregroundRole()));
    const auto place = QStyle::visualAlignment(layoutDirection(), alignment()) | Qt::AlignAbsolute;
    painter.drawText(contentsRect(), static_cast<int>(place) | Qt::TextSingleLine, visibleText());
}

void ElideLabel::contextMenuEvent(QContextMenuEvent* event) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Copy"), this, [this] { QGuiApplication::clipboard()->setText(text()); });
    menu->popup(event->globalPos());
}

} // namespace zembrastel::ui
