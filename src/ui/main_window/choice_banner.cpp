#include "ui/main_window/choice_banner.h"

#include "app/progress_text.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/symbol_widgets.h"

#include <QAccessible>
#include <QShortcut>

namespace zembrastel::ui {
namespace {

int count(std::uint64_t files) { return static_cast<int>(files); }

// What the server has of the site.
QString headingOf(const FirstComparison& found) {
    const int all = count(found.localFiles);
    const bool isCompared = found.isCompared();
    if (found.alikeFiles() == 0) return ChoiceBanner::tr("None of your files is the same on the server.");
    if (all == 1) {
        return isCompared ? ChoiceBanner::tr("Your file is the same on the server.")
                          : ChoiceBanner::tr("Your file is on the server already.");
    }
    if (found.otherFiles() == 0) {
        return isCompared ? ChoiceBanner::tr("All %n files are the same on the server.", nullptr, all)
                          : ChoiceBanner::tr("All %n files are on the server already.", nullptr, all);
    }
    const QString some = QString::number(found.alikeFiles());
    return isCompared ? ChoiceBanner::tr("%1 of %n files are the same on the server.", nullptr, all).arg(some)
                      : ChoiceBanner::tr("%1 of %n files are on the server already.", nullptr, all).arg(some);
}

// How far that is known.
QString explanationOf(const FirstComparison& found) {
    const QString size = sizeText(found.bytesToCompare());
    if (found.alikeFiles() == 0) return ChoiceBanner::tr("Their contents were compared.");
    if (found.isCompared()) return ChoiceBanner::tr("Their contents match your local files.");
    if (found.same.empty() && found.different.files.empty()) {
        return ChoiceBanner::tr("Their names and sizes match your local files. Comparing contents downloads %1.")
            .arg(size);
    }
    return ChoiceBanner::tr("Their names and sizes match your local files. Comparing the other contents downloads %1.")
        .arg(size);
}

} // namespace

ChoiceText choiceText(const FirstComparison& found) {
    ChoiceText all{.heading = headingOf(found), .text = explanationOf(found), .compares = !found.isCompared()};
    const int replaced = count(found.otherSizes + found.different.files.size());
    if (replaced > 0) {
        all.text += u' ';
        all.text += ChoiceBanner::tr("Uploading the others replaces %n files on the server.", nullptr, replaced);
    }
    if (found.alikeFiles() > 0) {
        all.adopt = found.otherFiles() == 0
                        ? ChoiceBanner::tr("Start watching")
                        : ChoiceBanner::tr("Upload the other %n", nullptr, count(found.otherFiles()));
    }
    if (found.otherFiles() > 0 || !found.isCompared()) {
        all.sendAll = ChoiceBanner::tr("Upload all %n", nullptr, count(found.localFiles));
    }
    return all;
}

ChoiceBanner::ChoiceBanner(QWidget* parent)
    : QFrame(parent), heading(new WrapLabel(QString(), TextStyle::strong)), text(new WrapLabel(QString())),
      adopt(new PushButton(QString(), ButtonKind::primary)), compare(new PushButton(tr("Compare contents first"))),
      sendAll(new PushButton(QString())), stop(new PushButton(tr("Stop comparing"))),
      actions(new ButtonFlow({adopt, compare, sendAll})) {
    setSurface(*this, Surface::infoBanner);
    auto* const layout = layOutBanner(*this, new SymbolView("server"), {heading, text});
    layout->addWidget(stop, 0, bannerTextColumn + 1);
    layout->addWidget(actions, 1, bannerTextColumn, 1, 2);
    connect(adopt, &QPushButton::clicked, this, [this] { Q_EMIT adoptRequested(Adoption::alike); });
    connect(sendAll, &QPushButton::clicked, this, [this] { Q_EMIT adoptRequested(Adoption::nothing); });
    connect(compare, &QPushButton::clicked, this, &ChoiceBanner::compareRequested);
    connect(stop, &QPushButton::clicked, this, &ChoiceBanner::stopRequested);
    // Only while the button can be seen.
    connect(new QShortcut(Qt::Key_Escape, stop), &QShortcut::activated, this, &ChoiceBanner::stopRequested);
    hide();
}

void ChoiceBanner::setChoice(const FirstComparison* found, bool comparing) {
    setVisible(found != nullptr);
    if (found == nullptr) {
        announced.clear();
        return;
    }
    actions->setVisible(!comparing);
    stop->setVisible(comparing);
    if (comparing) {
        showComparing(*found);
    } else {
        showChoice(*found);
    }
}

void ChoiceBanner::showChoice(const FirstComparison& found) {
    const ChoiceText shown = choiceText(found);
    heading->setWrappedText(shown.heading);
    text->setWrappedText(shown.text);
    adopt->setLabel(shown.adopt);
    adopt->setVisible(!shown.adopt.isEmpty());
    compare->setVisible(shown.compares);
    sendAll->setLabel(shown.sendAll);
    sendAll->setVisible(!shown.sendAll.isEmpty());
    sendAll->setKind(shown.adopt.isEmpty() ? ButtonKind::primary : ButtonKind::outlined);
    announce();
}

void ChoiceBanner::showComparing(const FirstComparison& found) {
    const auto different = found.different.files.size();
    const int all = count(found.alikeFiles() + different);
    heading->setWrappedText(tr("Comparing %n files with the server", nullptr, all));
    const QString results =
        different == 0 ? tr("None differs so far. Nothing is uploaded before you decide.")
                       : tr("%n differ so far. Nothing is uploaded before you decide.", nullptr, count(different));
    text->setWrappedText(results);
}

// A screen reader reads a new choice out. The focus stays.
void ChoiceBanner::announce() {
    const QString name = heading->text() + u' ' + text->text();
    setAccessibleName(name);
    if (name == announced) return;
    announced = name;
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace zembrastel::ui
