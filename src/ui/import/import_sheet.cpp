#include "ui/import/import_sheet.h"

#include "model/import/profile_import.h"
#include "platform/standard_paths.h"
#include "ui/import/import_list.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/message_strip.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QPointer>
#include <QScreen>

#include <system_error>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize usualSize(720, 560);
constexpr QSize smallestSize(560, 400);
constexpr int listInset = 3;
constexpr int footMargin = 24;
constexpr int footInset = 12;

// The site file of FileZilla; empty if there is none.
std::filesystem::path knownFile() {
    for (const auto& folder : {configFolder() / "filezilla", homeFolder() / ".filezilla"}) {
        std::error_code ignored; // an unreadable file is not offered
        if (std::filesystem::is_regular_file(folder / "sitemanager.xml", ignored)) return folder / "sitemanager.xml";
    }
    return {};
}

} // namespace

void chooseImportFile(QWidget* parent, std::function<void(const std::filesystem::path& file)> chosen) {
    auto* const chooser = new QFileDialog(
        parent, ImportSheet::tr("Choose the file to import profiles from"), toQString(homeFolder().string()));
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setFileMode(QFileDialog::ExistingFile);
    chooser->setNameFilters(
        {ImportSheet::tr("Sites and profiles (sitemanager.xml, sftp.json, exports) (*.xml *.json)"),
         ImportSheet::tr("All files (*)")});
    chooser->setFilter(chooser->filter() | QDir::Hidden); // shows .config and .vscode
    if (const auto known = knownFile(); !known.empty()) chooser->selectFile(toQString(known.string()));
    QObject::connect(chooser, &QFileDialog::fileSelected, parent, [chosen = std::move(chosen)](const QString& file) {
        chosen(QFile::encodeName(file).toStdString());
    });
    chooser->open();
}

// The result of reading the file.
struct ImportSheet::Reading {
    std::vector<ImportLine> lines;
    QString failure; // for the user; empty if there is none
};

ImportSheet::ImportSheet(
    ModelBridge& bridge, MainContext& mainContext, const std::filesystem::path& file, QWidget* parent)
    : QDialog(parent), model(bridge.model()), context(mainContext), tasks(mainContext),
      self(std::make_shared<ImportSheet*>(this)), rows(new ImportListModel(this)), list(new ImportListView(*rows)),
      count(makeLabel(QString(), TextStyle::strong)), all(new PushButton(tr("Select all"))),
      none(new PushButton(tr("Select none"))), another(new PushButton(tr("Choose another file…"))) {
    setWindowModality(Qt::WindowModal);
    QLayout* const head = makeSheetHead(
        *this, "plus", tr("Import profiles"),
        {tr("Imported profiles are paused. Starting one uploads the files of its local folder, except excluded files. "
            "Passwords are stored in the desktop's keyring.")});
    list->setAccessibleName(tr("Profiles found"));
    layOutSheet(*this, head, makeSheetTools({all, none, another}, count), makeListCard(list, listInset), makeFoot());
    connect(all, &QPushButton::clicked, rows, [this] { rows->tickAll(true); });
    connect(none, &QPushButton::clicked, rows, [this] { rows->tickAll(false); });
    connect(another, &QPushButton::clicked, this, [this] {
        chooseImportFile(this, [this](const std::filesystem::path& chosen) { read(chosen); });
    });
    connect(list, &ImportListView::folderRequested, this, &ImportSheet::chooseFolder);
    connect(rows, &QAbstractItemModel::dataChanged, this, &ImportSheet::showState);
    const QSize room = screen()->availableGeometry().size();
    setMinimumSize(scaledToText(smallestSize).boundedTo(room));
    resize(scaledToText(usualSize).boundedTo(room));
    list->setFocus();
    read(file);
}

ImportSheet::~ImportSheet() { self.reset(); }

QWidget* ImportSheet::makeFoot() {
    QFrame* const foot = makeSurface(Surface::footer);
    auto* const layout = new QVBoxLayout(foot);
    layout->setContentsMargins(footMargin, footInset, footMargin, footInset);
    layout->setSpacing(footInset);
    strip = new MessageStrip;
    layout->addWidget(strip);
    auto* const buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch(1);
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    buttons->addWidget(cancel);
    take = new PushButton(QString(), ButtonKind::primary);
    connect(take, &QPushButton::clicked, this, &ImportSheet::importTicked);
    buttons->addWidget(take);
    layout->addLayout(buttons);
    return foot;
}

void ImportSheet::read(const std::filesystem::path& file) {
    busy = true;
    strip->clear();
    rows->show({});
    showState();
    setFocus(); // otherwise the next button would get the focus, and with it Enter
    const auto deliver = [weak = std::weak_ptr(self)](const Reading& result) {
        if (const auto alive = weak.lock()) (*alive)->showFound(result);
    };
    (void)tasks.start([&main = context, file, others = model.profiles(), deliver](const std::stop_token&) {
        Reading result;
        try {
            result.lines = importLines(readProfiles(file), others);
        } catch (const std::exception& error) {
            result.failure =
                tr("Cannot import %1: %2.").arg(toQString(file.filename().string()), engineText(describe(error)));
        }
        main.post([deliver, result = std::move(result)] { deliver(result); });
    });
}

