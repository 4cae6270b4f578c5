// A question before something that may destroy, and a message that needs no answer.
//
// Window-modal, 460 points wide. Shown with open() or with the functions below, which run no event loop of their own;
// those delete the dialog when it is closed.
#pragma once

#include <QDialog>
#include <QPushButton>

#include <functional>

namespace zembrastel::ui {

class ConfirmDialog : public QDialog {
    Q_OBJECT

public:
    // Cancel, or what is to stand there instead, has the focus and is what Enter and Escape do; confirming accepts the
    // dialog. Without a text to confirm with there is "OK" alone.
    ConfirmDialog(
        const QString& title, const QString& message, const QString& confirmText, QWidget* parent = nullptr,
        const QString& dismissText = QString());

    // Asks, and calls `confirmed` if the answer is yes.
    static ConfirmDialog* ask(
        QWidget* parent, const QString& title, const QString& message, const QString& confirmText,
        std::function<void()> confirmed, const QString& dismissText = QString());

    // Tells, and calls `closed`, if there is one, once the message was read.
    static ConfirmDialog* tell(
        QWidget* parent, const QString& title, const QString& message, std::function<void()> closed = {});

private:
    [[nodiscard]] QWidget* makeBody(const QString& title, const QString& message);
    [[nodiscard]] QWidget* makeFooter(const QString& confirmText, const QString& dismissText);

    QPushButton* dismissButton = nullptr;
};

} // namespace zembrastel::ui
