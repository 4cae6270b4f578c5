#include "ui/widgets/confirm_dialog.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

constexpr int dialogWidth = 460;
constexpr int margin = 24;

} // namespace

ConfirmDialog::ConfirmDialog(
    const QString& title, const QString& message, const QString& confirmText, QWidget* parent,
    const QString& dismissText, bool warns)
    : QDialog(parent) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    setAccessibleName(title);
    setAccessibleDescription(message);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeBody(title, message, warns), 1);
    layout->addWidget(makeFooter(confirmText, dismissText));
    dismissButton->setDefault(true); // takes effect only once the button is inside its dialog
    dismissButton->setFocus();
    const int width = scaledToText(dialogWidth);
    setFixedSize(width, layout->heightForWidth(width));
}

QWidget* ConfirmDialog::makeBody(const QString& title, const QString& message, bool warns) {
    auto* const body = new QWidget;
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(8);
    texts->addWidget(new WrapLabel(title, TextStyle::confirmationTitle));
    texts->addWidget(new WrapLabel(message, TextStyle::body, Tone::dim));
    texts->addStretch(1);
    auto* const layout = new QHBoxLayout(body);
    layout->setContentsMargins(margin, margin, margin, 20);
    layout->setSpacing(16);
    auto* const tile = warns ? new Tile("exclamationmark.triangle", TileKind::warning, 44)
                             : new Tile("arrow.up.forward.square", TileKind::soft, 44);
    layout->addWidget(tile, 0, Qt::AlignTop);
    layout->addLayout(texts, 1);
    return body;
}

QWidget* ConfirmDialog::makeFooter(const QString& confirmText, const QString& dismissText) {
    QFrame* const footer = makeSurface(Surface::footer);
    auto* const layout = new QHBoxLayout(footer);
    layout->setContentsMargins(margin, 12, margin, 12);
    layout->setSpacing(8);
    layout->addStretch(1);
    const bool asks = !confirmText.isEmpty();
    auto* const dismiss = new PushButton(!dismissText.isEmpty() ? dismissText : asks ? tr("Cancel") : tr("OK"));
    connect(dismiss, &QPushButton::clicked, this, &QDialog::reject);
    layout->addWidget(dismiss);
    if (asks) {
        auto* const confirm = new PushButton(confirmText, ButtonKind::caution);
        connect(confirm, &QPushButton::clicked, this, &QDialog::accept);
        layout->addWidget(confirm);
    }
    dismissButton = dismiss;
    return footer;
}

ConfirmDialog* ConfirmDialog::ask(
    QWidget* parent, const QString& title, const QString& message, const QString& confirmText,
    std::function<void()> confirmed, const QString& dismissText) {
    auto* const dialog = new ConfirmDialog(title, message, confirmText, parent, dismissText);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, dialog, std::move(confirmed));
    dialog->open();
    return dialog;
}

ConfirmDialog* ConfirmDialog::askToDiscard(QWidget* sheet, const QString& message, std::function<void()> discard) {
    return ask(sheet, tr("Discard changes?"), message, tr("Discard changes"), std::move(discard), tr("Keep editing"));
}

ConfirmDialog* ConfirmDialog::inform(QWidget* parent, const QString& title, const QString& message) {
    auto* const dialog = new ConfirmDialog(title, message, QString(), parent, QString(), false);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
    return dialog;
}

ConfirmDialog* ConfirmDialog::showMessage(
    QWidget* parent, const QString& title, const QString& message, std::function<void()> closed) {
    auto* const dialog = new ConfirmDialog(title, message, QString(), parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (closed) connect(dialog, &QDialog::finished, dialog, std::move(closed));
    dialog->open();
    return dialog;
}

} // namespace zembrastel::ui
