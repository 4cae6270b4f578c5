#include "ui/widgets/form_field.h"

#include "ui/theme/text_style.h"

namespace zembrastel::ui {
namespace {

QLabel* makeBuddy(const QString& label, QWidget* field) {
    QLabel* const caption = makeLabel(label, TextStyle::fieldLabel);
    caption->setBuddy(field);
    return caption;
}

} // namespace

QVBoxLayout* makeField(const QString& label, QWidget* field, QWidget* help) {
    auto* const layout = makeLayout<QVBoxLayout>(labelGap);
    layout->addWidget(makeBuddy(label, field));
    layout->addWidget(field);
    if (help != nullptr) layout->addWidget(help);
    return layout;
}

QVBoxLayout* makeField(const QString& label, QWidget* field, QLayout* row) {
    auto* const layout = makeLayout<QVBoxLayout>(labelGap);
    layout->addWidget(makeBuddy(label, field));
    layout->addLayout(row);
    return layout;
}

} // namespace zembrastel::ui
