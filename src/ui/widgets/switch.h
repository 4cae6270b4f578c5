// An on-off switch, 40 x 24 points, for options that take effect at once.
//
// Space and Enter toggle it. Its accessible name is the text of its label. Screen readers announce a check box.
#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

namespace zembrastel::ui {

class Switch : public QAbstractButton {
    Q_OBJECT

public:
    explicit Switch(const QString& accessible, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override { return {40, 24}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void moveKnob(bool on);

    QVariantAnimation knob; // from 0, off, to 1, on
};

} // namespace zembrastel::ui
