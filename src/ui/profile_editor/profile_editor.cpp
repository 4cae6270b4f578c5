#include "ui/profile_editor/profile_editor.h"

#include "app/demo.h"
#include "app/diagnosis/failure_catalogue.h"
#include "model/error.h"
#include "ui/profile_editor/editor_page.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/message_strip.h"
#include "ui/widgets/push_button.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace zembrastel::ui {
namespace {

constexpr QSize usualSize(880, 616);
constexpr QSize smallestSize(560, 440);
constexpr int heightWithAdvanced = 704;
constexpr int margin = EditorPage::margin;
constexpr int footerInset = 12;

// A new profile starts watching, and downloads first so that no server files are overlooked.
Profile newProfile() {
    Profile profile;
    profile.enabled = true;
    profile.needsDownload = true;
    return profile;
}

QString notInDemo() { return ProfileEditor::tr("Not available in the demonstration."); }

} // namespace

ProfileEditor::ProfileEditor(
    ModelBridge& modelBridge, MainContext& mainContext, const std::optional<Uuid>& id, QWidget* parent)
    : QDialog(parent), bridge(modelBridge), model(modelBridge.model()), selections(newProfile()), test(mainContext) {
    if (const Profile* saved = id ? model.profile(*id) : nullptr; saved != nullptr) {
        original = *saved;
        selections = *saved;
    }
    page = new EditorPage(selections, !original);
    connection = &page->connection();
    contents = &page->contents();
    setWindowModality(Qt::WindowModal);
    setWindowTitle(original ? tr("Edit sync profile") : tr("New sync profile"));
    setAccessibleName(windowTitle());
    auto* const layout = makeLayout<QVBoxLayout>(0, this);
    layout->addWidget(makeHeader());
    layout->addWidget(page, 1);
    layout->addWidget(makeFooter());
    saveButton->setDefault(true); // takes effect only once the button is inside its dialog
    connectFields();
    const QSize available = screen()->availableSize();
    setMinimumSize(scaledToText(smallestSize).boundedTo(available));
    resize(scaledToText(usualSize).boundedTo(available));
    untouched = draft();
    loadPassword();
    showState();
}

ProfileEditor::~ProfileEditor() = default;

QWidget* ProfileEditor::makeHeader() {
    auto* const header = new QWidget(this);
    auto* const layout = makeLayout<QVBoxLayout>(2, header);
    layout->setContentsMargins(margin, 20, margin, 12);
    layout->addWidget(makeLabel(windowTitle(), TextStyle::dialogTitle));
    layout->addWidget(makeLabel(tr("Connect a local folder to your web server."), TextStyle::body, Tone::dim));
    return header;
}

QWidget* ProfileEditor::makeFooter() {
    auto* const footer = makeSurface(Surface::footer);
    auto* const layout = makeLayout<QVBoxLayout>(footerInset, footer);
    layout->setContentsMargins(margin, footerInset, margin, footerInset);
    strip = new MessageStrip;
    layout->addWidget(strip);
    auto* const buttons = makeLayout<QHBoxLayout>(8);
    testButton = new PushButton(tr("Test connection"));
    testButton->setSymbol("network");
    connect(testButton, &QPushButton::clicked, this, &ProfileEditor::testConnection);
    buttons->addWidget(testButton);
    buttons->addStretch(1);
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &ProfileEditor::discard);
    buttons->addWidget(cancel);
    saveButton = new PushButton(QString(), ButtonKind::primary);
    connect(saveButton, &QPushButton::clicked, this, &ProfileEditor::save);
    buttons->addWidget(saveButton);
    layout->addLayout(buttons);
    return footer;
}

void ProfileEditor::connectFields() {
    connect(connection, &ConnectionFields::edited, this, &ProfileEditor::forgetMessage);
    connect(connection, &ConnectionFields::connectionEdited, this, [this] {
        // The result would belong to a connection that is no longer on the screen.
        test.cancel();
        showState();
    });
    connect(connection, &ConnectionFields::remoteFolderRequested, this, &ProfileEditor::chooseFolder);
    connect(contents, &ContentFields::edited, this, &ProfileEditor::forgetMessage);
    connect(contents, &ContentFields::optionsChanged, this, &ProfileEditor::showState);
    connect(contents, &ContentFields::advancedShown, this, &ProfileEditor::makeRoomForAdvanced);
    connect(contents, &ContentFields::syncContentsRequested, this, [this] { choose(true); });
    connect(contents, &ContentFields::downloadContentsRequested, this, [this] { choose(false); });
    connect(&bridge, &ModelBridge::profilesChanged, this, &ProfileEditor::followModel);
}

