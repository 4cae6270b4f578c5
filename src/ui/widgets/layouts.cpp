#include "ui/widgets/layouts.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

QLabel* makeBuddy(const QString& label, QWidget* field) {
    QLabel* const caption = makeLabel(label, TextStyle::fieldLabel);
    caption->setBuddy(field);
    return caption;
}

constexpr int margin = 24;
constexpr int gap = 12;

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

QLayout* makeSheetHead(
    QDialog& sheet, std::string_view symbol, const QString& title, const QStringList& explanation, TileKind kind) {
    sheet.setWindowTitle(title);
    sheet.setAccessibleName(title);
    sheet.setAccessibleDescription(explanation.join(u' '));
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(4);
    texts->addWidget(new WrapLabel(title, TextStyle::dialogTitle));
    for (const QString& part : explanation) texts->addWidget(new WrapLabel(part, TextStyle::explanation, Tone::dim));
    auto* const head = new QHBoxLayout;
    head->setSpacing(16);
    head->addWidget(new Tile(symbol, kind, 44), 0, Qt::AlignTop);
    head->addLayout(texts, 1);
    return head;
}

QLayout* makeSheetTools(std::initializer_list<PushButton*> buttons, QWidget* other) {
    auto* const tools = new QHBoxLayout;
    tools->setSpacing(8);
    for (PushButton* const button : buttons) tools->addWidget(button);
    tools->addStretch(1);
    tools->addWidget(other, qobject_cast<QLabel*>(other) == nullptr ? 100 : 0);
    return tools;
}

QWidget* makeListCard(QListView* list, int inset) {
    QFrame* const card = makeSurface(Surface::card);
    auto* const layout = new QVBoxLayout(card);
    // The scroll bar stands closer to the edge than the rows.
    layout->setContentsMargins(readingMargins(7, inset, 1, inset));
    layout->addWidget(list);
    return card;
}

QWidget* makeSheetFoot(std::initializer_list<PushButton*> buttons, QLabel* summary) {
    QFrame* const foot = makeSurface(Surface::footer);
    auto* const layout = new QHBoxLayout(foot);
    layout->setContentsMargins(margin, gap, margin, gap);
    layout->setSpacing(8);
    if (summary != nullptr) layout->addWidget(summary);
    layout->addStretch(1);
    for (PushButton* const button : buttons) layout->addWidget(button);
    return foot;
}

void layOutSheet(QDialog& sheet, QLayout* head, QLayout* tools, QWidget* card, QWidget* foot) {
    auto* const body = new QVBoxLayout;
    body->setContentsMargins(margin, 20, margin, 16);
    body->setSpacing(gap);
    body->addLayout(head);
    body->addLayout(tools);
    body->addWidget(card, 1);
    auto* const layout = new QVBoxLayout(&sheet);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(body, 1);
    layout->addWidget(foot);
    // Not earlier: Qt makes a button the default of the dialog that contains it at that moment.
    for (auto* const button : foot->findChildren<PushButton*>()) button->setDefault(button->isFilled());
}

QGridLayout* layOutBanner(QFrame& banner, QWidget* symbol, const QList<WrapLabel*>& labels, int rowGap) {
    labels.front()->setContentsMargins(0, 2, 0, 0); // in line with the symbol
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(4);
    for (auto* const label : labels) texts->addWidget(label);
    auto* const layout = new QGridLayout(&banner);
    layout->setContentsMargins(readingMargins(16, 12, 12, 12));
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(rowGap);
    layout->setColumnStretch(bannerTextColumn, 1);
    layout->addWidget(symbol, 0, 0, Qt::AlignTop);
    layout->addLayout(texts, 0, bannerTextColumn);
    return layout;
}

} // namespace zembrastel::ui
