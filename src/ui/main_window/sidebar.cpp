#include "ui/main_window/sidebar.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/wrap_label.h"

#include <QAction>
#include <QEvent>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace zembrastel::ui {
namespace {

// The space that a link keeps beside its text for its focus ring; the other texts keep it too, so that they align.
constexpr int focusRingSpace = 3;

} // namespace

WindowMenu::WindowMenu(QWidget* parent) : PushButton("ellipsis", tr("Program menu"), parent), entries(new QMenu(this)) {
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

Sidebar::Sidebar(ModelBridge& modelBridge, QWidget* parent)
    : QFrame(parent), bridge(modelBridge), profiles(new ProfileListView(modelBridge)), more(new WindowMenu),
      add(new PushButton("plus", tr("New Sync Profile…"), nullptr)),
      quit(new PushButton(tr("Quit Zembrastel"), ButtonKind::link)) {
    setSurface(*this, Surface::side);
    auto* const column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(makeFilter());
    column->addWidget(profiles, 1);
    column->addWidget(makeFooter());
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(column, 1);
    layout->addWidget(makeDivider(Qt::Vertical));
    add->setIconSize({16, 16});
    fitWindow(scaledToText(narrowBelow));
    profiles->verticalScrollBar()->installEventFilter(this);
    connect(&bridge, &ModelBridge::profilesChanged, this, &Sidebar::offerFilter);
    offerFilter();
}

// In a very wide window there is room for long names.
void Sidebar::fitWindow(int windowWidth) {
    const bool narrow = windowWidth < scaledToText(narrowBelow);
    const int usual = scaledToText(narrow ? 248 : 264);
    setFixedWidth(std::clamp(windowWidth / 6, usual, scaledToText(400)));
}

QWidget* Sidebar::makeFilter() {
    filterRow = new QWidget;
    filter = new SearchField(tr("Filter profiles"));
    filter->setList(*profiles);
    connect(filter, &QLineEdit::textChanged, this, &Sidebar::filterProfiles);
    noMatch = new WrapLabel({}, TextStyle::body, Tone::dim);
    noMatch->setContentsMargins(readingMargins(focusRingSpace + 9, 4, 0, 0));
    noMatch->hide();
    auto* const layout = new QVBoxLayout(filterRow);
    layout->setSpacing(12);
    layout->addWidget(filter);
    layout->addWidget(noMatch);
    fitFilter();
    return filterRow;
}

// Few profiles need no filter.
void Sidebar::offerFilter() {
    constexpr std::size_t manyProfiles = 10;
    const bool offered = bridge.model().profiles().size() >= manyProfiles;
    if (!offered) filter->clear();
    filterRow->setVisible(offered);
    filterProfiles();
}

void Sidebar::filterProfiles() {
    profiles->setFilter(filter->text());
    noMatch->setWrappedText(tr("No profile matches “%1”.").arg(filter->text()));
    noMatch->setVisible(profiles->isEmpty() && !filter->text().isEmpty());
}

// The field ends where the rows end.
void Sidebar::fitFilter() {
    const bool scrolls = profiles->verticalScrollBar()->isVisible();
    filterRow->layout()->setContentsMargins(readingMargins(8, 0, scrolls ? 10 : 8, 8));
}

bool Sidebar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide) fitFilter();
    return QFrame::eventFilter(watched, event);
}

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
