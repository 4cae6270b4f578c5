// Buttons in a row, which continue on further lines if the width does not suffice.
//
// Its height follows from the number of lines, in any layout. Hidden buttons take no room. Lower buttons are in the
// middle of their line.
#pragma once

#include <QWidget>

namespace zembrastel::ui {

class ButtonFlow : public QWidget {
    Q_OBJECT

public:
    // Owns the buttons. The one `atLineEnd`, if there is one, follows the others, at the end of its line.
    explicit ButtonFlow(const QList<QWidget*>& shownButtons, QWidget* atLineEnd = nullptr);

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override { return arrange(width, false); }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // Returns the height of the lines; moves the buttons there if `moves`.
    int arrange(int width, bool moves) const;
    int placeLine(const QList<QWidget*>& line, int top) const; // returns its height
    [[nodiscard]] static int heightOf(const QList<QWidget*>& line);
    void fit();

    QList<QWidget*> buttons;
    QWidget* trailing;
};

} // namespace zembrastel::ui
