#include "ui/profile_editor/content_fields.h"

#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/switch.h"
#include "ui/widgets/wrap_label.h"

#include <QFileDialog>
#include <QHBoxLayout>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int buttonGap = 8;
constexpr int visibleRules = 4; // lines of the exclusions; longer texts scroll

WrapLabel* makeHelp(const QString& text) { return new WrapLabel(text, TextStyle::small, Tone::dim); }

// A label with a note, and the switch at its end.
QHBoxLayout* makeOption(Switch* option, const QString& label, const QString& note) {
    auto* const texts = makeLayout<QVBoxLayout>(2);
    texts->setContentsMargins(0, 2, 0, 0);
    auto* const caption = new WrapLabel(label, TextStyle::strong);
    caption->setBuddy(option);
    texts->addWidget(caption);
    texts->addWidget(makeHelp(note));
    option->setAccessibleDescription(note);
    auto* const row = makeLayout<QHBoxLayout>(24);
    row->addLayout(texts, 1);
    row->addWidget(option, 0, Qt::AlignTop);
    return row;
}

} // namespace

ContentFields::ContentFields(const Profile& shown, bool isNew, QWidget* parent) : QWidget(parent) {
    auto* const column = makeLayout<QVBoxLayout>(fieldGap, this);
    addLocalFolder(*column, shown);
    addExclusions(*column, shown);
    addSyncContents(*column, isNew);
    column->addWidget(makeDivider(Qt::Horizontal));
    addOptions(*column);
    addComparison(*column, shown);
    column->addStretch(1);
    followOptions(shown);
    showAdvanced(false);
}

void ContentFields::addLocalFolder(QVBoxLayout& column, const Profile& profile) {
    localFolderField = new QLineEdit(toQString(profile.localFolder), this);
    connect(localFolderField, &QLineEdit::textEdited, this, &ContentFields::edited);
    auto* const choose = new PushButton(tr("Choose a folder…"), ButtonKind::outlined, this);
    choose->setAccessibleName(tr("Choose a local folder"));
    connect(choose, &QPushButton::clicked, this, &ContentFields::chooseFolder);
    auto* const row = makeLayout<QHBoxLayout>(buttonGap);
    row->addWidget(localFolderField, 1);
    row->addWidget(choose);
    column.addLayout(makeField(tr("Local folder"), localFolderField, row));
}

void ContentFields::addExclusions(QVBoxLayout& column, const Profile& profile) {
    auto* const part = makeLayout<QVBoxLayout>(labelGap);
    disclosure = new PushButton(tr("Excluded files and folders"), ButtonKind::link, this);
    connect(disclosure, &QPushButton::clicked, this, [this] { showAdvanced(!advanced->isVisibleTo(this)); });
    part->addWidget(disclosure, 0, Qt::AlignLeft);
    advanced = new QWidget(this);
    auto* const rules = makeLayout<QVBoxLayout>(labelGap, advanced);
    exclusionsField = new QPlainTextEdit(toQString(profile.exclusions.text()));
    exclusionsField->setAccessibleName(tr("Excluded files and folders"));
    exclusionsField->setTabChangesFocus(true);
    exclusionsField->setFixedHeight(exclusionsField->fontMetrics().lineSpacing() * visibleRules + 12);
    connect(exclusionsField, &QPlainTextEdit::textChanged, this, &ContentFields::edited);
    rules->addWidget(exclusionsField);
    rules->addWidget(makeHelp(
        tr("One name or wildcard per line. Applies to uploads and initial downloads. Symbolic links are always "
           "skipped.")));
    part->addWidget(advanced);
    column.addLayout(part);
}

void ContentFields::addSyncContents(QVBoxLayout& column, bool isNew) {
    auto* const texts = makeLayout<QVBoxLayout>(2);
    texts->addWidget(makeLabel(tr("Sync contents"), TextStyle::fieldLabel));
    syncContents = new WrapLabel({});
    texts->addWidget(syncContents);
    auto* const choose =
        new PushButton(isNew ? tr("Choose files and folders…") : tr("Edit sync contents…"), ButtonKind::outlined, this);
    connect(choose, &QPushButton::clicked, this, &ContentFields::syncContentsRequested);
    auto* const row = makeLayout<QHBoxLayout>(buttonGap);
    row->addLayout(texts, 1);
    row->addWidget(choose, 0, Qt::AlignTop);
    auto* const part = makeLayout<QVBoxLayout>(labelGap);
    part->addLayout(row);
    part->addWidget(makeHelp(
        tr("This list controls uploads, downloads and server checks. Adding items resynchronises them on save. "
           "Removing items keeps both copies and stops syncing them. Select none to pause the profile.")));
    column.addLayout(part);
}