void ImportSheet::showFound(const Reading& result) {
    busy = false;
    rows->show(result.lines);
    if (rows->rowCount() > 0) list->setCurrentIndex(rows->index(0));
    if (!result.failure.isEmpty()) {
        strip->showFailure(result.failure);
    } else if (result.lines.empty()) {
        strip->showFailure(tr("There are no profiles in this file."));
    }
    showState();
    list->setFocus();
}

void ImportSheet::showState() {
    const auto ticked = static_cast<int>(rows->tickedRows().size());
    const int takeable = rows->importableCount();
    count->setText(tr("%1 of %2 selected").arg(ticked).arg(takeable));
    count->setVisible(rows->rowCount() > 0);
    all->setEnabled(!busy && ticked < takeable);
    none->setEnabled(!busy && ticked > 0);
    another->setEnabled(!busy);
    list->setEnabled(!busy);
    take->setEnabled(!busy && ticked > 0);
    take->setLabel(tr("Import %n profiles", nullptr, ticked));
}

void ImportSheet::chooseFolder(int row) {
    const Profile& profile = rows->line(row).candidate.profile;
    auto* const chooser = new QFileDialog(
        this, tr("Choose the local folder of %1").arg(toQString(profile.name)),
        toQString(rows->line(row).needsFolder ? homeFolder().string() : profile.localFolder));
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setFileMode(QFileDialog::Directory);
    chooser->setOption(QFileDialog::ShowDirsOnly);
    connect(chooser, &QFileDialog::fileSelected, this, [this, row](const QString& folder) {
        strip->clear();
        rows->setLocalFolder(row, QFile::encodeName(folder).toStdString(), model.profiles());
        list->setFocus();
    });
    chooser->open();
}

void ImportSheet::importTicked() {
    if (busy) return;
    const auto ticked = rows->tickedRows();
    waiting.assign(ticked.begin(), ticked.end());
    others = model.profiles();
    strip->clear();
    importNext();
}

void ImportSheet::importNext() {
    busy = !waiting.empty();
    showState();
    if (busy) setFocus();
    if (waiting.empty()) {
        if (saveAll()) end();
        return;
    }
    const int row = waiting.front();
    waiting.pop_front();
    const ProfileCandidate& candidate = rows->line(row).candidate;
    try {
        const Profile profile = importable(candidate.profile, others);
        // Checked before the password is stored, so that a refused profile leaves no password behind.
        model.checkSavable(profile);
        if (!candidate.password) {
            finish(row, profile);
            return;
        }
        model.storePassword(
            profile.id, *candidate.password,
            [guard = QPointer<ImportSheet>(this), &model = model, row,
             profile](const std::optional<std::string>& failure) {
                if (guard && guard->isVisible()) {
                    guard->passwordStored(row, profile, failure);
                } else if (!failure) {
                    model.removeStrayPassword(profile.id);
                }
            });
    } catch (const std::exception& error) {
        (void)fail(describe(error));
    }
}

void ImportSheet::passwordStored(int row, const Profile& profile, const std::optional<std::string>& failure) {
    if (!failure) {
        finish(row, profile);
        return;
    }
    if (!fail(*failure)) return;
    strip->showFailure(
        strip->message() + u' ' + tr("Unlock the desktop's keyring and import again, or go on without it."),
        tr("Keep the password for this session only"), [this, row, profile] {
            strip->clear();
            finish(row, profile);
        });
}

void ImportSheet::finish(int row, const Profile& profile) {
    const auto& password = rows->line(row).candidate.password;
    if (password) model.keepForSession(profile.id, *password);
    others.push_back(profile);
    ready.emplace(row, profile);
    importNext();
}

// Saves all profiles in one write. On failure shows the message and returns false.
bool ImportSheet::saveAll() {
    const auto saved = std::exchange(ready, {});
    std::optional<std::string> failure;
    const auto saveEach = [&] {
        for (const auto& [row, profile] : saved) {
            try {
                model.save(profile, std::nullopt);
            } catch (const std::exception& error) {
                failure = describe(error);
                continue;
            }
            if (!first) first = profile.id;
            rows->setDone(row);
        }
    };
    try {
        model.saveTogether(saveEach);
    } catch (const std::exception& error) {
        failure = describe(error);
    }
    if (failure) showFailure(*failure);
    return !failure;
}

// Saves the profiles that are ready; the others stay ticked, so that pressing the button again imports them. If saving
// fails, shows that message and returns false.
bool ImportSheet::fail(const std::string& message) {
    waiting.clear();
    if (!saveAll()) return false;
    showFailure(message);
    return true;
}

void ImportSheet::showFailure(const std::string& message) {
    busy = false;
    showState();
    list->setFocus();
    strip->showFailure(engineText(message));
}

void ImportSheet::end() {
    if (first) model.select(first);
    accept();
}

// Profiles imported before a failure are kept, and the first of them is selected.
void ImportSheet::reject() {
    if (!saveAll()) return;
    if (first) model.select(first);
    QDialog::reject();
}

} // namespace zembrastel::ui
