// What the sheets with a list have in common: a head with a symbol, the tools over the list, the list in its card, and
// the buttons at the foot.
//
// Main thread. Nothing here has an owner until it is laid out.
#pragma once

#include "ui/widgets/push_button.h"

#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QListView>
#include <QStringList>

#include <initializer_list>
#include <string_view>

namespace zembrastel::ui {

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