void ContentFields::addOptions(QVBoxLayout& column) {
    const QString start = tr("Start watching this folder");
    startSwitch = new Switch(start, this);
    // toggled() rather than clicked(), because screen readers toggle without a click.
    connect(startSwitch, &Switch::toggled, this, &ContentFields::chooseStart);
    column.addLayout(makeOption(startSwitch, start, tr("New and changed local files upload after watching starts.")));

    const QString download = tr("Download server files to the local folder first");
    downloadSwitch = new Switch(download, this);
    connect(downloadSwitch, &Switch::toggled, this, &ContentFields::chooseDownload);
    column.addLayout(makeOption(
        downloadSwitch, download,
        tr("Downloads selected items that are missing locally or newer on the server. Older local versions are backed "
           "up before replacement. Watching starts afterwards for your selected sync contents.")));

    downloadPart = new QWidget(this);
    auto* const part = makeLayout<QVBoxLayout>(labelGap, downloadPart);
    downloadButton = new PushButton(tr("Choose download contents…"));
    connect(downloadButton, &QPushButton::clicked, this, &ContentFields::downloadContentsRequested);
    part->addWidget(downloadButton, 0, Qt::AlignLeft);
    downloadContents = makeHelp({});
    part->addWidget(downloadContents);
    column.addWidget(downloadPart);
}

void ContentFields::addComparison(QVBoxLayout& column, const Profile& profile) {
    const QString compare = tr("Compare contents");
    compareSwitch = new Switch(compare, this);
    compareSwitch->setChecked(profile.compareContents.on);
    connect(compareSwitch, &Switch::toggled, this, &ContentFields::edited);
    column.addLayout(makeOption(
        compareSwitch, compare,
        tr("Files that have a new date but the content that was uploaded before are not uploaded again.")));
}

void ContentFields::showAdvanced(bool shown) {
    advanced->setVisible(shown);
    disclosure->setSymbol(shown ? "chevron.down" : "chevron.right");
    disclosure->setAccessibleDescription(shown ? tr("Expanded") : tr("Collapsed"));
    if (shown) Q_EMIT advancedShown();
}

void ContentFields::chooseFolder() {
    auto* const chooser = new QFileDialog(this, tr("Choose the local folder to watch"), localFolderField->text());
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setFileMode(QFileDialog::Directory);
    chooser->setOption(QFileDialog::ShowDirsOnly);
    connect(chooser, &QFileDialog::fileSelected, this, [this](const QString& folder) {
        localFolderField->setText(folder);
        Q_EMIT edited();
    });
    chooser->open();
}

// The download happens when the profile starts, so it is off while the start is, and comes back with it.
void ContentFields::chooseStart(bool on) {
    if (following) return;
    startChosen = true;
    if (!on && downloadFirst()) {
        downloadWaits = true;
        downloadSwitch->setChecked(false);
    } else if (on && std::exchange(downloadWaits, false)) {
        downloadSwitch->setChecked(true);
    }
    Q_EMIT edited();
    Q_EMIT optionsChanged();
}

// Choosing the download also turns the start on.
void ContentFields::chooseDownload(bool on) {
    if (following) return;
    downloadChosen = true;
    if (on) {
        startChosen = true;
        downloadWaits = false;
        startSwitch->setChecked(true);
    }
    downloadPart->setVisible(on);
    Q_EMIT edited();
    Q_EMIT optionsChanged();
}

void ContentFields::writeTo(Profile& draft) const {
    draft.localFolder = localFolderField->text().toStdString();
    draft.exclusions = Exclusions(exclusionsField->toPlainText().toStdString());
    draft.enabled = startOnSave();
    draft.needsDownload = downloadFirst();
    draft.compareContents.on = compareSwitch->isChecked();
}

void ContentFields::showSelections(const QString& syncContentsText, const QString& downloadContentsText) {
    syncContents->setWrappedText(syncContentsText);
    downloadContents->setWrappedText(downloadContentsText);
}

bool ContentFields::startOnSave() const { return startSwitch->isChecked(); }

bool ContentFields::downloadFirst() const { return downloadSwitch->isChecked(); }

void ContentFields::switchDownloadOff() { downloadSwitch->setChecked(false); }

void ContentFields::followOptions(const Profile& profile) {
    following = true;
    if (!startChosen) startSwitch->setChecked(profile.enabled);
    if (!downloadChosen) downloadSwitch->setChecked(profile.needsDownload);
    following = false;
    downloadPart->setVisible(downloadFirst());
}

QWidget* ContentFields::field(EditorField which) const {
    if (which == EditorField::localFolder) return localFolderField;
    if (which == EditorField::downloadContents) return downloadButton;
    return nullptr;
}

} // namespace zembrastel::ui
