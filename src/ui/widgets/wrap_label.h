// A label that wraps and is always as high as its text needs, in whatever layout it stands.
//
// A word that is too long for a line, as paths and server messages have them, is broken.
#pragma once

#include "ui/theme/text_style.h"

#include <QLabel>

namespace zembrastel::ui {

class WrapLabel : public QLabel {
    Q_OBJECT

public:
    explicit WrapLabel(
        const QString& text, TextStyle style = TextStyle::body, Tone tone = Tone::normal, QWidget* parent = nullptr);

    // In place of setText(): the height follows at once.
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
