#include "ui/main_window/sidebar.h"

#include "ui/theme/reading_direction.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/wrap_label.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

// What a link leaves free beside its text for its focus ring: the texts stand in one line.
constexpr int ringRoom = 3;

} // namespace

Sidebar::Sidebar(ModelBridge& bridge, QWidget* parent)
    : QFrame(parent), profiles(new ProfileList(bridge)), more(new WindowMenu),
      add(new PushButton("plus", tr("New Sync Profile…"), nullptr)),
      quit(new PushButton(tr("Quit Zembrastel"), ButtonKind::link)) {
    setSurface(*this, Surface::side);
    auto* const column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(profiles, 1);
    column->addWidget(makeFooter());
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(column, 1);
    layout->addWidget(makeDivider(Qt::Vertical));
    add->setIconSize({16, 16});
    setNarrow(false);
}

void Sidebar::setNarrow(bool narrow) { setFixedWidth(scaledToText(narrow ? 248 : 264)); }

QWidget* Sidebar::makeHeader() {
    auto* const header = new QWidget;
    auto* const layout = new QHBoxLayout(header);
    layout->setContentsMargins(readingMargins(20, 18, 14, 10));
    layout->addWidget(makeCaption(tr("SYNC PROFILES")), 1);
    layout->addWidget(more);
    layout->addWidget(add);
    return header;
}

QWidget* Sidebar::makeFooter() {
    QFrame* const footer = makeSurface(Surface::footer);
    auto* const layout = new QVBoxLayout(footer);
    layout->setContentsMargins(readingMargins(20 - ringRoom, 12, 20, 16));
    layout->setSpacing(8);
    auto* const advice = new WrapLabel(
        tr("Keep Zembrastel running to sync. Closing this window keeps it in the menu bar; quitting stops transfers."),
        TextStyle::small, Tone::dim);
    advice->setContentsMargins(readingMargins(ringRoom, 0, 0, 0));
    layout->addWidget(advice);
    layout->addWidget(quit, 0, Qt::AlignLeft);
    quit->hide();
    return footer;
}

} // namespace zembrastel::ui
