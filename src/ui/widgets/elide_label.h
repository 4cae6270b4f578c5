// A label of one line that gives way in its middle when it has too little room, as paths need it.
//
// The whole text is in the tool tip, and in the context menu to be copied.
#pragma once

#include <QLabel>

namespace zembrastel::ui {

class ElideLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElideLabel(const QString& text = {}, QWidget* parent = nullptr);

    // In place of setText(), which knows no tool tip.
    void setWholeText(const QString& text);

    // What is seen of it at the present width.
    [[nodiscard]] QString visibleText() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
};

} // namespace zembrastel::ui
