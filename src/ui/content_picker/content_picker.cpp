#include "ui/content_picker/content_picker.h"

#include "ui/bridge/selection_summary.h"
#include "ui/content_picker/content_tree_model.h"
#include "ui/content_picker/content_view.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/search_field.h"

#include <QScreen>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize defaultSize(720, 600);
constexpr QSize smallestSize(560, 440);
constexpr int listInset = 5;
constexpr int searchWidth = 280;

} // namespace

RemoteDownloadPicker::RemoteDownloadPicker(
    MainContext& mainContext, Profile toBrowse, std::string knownPassword, DownloadSelection chosen, bool forSync,
    Apply applySelection, QWidget* parent)
    : QDialog(parent), context(mainContext), profile(std::move(toBrowse)), password(std::move(knownPassword)),
      syncMode(forSync), before(chosen), apply(std::move(applySelection)),
      rows(new ContentTreeModel(std::move(chosen), this)) {
    setWindowModality(Qt::WindowModal);
    QLayout* const head = makeHead();
    QLayout* const tools = makeTools();
    auto* const list = new ContentView(*rows);
    searchField->setList(*list);
    list->setAccessibleName(tr("Files and folders"));
    layOutSheet(*this, head, tools, makeListCard(list, listInset), makeFoot());
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(scaledToText(defaultSize).boundedTo(room));
    connect(rows, &QAbstractItemModel::modelReset, this, &RemoteDownloadPicker::followRows);
    connect(rows, &QAbstractItemModel::dataChanged, this, &RemoteDownloadPicker::followRows);
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
    searchField = new SearchField(tr("Search names"));
    searchField->setMaximumWidth(scaledToText(searchWidth));
    connect(searchField, &QLineEdit::textChanged, this, [this, all, none](const QString& text) {
        rows->search(text);
        for (auto* const each : {all, none}) each->setEnabled(text.isEmpty());
    });
    return makeSheetTools({all, none, again}, searchField);
}

QWidget* RemoteDownloadPicker::makeFoot() {
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &RemoteDownloadPicker::discard);
    auto* const use = new PushButton(syncMode ? tr("Use sync selection") : tr("Use selection"), ButtonKind::primary);
    connect(use, &QPushButton::clicked, this, &RemoteDownloadPicker::confirm);
    summary = makeLabel(QString(), TextStyle::body, Tone::dim);
    return makeSheetFoot({cancel, use}, summary);
}

std::optional<TickedKinds> RemoteDownloadPicker::kinds() const {
    return countTicked(selection(), [this](const std::string& path) { return rows->isListedFolder(path); });
}

bool RemoteDownloadPicker::hasNothingToDownload() const {
    if (syncMode || !tree) return false;
    const auto listed = tree->children().find("");
    return listed != tree->children().end() && listed->second->empty();
}

void RemoteDownloadPicker::confirm() {
    if (hasNothingToDownload()) {
        Q_EMIT nothingToDownload();
    } else {
        apply(selection(), kinds());
    }
    accept();
}

void RemoteDownloadPicker::followRows() {
    if (tree && tree->certificateRefused()) {
        Q_EMIT certificateRefused();
        discard();
        return;
    }
    showSummary();
}

void RemoteDownloadPicker::showSummary() {
    if (hasNothingToDownload()) {
        summary->setText(tr("There is nothing to download."));
        return;
    }
    summary->setText(
        selectionSummary(selection(), kinds(), syncMode ? SelectionScope::localFolder : SelectionScope::server));
}

// Escape and the window's own close button.
void RemoteDownloadPicker::reject() {
    if (selection() == before) return discard();
    ConfirmDialog::askToDiscard(this, tr("What you ticked here has not been applied."), [this] { discard(); });
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