void ProfileEditor::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    page->fitWidth(width());
}

void ProfileEditor::makeRoomForAdvanced() {
    const int wanted = std::min(scaledToText(heightWithAdvanced), screen()->availableSize().height());
    if (height() < wanted) resize(width(), wanted);
}

void ProfileEditor::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    openSyncContentsOnce();
}

// A second Enter must not press another button after the first was disabled; see testConnection().
void ProfileEditor::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && focusWidget() == this) return;
    QDialog::keyPressEvent(event);
}

void ProfileEditor::done(int result) {
    test.cancel();
    QDialog::done(result);
}

// Escape and the window's own close button.
void ProfileEditor::reject() {
    if (!hasEntries()) return discard();
    ConfirmDialog::askToDiscard(this, tr("What you entered here has not been saved."), [this] { discard(); });
}

void ProfileEditor::discard() { QDialog::reject(); }

bool ProfileEditor::hasEntries() const {
    if (connection->password() != savedPassword && loaded) return true;
    Profile before = *untouched;
    if (const Profile* const now = original ? model.profile(original->id) : nullptr; now != nullptr) {
        before = withEdits(*now, *original, before);
    }
    return contents->optionsChosen() || draft() != before;
}

void ProfileEditor::loadPassword() {
    if (!original) {
        loaded = true;
        return;
    }
    connection->showPasswordLoading();
    const QPointer<ProfileEditor> self(this);
    model.withPassword(
        original->id,
        [self](const std::string& password) {
            if (self) self->passwordKnown(password);
        },
        [self](const std::string& failure) {
            if (!self) return;
            // The contents cannot be listed without a password.
            self->openSyncContentsWhenReady = false;
            self->passwordKnown({});
            self->strip->showFailure(engineText(failure));
        });
}

void ProfileEditor::passwordKnown(const std::string& password) {
    savedPassword = password;
    loaded = true;
    connection->setPassword(password);
    showState();
    openSyncContentsOnce();
}

void ProfileEditor::openSyncContentsOnce() {
    if (!loaded || !isVisible() || !std::exchange(openSyncContentsWhenReady, false)) return;
    // Queued, so that the sheet opens above the visible editor.
    QMetaObject::invokeMethod(
        this, [this] { choose(true); }, Qt::QueuedConnection);
}

// Changes that the model makes meanwhile, such as the end of an initial download, must survive saving.
void ProfileEditor::followModel() {
    if (!original || !isVisible()) return;
    if (const Profile* const now = model.profile(original->id)) {
        contents->followOptions(*now);
        showState();
    } else if (!busy) {
        continueAsNew();
    }
}

void ProfileEditor::continueAsNew() {
    original.reset();
    strip->showFailure(
        tr("This profile was removed meanwhile. Nothing that you entered is lost: create a new profile from it, or "
           "cancel."));
    showState();
}

Profile ProfileEditor::draft() const {
    Profile fields = selections;
    connection->writeTo(fields);
    contents->writeTo(fields);
    const Profile* const now = original ? model.profile(original->id) : nullptr;
    return now == nullptr ? fields : withEdits(*now, *original, fields);
}

void ProfileEditor::forgetMessage() {
    strip->clear();
    page->mark(EditorField::none);
}

void ProfileEditor::fail(const ValidationProblem& problem) {
    strip->showFailure(engineText(problem.message));
    page->mark(problem.field);
}

SavingState ProfileEditor::savingState() const {
    return {
        .busy = busy,
        .isNew = !original,
        .downloadFirst = contents->downloadFirst(),
        .starts = contents->startOnSave(),
        .contentsChosen = hasDownloadContents(draft())};
}

void ProfileEditor::showState() {
    saveButton->setLabel(savingLabel(savingState()));
    saveButton->setEnabled(!busy);
    page->widget()->setEnabled(!busy);
    testButton->setBusy(test.running());
    testButton->setEnabled(loaded && !busy && !test.running() && !model.isDemo());
    testButton->setToolTip(model.isDemo() ? notInDemo() : QString());
    const auto kinds = [this](const DownloadSelection& selection) { return kindsOf(selection); };
    contents->showSelections(syncContentsText(draft(), kinds), downloadContentsText(draft(), kinds));
}

void ProfileEditor::testConnection() {
    const Profile wanted = forConnection(draft());
    if (const ValidationProblem problem = validate(wanted); !problem.message.empty()) {
        fail(problem);
        return;
    }
    forgetMessage();
    const Profile tested = wanted.validated();
    test.start(tested, connection->password(), [this, tested](const ConnectionCheck::Result& result) {
        finishTest(tested, result);
    });
    const bool hadFocus = focusWidget() == testButton;
    showState();
    if (hadFocus) setFocus();
}

