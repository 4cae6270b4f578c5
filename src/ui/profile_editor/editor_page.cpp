#include "ui/profile_editor/editor_page.h"

#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"

#include <QScrollBar>

#include <array>

namespace zembrastel::ui {
namespace {

constexpr int columnGap = 32;
constexpr int twoColumnWidth = 800; // of the content

constexpr std::array allFields{
    EditorField::name,
    EditorField::server,
    EditorField::port,
    EditorField::username,
    EditorField::remoteFolder,
    EditorField::localFolder,
    EditorField::downloadContents};

} // namespace

EditorPage::EditorPage(const Profile& shown, bool isNew, QWidget* parent)
    : QScrollArea(parent), left(new ConnectionFields(shown)), right(new ContentFields(shown, isNew)) {
    auto* const page = new QWidget;
    page->setProperty("page", true);
    columns = new QBoxLayout(QBoxLayout::LeftToRight, page);
    // Equal widths, whatever the columns' own size hints are.
    for (QWidget* const column : {static_cast<QWidget*>(left), static_cast<QWidget*>(right)}) {
        QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        column->setSizePolicy(policy);
        columns->addWidget(column, 1);
    }
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setWidget(page);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, &EditorPage::fitMargins);
    fitMargins();
}

// The scroll bar lies in the margin, so that the fields keep their place when it appears.
void EditorPage::fitMargins() {
    const QScrollBar* const bar = verticalScrollBar();
    const int beside = bar->maximum() > bar->minimum() ? margin - bar->sizeHint().width() : margin;
    columns->setContentsMargins(readingMargins(margin, 4, beside, margin / 2));
}

void EditorPage::fitWidth(int width) {
    const bool isWide = width - 2 * margin >= scaledToText(twoColumnWidth);
    columns->setDirection(isWide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    columns->setSpacing(isWide ? columnGap : fieldGap);
}

void EditorPage::mark(EditorField bad) {
    for (const EditorField which : allFields) {
        QWidget* field = left->field(which);
        if (field == nullptr) field = right->field(which);
        if (field == nullptr) continue;
        setStyleProperty(*field, "bad", which == bad);
        if (which != bad) continue;
        field->setFocus();
        ensureWidgetVisible(field);
    }
}

} // namespace zembrastel::ui
