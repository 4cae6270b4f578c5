#include "ui/main_window/sidebar.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/wrap_label.h"

#include <QAction>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zembrastel::ui {
namespace {

// The space that a link keeps beside its text for its focus ring; the other texts keep it too, so that they align.
constexpr int focusRingSpace = 3;

} // namespace

WindowMenu::WindowMenu(QWidget* parent) : PushButton("ellipsis", tr("Menu"), parent), entries(new QMenu(this)) {
    connect(this, &QPushButton::clicked, this, &WindowMenu::open);
}

void WindowMenu::add(const QString& text, std::function<void()> chosen) {
    connect(entries->addAction(text), &QAction::triggered, this, [chosen = std::move(chosen)] { chosen(); });
}

void WindowMenu::addSwitch(const QString& text, std::function<bool()> isOn, std::function<void(bool wanted)> turned) {
    QAction* const action = entries->addAction(text);
    action->setCheckable(true);
    connect(entries, &QMenu::aboutToShow, action, [action, isOn = std::move(isOn)] { action->setChecked(isOn()); });
    connect(action, &QAction::triggered, this, [turned = std::move(turned)](bool wanted) { turned(wanted); });
}

// Not set as the button's menu: the style would widen the button and draw an arrow.
void WindowMenu::open() {
    const QPoint below = isRightToLeft() ? rect().bottomRight() : rect().bottomLeft();
    entries->popup(mapToGlobal(below + QPoint(0, 2)));
}

Sidebar::Sidebar(ModelBridge& bridge, QWidget* parent)
    : QFrame(parent), profiles(new ProfileListView(bridge)), more(new WindowMenu),
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
    layout->setContentsMargins(readingMargins(20 - focusRingSpace, 12, 20, 16));
    layout->setSpacing(8);
    auto* const advice = new WrapLabel(
        tr("Keep Zembrastel running to sync. Closing this window keeps it in the menu bar; quitting stops transfers."),
        TextStyle::small, Tone::dim);
    advice->setContentsMargins(readingMargins(focusRingSpace, 0, 0, 0));
    layout->addWidget(advice);
    layout->addWidget(quit, 0, Qt::AlignLeft);
    quit->hide();
    return footer;
}

} // namespace zembrastel::ui
