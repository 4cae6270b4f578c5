// The one line of news at the foot of a dialog: what went well, or what failed and what can be done about it.
//
// Hidden while there is nothing to say. A new message is announced to screen readers.
#pragma once

#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QFrame>

#include <functional>

namespace zembrastel::ui {

class MessageStrip : public QFrame {
    Q_OBJECT

public:
    explicit MessageStrip(QWidget* parent = nullptr);

    void showSuccess(const QString& message);
    void showFailure(const QString& message);
    // A failure with a way out of it: a button, which gets the focus.
    void showFailure(const QString& message, const QString& offer, std::function<void()> accepted);
    void clear();

    [[nodiscard]] QString message() const;

private:
    void show(bool failure, const QString& message);

    class Symbol;
    Symbol* symbol;
    WrapLabel* text;
    PushButton* offerButton;
    std::function<void()> onOffer;
};

} // namespace zembrastel::ui
