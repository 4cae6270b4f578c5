// A field of a form with its label above it and, where there is one, a line of help below.
#pragma once

#include <QVBoxLayout>
#include <QWidget>

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

} // namespace zembrastel::ui
