// Layouts that dialogs share: labelled fields of a form, and of the sheets with a list the head with a symbol, the
// tools over the list, the list in its card, and the buttons at the foot.
//
// Main thread. Nothing here has an owner until it is laid out.
#pragma once

#include "ui/widgets/push_button.h"

#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QListView>
#include <QStringList>
#include <QVBoxLayout>
#include <QWidget>

#include <initializer_list>
#include <string_view>

namespace zembrastel::ui {

inline constexpr int fieldGap = 12; // between one field and the next
inline constexpr int labelGap = 4;  // between a label and its field

[[nodiscard]] QVBoxLayout* makeField(const QString& label, QWidget* field, QWidget* help = nullptr);

// The same for a field that has a button beside it.
[[nodiscard]] QVBoxLayout* makeField(const QString& label, QWidget* field, QLayout* row);

// A layout without margins, with this gap between its items.
template <class Layout>
[[nodiscard]] Layout* makeLayout(int spacing, QWidget* owner = nullptr) {
    auto* const layout = owner == nullptr ? new Layout : new Layout(owner);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

// Title and explanation, which also become the sheet's own for the window manager and screen readers.
[[nodiscard]] QLayout* makeSheetHead(
    QDialog& sheet, std::string_view symbol, const QString& title, const QStringList& explanation);

// Buttons, and at the other end a text.
[[nodiscard]] QLayout* makeSheetTools(std::initializer_list<PushButton*> buttons, QLabel* summary);

// `inset` is what the list keeps free above and below.
[[nodiscard]] QWidget* makeListCard(QListView* list, int inset);

[[nodiscard]] QWidget* makeSheetFoot(std::initializer_list<PushButton*> buttons);

// The filled button at the foot becomes what Enter presses.
void layOutSheet(QDialog& sheet, QLayout* head, QLayout* tools, QWidget* card, QWidget* foot);

} // namespace zembrastel::ui
