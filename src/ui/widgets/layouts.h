// Layouts shared by dialogs and banners: labelled form fields; the parts of a sheet with a list: head with symbol,
// tools above the list, list in its card, buttons at the foot; and a banner: symbol, heading and texts.
//
// Main thread. The parts have no owner until they are added to a layout.
#pragma once

#include "ui/widgets/push_button.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QDialog>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLayout>
#include <QList>
#include <QListView>
#include <QStringList>
#include <QVBoxLayout>
#include <QWidget>

#include <initializer_list>
#include <string_view>

namespace zembrastel::ui {

inline constexpr int fieldGap = 12; // between two fields
inline constexpr int labelGap = 4;  // between a label and its field

[[nodiscard]] QVBoxLayout* makeField(const QString& label, QWidget* field, QWidget* help = nullptr);

// As above, for a field with a button beside it.
[[nodiscard]] QVBoxLayout* makeField(const QString& label, QWidget* field, QLayout* row);

// A layout without margins, with this gap between its items.
template <class Layout>
[[nodiscard]] Layout* makeLayout(int spacing, QWidget* owner = nullptr) {
    auto* const layout = owner == nullptr ? new Layout : new Layout(owner);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

// Title and explanation. They also become the sheet's window title and accessible text.
[[nodiscard]] QLayout* makeSheetHead(
    QDialog& sheet, std::string_view symbol, const QString& title, const QStringList& explanation,
    TileKind kind = TileKind::soft);

// Buttons on one side, a text or a search field on the other.
[[nodiscard]] QLayout* makeSheetTools(std::initializer_list<PushButton*> buttons, QWidget* other);

// `inset` is the space above and below the list.
[[nodiscard]] QWidget* makeListCard(QListView* list, int inset);

// Buttons at the end, a text at the start.
[[nodiscard]] QWidget* makeSheetFoot(std::initializer_list<PushButton*> buttons, QLabel* summary = nullptr);

// The filled button at the foot becomes the default button.
void layOutSheet(QDialog& sheet, QLayout* head, QLayout* tools, QWidget* card, QWidget* foot);

inline constexpr int bannerTextColumn = 1;

// A symbol, and beside it a heading, the first label, and texts. The caller adds to the rows below: `rowGap` is the
// space above each of them.
[[nodiscard]] QGridLayout* layOutBanner(
    QFrame& banner, QWidget* symbol, const QList<WrapLabel*>& labels, int rowGap = 12);

} // namespace zembrastel::ui
