#include "ui/content_picker/content_picker.h"

#include "ui/bridge/selection_summary.h"
#include "ui/content_picker/content_tree_model.h"
#include "ui/content_picker/content_view.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/sheet_layout.h"

#include <QScreen>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize defaultSize(720, 600);
constexpr QSize smallestSize(560, 440);
constexpr int listInset = 5;

} // namespace

RemoteDownloadPicker::RemoteDownloadPicker(
    MainContext& mainContext, Profile toBrowse, std::string knownPassword, DownloadSelection chosen, bool forSync,
    Apply applySelection, QWidget* parent)
    : QDialog(parent), context(mainContext), profile(std::move(toBrowse)), password(std::move(knownPassword)),
      syncMode(forSync), apply(std::move(applySelection)), rows(new ContentTreeModel(std::move(chosen), this)) {
    setWindowModality(Qt::WindowModal);
    QLayout* const head = makeHead();
    QLayout* const tools = makeTools();
    auto* const list = new ContentView(*rows);
    list->setAccessibleName(tr("Files and folders"));
    layOutSheet(*this, head, tools, makeListCard(list, listInset), makeFoot());
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(scaledToText(defaultSize).boundedTo(room));
    connect(rows, &QAbstractItemModel::modelReset, this, &RemoteDownloadPicker::showSummary);
    connect(rows, &QAbstractItemModel::dataChanged, this, &RemoteDownloadPicker::showSummary);
    list->setFocus();
    refresh();
}

RemoteDownloadPicker::~RemoteDownloadPicker() { rows->leave(); }

const DownloadSelection& RemoteDownloadPicker::selection() const { return rows->selection(); }

QLayout* RemoteDownloadPicker::makeHead() {
    if (syncMode) {
        return makeSheetHead(
            *this, "checklist", tr("Choose what to synchronise"),
            {tr("Tick folders to sync all their contents, or expand folders to tick individual files. Unticked items "
                "stop syncing and keep their existing copies. Local-only items can be included too.")});
    }
    return makeSheetHead(
        *this, "checklist", tr("Choose what to download"),
        {tr("Nothing is selected automatically. Tick files or whole folders, or choose Select all. Expand a folder to "
            "pick individual items. This selection also sets what will be watched for uploads."),
         tr("Excluded items are dimmed. Existing files update only if the server copy is newer; replaced local files "
            "are backed up.")});
}

QLayout* RemoteDownloadPicker::makeTools() {
    auto* const all = new PushButton(tr("Select all"));
    connect(all, &QPushButton::clicked, this, [this] { rows->tickEverything(true); });
    auto* const none = new PushButton(tr("Select none"));
    connect(none, &QPushButton::clicked, this, [this] { rows->tickEverything(false); });
    auto* const again = new PushButton(tr("Refresh"));
    again->setSymbol("arrow.clockwise");
    connect(again, &QPushButton::clicked, this, &RemoteDownloadPicker::refresh);
    summary = makeLabel(QString(), TextStyle::body, Tone::dim);
    return makeSheetTools({all, none, again}, summary);
}

QWidget* RemoteDownloadPicker::makeFoot() {
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* const confirm =
        new PushButton(syncMode ? tr("Use sync selection") : tr("Use selection"), ButtonKind::primary);
    connect(confirm, &QPushButton::clicked, this, [this] {
        apply(selection());
        accept();
    });
    return makeSheetFoot({cancel, confirm});
}

void RemoteDownloadPicker::showSummary() {
    const auto isFolder = [this](const std::string& path) { return rows->isFolder(path); };
    summary->setText(selectionSummary(selection(), countTicked(selection(), isFolder)));
}

void RemoteDownloadPicker::refresh() {
    auto next = std::make_unique<RemoteBrowserModel>(context, profile, password, syncMode);
    rows->follow(*next);
    tree = std::move(next);
    tree->load("");
}

void RemoteDownloadPicker::done(int result) {
    tree->cancel();
    QDialog::done(result);
}

} // namespace zembrastel::ui
