#include "ui/main_window/refused_files_banner.h"

#include "app/diagnosis/failure_catalogue.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/symbol_widgets.h"
#include "ui/widgets/wrap_label.h"

#include <QHBoxLayout>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr std::size_t maxRows = 5;

} // namespace

RefusedFilesBanner::RefusedFilesBanner(QWidget* parent)
    : QFrame(parent), heading(new WrapLabel(QString(), TextStyle::strong)), text(new WrapLabel(QString())),
      rows(new QVBoxLayout) {
    setSurface(*this, Surface::warningBanner);
    rows->setSpacing(8);
    auto* const triangle = new SymbolView("exclamationmark.triangle", &Colours::warn);
    layOutBanner(*this, triangle, {heading, text}, 8)->addLayout(rows, 1, bannerTextColumn);
}

void RefusedFilesBanner::setFiles(const ProfileStatus& status, const Profile& owner) {
    const bool othersWait = status.pending > static_cast<std::int64_t>(status.refused.size());
    text->setWrappedText(
        othersWait ? tr("They are tried again when they change.")
                   : tr("All other files are up to date. They are tried again when they change."));
    if (shown == status.refused && profile.id == owner.id) return;
    shown = status.refused;
    profile = owner;
    showsAll = false;
    const auto count = static_cast<int>(shown.size());
    heading->setWrappedText(tr("%n files cannot be uploaded.", nullptr, count));
    setAccessibleName(heading->text() + u' ' + text->text());
    showRows();
}

void RefusedFilesBanner::showRows() {
    while (QLayoutItem* const item = rows->takeAt(0)) {
        if (item->widget() != nullptr) item->widget()->deleteLater();
        delete item;
    }
    for (std::size_t index = 0; index < shown.size(); ++index) {
        if (index == maxRows && !showsAll) {
            auto* const more =
                new PushButton(tr("and %n more", nullptr, static_cast<int>(shown.size() - maxRows)), ButtonKind::link);
            connect(more, &QPushButton::clicked, this, [this] {
                showsAll = true;
                showRows();
            });
            rows->addWidget(more, 0, Qt::AlignLeft);
            return;
        }
        rows->addWidget(makeDivider(Qt::Horizontal));
        rows->addWidget(makeRow(shown[index]));
    }
}

QWidget* RefusedFilesBanner::makeRow(const Failure& failure) {
    auto* const row = new QWidget;
    const QString path = onOneLine(toQString(failure.path));
    auto* const name = new ElideLabel;
    name->setFont(fontOf(TextStyle::strong));
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    name->setWholeText(path);
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addWidget(name);
    texts->addWidget(new WrapLabel(engineText(explain(failure, profile).heading.text()), TextStyle::small, Tone::warn));
    auto* const retry = new PushButton(tr("Retry"));
    retry->setAccessibleName(tr("Retry %1").arg(path));
    connect(retry, &QPushButton::clicked, this, [this, wanted = toQString(failure.path)] {
        Q_EMIT retryRequested(wanted);
    });
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    layout->addLayout(texts, 1);
    layout->addWidget(retry, 0, Qt::AlignVCenter);
    return row;
}

} // namespace zembrastel::ui