void ProfileEditor::finishTest(const Profile& tested, const ConnectionCheck::Result& result) {
    showState();
    if (focusWidget() == this) testButton->setFocus();
    if (!result.failure) {
        strip->showSuccess(connectedMessage(result.items));
        return;
    }
    if (result.certificate && reviewCertificate) {
        offerCertificate(tested, result);
        return;
    }
    page->mark(fieldAtFault(*result.failure));
    if (lacksRemoteFolder(*result.failure, tested)) {
        strip->showFailure(
            tr("There is no folder %1 on the server. Create it, or choose another one.")
                .arg(onOneLine(toQString(tested.remoteFolder))),
            tr("Create it"), [this, tested] { createFolder(tested); });
        return;
    }
    const Explanation explanation = explain(*result.failure, tested);
    QString text = engineText(explanation.text());
    if (!explanation.known) text += u' ' + onOneLine(toQString(explanation.details));
    strip->showFailure(text);
}

void ProfileEditor::createFolder(const Profile& tested) {
    forgetMessage();
    test.createFolder(tested, connection->password(), [this, tested](const ConnectionCheck::Result& result) {
        finishTest(tested, result);
        if (!result.failure) strip->showSuccess(tr("The remote folder was created."));
    });
    showState();
}

void ProfileEditor::offerCertificate(const Profile& tested, const ConnectionCheck::Result& result) {
    strip->showFailure(
        engineText(explain(*result.failure, tested).text()),
        tested.keyInForce() != nullptr ? tr("Compare keys…") : tr("Review certificate…"),
        [this, tested, seen = *result.certificate] {
            reviewCertificate(tested, seen, [self = QPointer<ProfileEditor>(this)](const TrustedKey& key) {
                if (!self) return;
                self->connection->setTrustedKey(key);
                self->testConnection();
            });
        });
}

void ProfileEditor::chooseFolder() {
    if (!loaded || !chooseRemoteFolder) return;
    if (model.isDemo()) {
        strip->showFailure(notInDemo());
        return;
    }
    const Profile wanted = forConnection(draft());
    Profile reachable = wanted;
    reachable.remoteFolder = "/"; // it is being chosen
    if (const ValidationProblem problem = validate(reachable); !problem.message.empty()) {
        fail(problem);
        return;
    }
    forgetMessage();
    chooseRemoteFolder(
        wanted, connection->password(), [self = QPointer<ProfileEditor>(this)](const std::string& folder) {
            if (self) self->connection->enterRemoteFolder(folder);
        });
}

void ProfileEditor::choose(bool syncMode) {
    if (!loaded || !browse) return;
    if (model.isDemo()) {
        strip->showFailure(notInDemo());
        return;
    }
    Profile wanted = draft();
    wanted.needsDownload = false; // the contents of that download are being chosen
    if (const ValidationProblem problem = validate(wanted); !problem.message.empty()) {
        fail(problem);
        return;
    }
    forgetMessage();
    const auto& chosen = syncMode ? wanted.effectiveSyncSelection() : wanted.initialDownloadSelection;
    const DownloadSelection current = chosen     ? *chosen
                                      : syncMode ? DownloadSelection::everything()
                                                 : DownloadSelection();
    browse(
        wanted.validated(), connection->password(), syncMode, current,
        [self = QPointer<ProfileEditor>(this),
         syncMode](const DownloadSelection& selection, const std::optional<TickedKinds>& kinds) {
            if (self) self->applyChoice(syncMode, selection, kinds);
        });
}

// What the choice counted, else what is known of synchronised files.
std::optional<TickedKinds> ProfileEditor::kindsOf(const DownloadSelection& selection) const {
    if (lastChoice && lastChoice->first == selection) return lastChoice->second;
    return countTicked(selection, amongFiles(model.baseline(selections.id)));
}

void ProfileEditor::applyChoice(
    bool syncMode, const DownloadSelection& chosen, const std::optional<TickedKinds>& kinds) {
    if (kinds) lastChoice.emplace(chosen, *kinds);
    // The choice of the first download is also the choice of what to watch, until the sync contents are chosen
    // separately.
    if (!syncMode) selections.initialDownloadSelection = chosen;
    selections.syncSelection = chosen;
    forgetMessage();
    showState();
}

void ProfileEditor::continueWithoutDownload() {
    contents->switchDownloadOff();
    showState();
    strip->showSuccess(
        tr("The remote folder is empty, so there is nothing to download. Your local files are uploaded."));
}

} // namespace zembrastel::ui
