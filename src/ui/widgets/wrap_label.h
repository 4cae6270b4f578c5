// A label that wraps and always has the height that its text needs, in any layout.
//
// Breaks words that are longer than a line, as in paths and server messages.
#pragma once

#include "ui/theme/text_style.h"

#include <QLabel>

namespace zembrastel::ui {

class WrapLabel : public QLabel {
    Q_OBJECT

public:
    explicit WrapLabel(
        const QString& text, TextStyle style = TextStyle::body, Tone tone = Tone::normal, QWidget* parent = nullptr);

    // Use it in place of setText(): it adapts the height at once.
    void setWrappedText(const QString& text);

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fitHeight();
};

} // namespace zembrastel::ui
