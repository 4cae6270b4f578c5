#include "ui/widgets/search_field.h"

#include "ui/theme/symbol_icon.h"

#include <QKeyEvent>
#include <QShortcut>

namespace zembrastel::ui {

SearchField::SearchField(const QString& prompt, QWidget* parent)
    : QLineEdit(parent), clearing(addAction(symbolIcon("xmark", &Colours::dim), QLineEdit::TrailingPosition)) {
    setProperty("search", true);
    setPlaceholderText(prompt);
    setAccessibleName(prompt);
    addAction(symbolIcon("magnifyingglass", &Colours::dim), QLineEdit::LeadingPosition);
    clearing->setText(tr("Clear"));
    clearing->setVisible(false);
    connect(clearing, &QAction::triggered, this, &QLineEdit::clear);
    connect(
        this, &QLineEdit::textChanged, this, [this](const QString& text) { clearing->setVisible(!text.isEmpty()); });
    auto* const find = new QShortcut(QKeySequence::Find, this);
    connect(find, &QShortcut::activated, this, [this] {
        setFocus(Qt::ShortcutFocusReason);
        selectAll();
    });
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
    } else if (event->key() == Qt::Key_Down && below != nullptr) {
        below->setFocus(Qt::TabFocusReason);
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

} // namespace zembrastel::ui
