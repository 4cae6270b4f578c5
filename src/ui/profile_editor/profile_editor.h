// The sheet in which a sync profile is created or edited.
//
// It works on a draft of its own: the model hears of it when it is saved, and a sheet that is closed otherwise leaves
// nothing behind. What else changes in the saved profile meanwhile stays changed. If the profile is removed meanwhile,
// the sheet says so and goes on as one for a new profile, with all that was entered. Server and secret store are waited
// for elsewhere, never on the main thread. Show it with open().
#pragma once

#include "ui/bridge/model_bridge.h"
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
    // Opens the choice of contents: of what is synchronised, or else of what is downloaded at first. `apply` takes what
    // was chosen; it may be called late or never, also when the editor has gone.
    using Browse = std::function<void(
        const Profile& draft, const std::string& password, bool syncMode, const DownloadSelection& current,
        std::function<void(const DownloadSelection& chosen)> apply)>;

    // For a new profile, or for the one that is saved under this id.
    ProfileEditor(ModelBridge& modelBridge, MainContext& mainContext, const std::optional<Uuid>& id, QWidget* parent);
    ~ProfileEditor() override;

    void setBrowse(Browse function) { browse = std::move(function); }

    // Goes on to the choice of sync contents as soon as the saved password is there.
    void openSyncContentsOnAppear() { wantsSyncContents = true; }

    // As it would be saved now.
    [[nodiscard]] Profile draft() const;

    void done(int result) override;

Q_SIGNALS:
    // Saved with another place on a server, while files are recorded as uploaded to the old one.
    void moved(const zembrastel::Uuid& id);

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeader();
    [[nodiscard]] QWidget* makeFooter();
    void connectFields();
    void makeRoomForAdvanced();

    // The password that is saved.
    void loadPassword();
    void passwordKnown(const std::string& password);
    void followModel();
    void becomeNew();
    void openSyncContentsOnce();

    void forgetMessage();
    void fail(const Objection& objection);
    [[nodiscard]] SavingState savingState() const;
    void showState();

    void testConnection();
    void finishTest(const ConnectionCheck::Result& result);
    void choose(bool syncMode);
    void applyChoice(bool syncMode, const DownloadSelection& chosen);

    void save();
    [[nodiscard]] bool refuse(const Profile& wanted);
    [[nodiscard]] bool mustStorePassword() const;
    void passwordStored(const std::string& password, const std::optional<std::string>& failure);
    void finishSaving(const std::optional<std::string>& password);

    ModelBridge& bridge;
    AppModel& model;
    std::optional<Profile> original; // nothing for a new profile
    Profile selections;              // as chosen here; of the rest only the id counts
    std::string savedPassword;
    bool loaded = false; // the saved password is known, or known not to be had
    bool busy = false;   // saving
    bool wantsSyncContents = false;
    Browse browse;
    ConnectionCheck test;

    EditorPage* page = nullptr;
    ConnectionFields* connection = nullptr; // on the page
    ContentFields* contents = nullptr;      // on the page
    MessageStrip* strip = nullptr;
    PushButton* testButton = nullptr;
    PushButton* saveButton = nullptr;
};

} // namespace zembrastel::ui
