// A question before an action that may destroy something, and a message that needs no answer.
//
// Window-modal, 460 points wide. Show it with open() or with the functions below, which run no event loop and delete
// the dialog when it is closed.
#pragma once

#include <QDialog>
#include <QPushButton>

#include <functional>

namespace zembrastel::ui {

class ConfirmDialog : public QDialog {
    Q_OBJECT

public:
    // The dismiss button ("Cancel" by default) has the focus, and Enter and Escape press it. The confirm button accepts
    // the dialog. Without a text to confirm there is only "OK".
    ConfirmDialog(
        const QString& title, const QString& message, const QString& confirmText, QWidget* parent = nullptr,
        const QString& dismissText = QString(), bool warns = true);

    // Shows the question. Calls `confirmed` if the user confirms.
    static ConfirmDialog* ask(
        QWidget* parent, const QString& title, const QString& message, const QString& confirmText,
        std::function<void()> confirmed, const QString& dismissText = QString());

    // Asks before a sheet closes and loses what the user entered.
    static ConfirmDialog* askToDiscard(QWidget* sheet, const QString& message, std::function<void()> discard);

    // Shows a message that is no warning.
    static ConfirmDialog* inform(QWidget* parent, const QString& title, const QString& message);

    // Shows a warning. Calls `closed`, if given, when the user has closed it.
    static ConfirmDialog* showMessage(
        QWidget* parent, const QString& title, const QString& message, std::function<void()> closed = {});

private:
    [[nodiscard]] static QWidget* makeBody(const QString& title, const QString& message, bool warns);
    [[nodiscard]] QWidget* makeFooter(const QString& confirmText, const QString& dismissText);

    QPushButton* dismissButton = nullptr;
};

} // namespace zembrastel::ui
