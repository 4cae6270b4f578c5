// The message line at the foot of a dialog: a success, or a failure with its remedy.
//
// Hidden while it has no message. New messages are announced to screen readers.
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
    // A failure with a remedy: a button, which gets the focus.
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
