#include "ui/backups/backups_sheet.h"

#include "ui/backups/backup_list.h"
#include "ui/theme/local_time.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/layouts.h"

#include <QDesktopServices>
#include <QScreen>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize defaultSize(720, 520);
constexpr QSize smallestSize(560, 400);
constexpr int listInset = 3;

} // namespace

QString backupsSummary(const BackupTotals& totals) {
    if (totals.versions == 0) return BackupsSheet::tr("No versions");
    const auto count = [](std::size_t number) { return static_cast<int>(number); };
    const QString files = BackupsSheet::tr("%n files", nullptr, count(totals.files));
    const QString versions = BackupsSheet::tr("%n versions", nullptr, count(totals.versions));
    return BackupsSheet::tr("%1, %2, %3").arg(files, versions, sizeText(totals.bytes));
}

BackupsSheet::BackupsSheet(MainContext& mainContext, Profile shown, QWidget* parent)
    : QDialog(parent), profile(std::move(shown)), backups(mainContext, profile.localFolder),
      rows(new BackupListModel(this)) {
    setWindowModality(Qt::WindowModal);
    QLayout* const head = makeHead();
    QLayout* const tools = makeTools();
    list = new BackupListView(*rows);
    list->setAccessibleName(tr("Kept versions"));
    list->setPlaceholder(tr("Looking for backups…"), QString());
    layOutSheet(*this, head, tools, makeListCard(list, listInset), makeFoot());
    closeButton->setDefault(true); // takes effect only once the button is inside its dialog
    addMessage();
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(scaledToText(defaultSize).boundedTo(room));
    connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this, &BackupsSheet::enableButtons);
    connect(list, &BackupListView::openRequested, this, &BackupsSheet::openChosen);
    enableButtons();
    list->setFocus();
    refresh();
}

QLayout* BackupsSheet::makeHead() {
    return makeSheetHead(
        *this, "clock", tr("Backups"),
        {tr("Whenever a local file of %1 is replaced, the old version is kept in .zembrastel-backups inside your local "
            "folder. Nothing is ever removed from there without you.")
             .arg(toQString(profile.name))});
}

QLayout* BackupsSheet::makeTools() {
    openButton = new PushButton(tr("Open"));
    connect(openButton, &QPushButton::clicked, this, &BackupsSheet::openChosen);
    restoreButton = new PushButton(tr("Restore…"));
    connect(restoreButton, &QPushButton::clicked, this, &BackupsSheet::askToRestore);
    summary = makeLabel(QString(), TextStyle::body, Tone::dim);
    return makeSheetTools({openButton, restoreButton}, summary);
}

QWidget* BackupsSheet::makeFoot() {
    closeButton = new PushButton(tr("Close"));
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
    return makeSheetFoot({closeButton});
}

void BackupsSheet::addMessage() {
    message = new MessageStrip;
    layout()->itemAt(0)->layout()->addWidget(message);
}

void BackupsSheet::refresh() {
    backups.list([this](const BackupResult<std::vector<Backup>>& result) { show(result); });
}

void BackupsSheet::show(const BackupResult<std::vector<Backup>>& result) {
    const auto before = chosen();
    if (result.failure.empty()) {
        list->setPlaceholder(
            tr("No backups yet"), tr("Versions appear here when you download newer server files over local ones."));
    } else {
        list->setPlaceholder(tr("The backups could not be read"), engineText(result.failure));
    }
    rows->show(result.value);
    summary->setText(result.failure.empty() ? backupsSummary(totalsOf(result.value)) : QString());
    choose(before);
    Q_EMIT listed();
}

void BackupsSheet::choose(const std::optional<Backup>& wanted) {
    const auto& all = rows->backups();
    const auto found = wanted ? std::ranges::find(all, *wanted) : all.begin();
    if (!all.empty()) {
        const auto row = found == all.end() ? 0 : static_cast<int>(found - all.begin());
        list->setCurrentIndex(rows->index(row));
    }
    enableButtons();
}

std::optional<Backup> BackupsSheet::chosen() const {
    const QModelIndex index = list->currentIndex();
    return index.isValid() ? std::optional(rows->backup(index)) : std::nullopt;
}

void BackupsSheet::enableButtons() {
    const bool any = list->currentIndex().isValid();
    openButton->setEnabled(any);
    restoreButton->setEnabled(any && !restoring);
}

void BackupsSheet::openChosen() {
    const auto backup = chosen();
    if (!backup) return;
    backups.locate(*backup, [this](const BackupResult<std::filesystem::path>& place) {
        if (!place.failure.empty()) {
            message->showFailure(engineText(place.failure));
        } else if (const QString file = toQString(place.value.string());
                   !QDesktopServices::openUrl(QUrl::fromLocalFile(file))) {
            message->showFailure(tr("No program could open the file. It is here: %1").arg(file));
        } else {
            message->clear();
        }
    });
}

void BackupsSheet::askToRestore() {
    const auto backup = chosen();
    if (!backup || restoring) return;
    const bool synced = profile.includesInSync(backup->path) && !profile.excludes(backup->path);
    ConfirmDialog::ask(
        this, tr("Restore this version?"),
        tr("This restores the version of %1 that was replaced on %2. The current version is kept as a backup. %3")
            .arg(
                toQString(backup->path), dateWithMonthName(localTime(backup->kept), QLocale()),
                synced
                    ? tr("While the profile is watched, the restored file is uploaded a few seconds later; otherwise "
                         "when you next start watching.")
                    : tr("The profile does not sync this file, so the server's copy stays as it is.")),
        tr("Restore"), [this, backup = *backup] { restore(backup); });
}

void BackupsSheet::restore(const Backup& backup) {
    restoring = true;
    restoreButton->setBusy(true);
    message->clear();
    backups.restore(backup, [this, path = toQString(backup.path)](const BackupResult<Restored>& result) {
        restoring = false;
        restoreButton->setBusy(false);
        if (!result.failure.empty()) {
            message->showFailure(engineText(result.failure));
        } else if (result.value.replaced) {
            message->showSuccess(tr("%1 was restored. The version that it replaced is a backup now.").arg(path));
        } else {
            message->showSuccess(tr("%1 was restored.").arg(path));
        }
        refresh();
    });
}

} // namespace zembrastel::ui
