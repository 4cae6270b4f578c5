// The sheet that creates or edits a sync profile.
//
// Works on a draft: the model changes only when the user saves, and cancelling leaves nothing behind. Other changes
// that the saved profile receives meanwhile are kept. If the profile is removed meanwhile, the sheet says so and
// continues with the same fields as a new profile. Never blocks the main thread on the server or the secret store. Show
// it with open().
#pragma once

#include "ui/bridge/model_bridge.h"
#include "ui/bridge/selection_summary.h"
#include "ui/profile_editor/connection_check.h"
#include "ui/profile_editor/editor_rules.h"

#include <QDialog>

#include <functional>
#include <optional>
#include <string>

namespace zembrastel::ui {

class ConnectionFields;
class ContentFields;
class EditorPage;
class MessageStrip;
class PushButton;

class ProfileEditor : public QDialog {
    Q_OBJECT

public:
    // Opens the choice of contents: the sync contents, or the contents of the initial download. `apply` receives the
    // choice, with the kinds of its ticks if they are known; it may be called late or never, even after the editor is
    // gone.
    using Apply = std::function<void(const DownloadSelection& chosen, const std::optional<TickedKinds>& kinds)>;
    using Browse = std::function<void(
        const Profile& draft, const std::string& password, bool syncMode, const DownloadSelection& current,
        Apply apply)>;

    // Shows the certificate of the draft's server. `trust` receives the key if the user trusts it.
    using ReviewCertificate = std::function<void(
        const Profile& draft, const InspectedCertificate& seen, std::function<void(const TrustedKey& key)> trust)>;

    // Opens the choice of the draft's remote folder. `apply` receives the chosen folder; it may be called late or
    // never, even after the editor is gone.
    using ChooseRemoteFolder = std::function<void(
        const Profile& draft, const std::string& password, std::function<void(const std::string& folder)> apply)>;

    // Without `id` creates a profile, else edits the saved one.
    ProfileEditor(ModelBridge& modelBridge, MainContext& mainContext, const std::optional<Uuid>& id, QWidget* parent);
    ~ProfileEditor() override;

    void setBrowse(Browse function) { browse = std::move(function); }
    void setChooseRemoteFolder(ChooseRemoteFolder function) { chooseRemoteFolder = std::move(function); }
    void setReviewCertificate(ReviewCertificate function) { reviewCertificate = std::move(function); }

    // Opens the choice of sync contents as soon as the saved password is known.
    void openSyncContentsOnAppear() { openSyncContentsWhenReady = true; }

    // The remote folder is empty: nothing is downloaded first, and the sync contents stay as they are.
    void continueWithoutDownload();

    // As its button does: reports the result in the editor, and offers to review a certificate that was refused.
    void testConnection();

    // The profile as saving would store it now.
    [[nodiscard]] Profile draft() const;

    void done(int result) override;

    // Asks first if something was entered; see discard().
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();
    void connectFields();
    void makeRoomForAdvanced();

    void loadPassword();
    void passwordKnown(const std::string& password);
    void followModel();
    void continueAsNew();
    void openSyncContentsOnce();

    void forgetMessage();
    void fail(const ValidationProblem& problem);
    [[nodiscard]] SavingState savingState() const;
    void showState();

    void finishTest(const Profile& tested, const ConnectionCheck::Result& result);
    void createFolder(const Profile& tested);
    void offerCertificate(const Profile& tested, const ConnectionCheck::Result& result);
    void chooseFolder();
    void choose(bool syncMode);
    void applyChoice(bool syncMode, const DownloadSelection& chosen, const std::optional<TickedKinds>& kinds);
    [[nodiscard]] std::optional<TickedKinds> kindsOf(const DownloadSelection& selection) const;

    void discard();
    [[nodiscard]] bool hasEntries() const;

    void save();
    [[nodiscard]] bool asksAboutPlace(const Profile& wanted);
    void storeAndFinish();
    [[nodiscard]] bool refuse(const Profile& wanted);
    [[nodiscard]] bool passwordNeedsStoring() const;
    void passwordStored(const std::string& password, const std::optional<std::string>& failure);
    void finishSaving(const std::optional<std::string>& password);

    ModelBridge& bridge;
    AppModel& model;
    std::optional<Profile> original;  // nullopt for a new profile
    std::optional<Profile> untouched; // the draft before the user entered something
    Profile selections;               // the choices made here; only they and the id count
    std::optional<std::pair<DownloadSelection, TickedKinds>> lastChoice; // whose kinds are known
    std::string savedPassword;
    bool loaded = false;              // the saved password was read, or reading it has failed
    bool busy = false;                // saving
    std::optional<NewPlace> newPlace; // the answer if the profile now names another place on a server
    bool openSyncContentsWhenReady = false;
    Browse browse;
    ChooseRemoteFolder chooseRemoteFolder;
    ReviewCertificate reviewCertificate;
    ConnectionCheck test;

    EditorPage* page = nullptr;
    ConnectionFields* connection = nullptr; // on the page
    ContentFields* contents = nullptr;      // on the page
    MessageStrip* strip = nullptr;
    PushButton* testButton = nullptr;
    PushButton* saveButton = nullptr;
};

} // namespace zembrastel::ui
