// A label of one line that elides the middle of its text, such as a path, when there is too little room.
//
// The tool tip shows the whole text, and the context menu copies it.
#pragma once

#include <QLabel>

namespace zembrastel::ui {

class ElideLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElideLabel(const QString& text = {}, QWidget* parent = nullptr);

    // Use it in place of setText(), which does not set the tool tip.
    void setWholeText(const QString& text);

    // The text as elided at the current width.
    [[nodiscard]] QString visibleText() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
};

} // namespace zembrastel::ui
