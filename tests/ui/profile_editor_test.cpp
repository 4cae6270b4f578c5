#include "ui/profile_editor/profile_editor.h"

#include "screen_fixture.h"
#include "support/ftp_server.h"
#include "ui/profile_editor/new_place_dialog.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/push_button.h"

#include <QComboBox>
#include <QElapsedTimer>

#include <atomic>
#include <filesystem>
#include <latch>
#include <semaphore>

namespace zembrastel::testing {
namespace {

const char* const startLabel = "Start watching this folder";
const char* const downloadLabel = "Download server files to the local folder first";

DownloadSelection docsOnly() { return {.rules = {{"docs", true}}}; }

class ProfileEditorTest : public ScreenFixture {
protected:
    ProfileEditorTest() {
        passwords.save = [this](const std::string& password, const Uuid& id) {
            ++saves;
            stored[id] = password;
        };
    }

    void open(const std::optional<Uuid>& id = std::nullopt, bool syncContents = false) {
        if (!model) startModel();
        editor = std::make_unique<ProfileEditor>(*bridge, context, id, nullptr);
        screen = editor.get();
        editor->setBrowse(
            [this](const Profile&, const std::string&, bool syncMode, const DownloadSelection& current, auto apply) {
                browsedForSync = syncMode;
                offered = current;
                applyChoice = [apply](const DownloadSelection& chosen) { apply(chosen, std::nullopt); };
            });
        if (syncContents) editor->openSyncContentsOnAppear();
        editor->open();
    }

    // Opens a saved profile and waits for its password.
    void openSaved(const Uuid& id) {
        open(id);
        ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    }

    void fillIn(const FtpServer* server = nullptr) {
        std::filesystem::create_directory(folder / "Site");
        type("Profile name", "Site");
        type("Server", "127.0.0.1");
        type("Port", server == nullptr ? "1" : QString::number(server->port()));
        type("Username", server == nullptr ? "web" : QString::fromStdString(server->username()));
        type("Password", server == nullptr ? "s3cret" : QString::fromStdString(server->password()));
        type("Local folder", QString::fromStdString(folder / "Site"));
    }

    [[nodiscard]] bool closes() const {
        return waitFor([this] { return !editor->isVisible(); });
    }
    [[nodiscard]] bool saysSomething() const {
        return waitFor([this] { return !message().isEmpty(); });
    }
    [[nodiscard]] bool isMarked(const QString& caption) const { return line(caption).property("bad").toBool(); }
    [[nodiscard]] PushButton& saving() const {
        for (auto* const each : editor->findChildren<PushButton*>()) {
            if (each->isDefault()) return *each;
        }
        throw std::logic_error("no default button");
    }

    std::atomic<int> saves = 0;
    std::unique_ptr<ProfileEditor> editor;
    std::optional<bool> browsedForSync; // empty until contents are browsed
    DownloadSelection offered;
    std::function<void(const DownloadSelection&)> applyChoice;
};

TEST(EditorRules, RefusedValueMarksTheWrongField) {
    Profile valid;
    valid.name = "Site";
    valid.host = "host";
    valid.username = "web";
    valid.localFolder = "/tmp";
    EXPECT_EQ(validate(valid).message, "");
    const std::vector<std::pair<EditorField, void (*)(Profile&)>> cases{
        {EditorField::name, [](Profile& p) { p.name = " ", p.localFolder = ""; }},
        {EditorField::server, [](Profile& p) { p.host = "host:21", p.port = 0; }},
        {EditorField::port, [](Profile& p) { p.port = 65536; }},
        {EditorField::username, [](Profile& p) { p.username = "a:b", p.remoteFolder = ".."; }},
        {EditorField::remoteFolder, [](Profile& p) { p.remoteFolder = "/a/../b"; }},
        {EditorField::localFolder, [](Profile& p) { p.localFolder = "/nowhere/at/all"; }},
        {EditorField::downloadContents, [](Profile& p) { p.needsDownload = true; }}};
    for (const auto& [field, spoil] : cases) {
        Profile draft = valid;
        spoil(draft);
        EXPECT_EQ(validate(draft).field, field) << validate(draft).message;
    }
}

TEST(EditorRules, UntouchedFieldsKeepLaterChanges) {
    const Profile original;
    Profile saved = original;
    saved.host = saved.username = "changed elsewhere";
    Profile draft = original;
    draft.username = draft.name = "edited";
    draft.enabled = true;
    Profile merged = saved;
    merged.username = merged.name = "edited";
    merged.enabled = true;
    EXPECT_EQ(withEdits(saved, original, draft), merged);
}

TEST(EditorRules, ResynchronisationAndPortChangeAreExplicit) {
    EXPECT_EQ(savingLabel({.downloadFirst = true, .contentsChosen = true}), "Save & resynchronise");
    EXPECT_EQ(portAfterChange(21, TransferProtocol::ftps, TransferProtocol::implicitTLS), 990);
    EXPECT_EQ(portAfterChange(2121, TransferProtocol::ftps, TransferProtocol::implicitTLS), 2121);
}

TEST_F(ProfileEditorTest, NewProfileIsNotSavedWithoutItsContents) {
    open();
    QTest::keyClick(&line("Profile name"), Qt::Key_Return);
    EXPECT_EQ(message(), "Enter a name, server, username and local folder.");
    EXPECT_TRUE(isMarked("Profile name"));
    EXPECT_FALSE(browsedForSync) << "an unknown server cannot be browsed";
    fillIn();
    EXPECT_EQ(message(), "");
    EXPECT_FALSE(isMarked("Profile name"));

    QTest::keyClick(&line("Profile name"), Qt::Key_Return);
    EXPECT_EQ(browsedForSync, false);
    EXPECT_FALSE(offered.hasSelection()) << "nothing is selected automatically";
    applyChoice({}); // no ticks
    EXPECT_EQ(saving().text(), "Choose download contents…");
    applyChoice(docsOnly());
    EXPECT_EQ(saving().text(), "Create profile && download");
    EXPECT_EQ(saves, 0);

    QTest::keyClick(&saving(), Qt::Key_Return);
    ASSERT_TRUE(closes());
    ASSERT_EQ(model->profiles().size(), 1U);
    const Profile& saved = model->profiles().front();
    EXPECT_TRUE(saved.enabled && saved.needsDownload && model->running(saved.id));
    EXPECT_EQ(saved.initialDownloadSelection, docsOnly());
    EXPECT_EQ(saved.effectiveSyncSelection(), docsOnly());
    EXPECT_EQ(saved.transport, TransferProtocol::ftps);
    EXPECT_EQ(stored.at(saved.id), "s3cret");
}

TEST_F(ProfileEditorTest, EmptyServerFolderDoesNotStopUploads) {
    open();
    fillIn();
    QTest::keyClick(&line("Profile name"), Qt::Key_Return);
    editor->continueWithoutDownload();
    EXPECT_EQ(saving().text(), "Create profile");
    saving().click();
    ASSERT_TRUE(closes());
    const Profile& saved = model->profiles().front();
    EXPECT_TRUE(saved.enabled && !saved.needsDownload && !saved.syncSelection);
}

TEST_F(ProfileEditorTest, DownloadWithoutStartIsImpossible) {
    open();
    EXPECT_TRUE(button(startLabel).isChecked());
    QTest::keyClick(&button(startLabel), Qt::Key_Space);
    EXPECT_FALSE(editor->draft().enabled || editor->draft().needsDownload);
    EXPECT_EQ(saving().text(), "Create profile");
    QTest::keyClick(&button(startLabel), Qt::Key_Space);
    EXPECT_TRUE(editor->draft().enabled && editor->draft().needsDownload) << "the download comes back with the start";
    QTest::keyClick(&button(startLabel), Qt::Key_Space);
    QTest::keyClick(&button(downloadLabel), Qt::Key_Space);
    EXPECT_TRUE(editor->draft().enabled && editor->draft().needsDownload);
}

TEST_F(ProfileEditorTest, EscapeLosesNoEntry) {
    const auto question = [this] { return editor->findChild<ConfirmDialog*>(); };
    const Profile saved = addProfile();
    const std::vector<std::function<void()>> entries{
        [this] { type("Profile name", "Other"); }, [this] { type("Password", "new"); },
        [this] { QTest::keyClick(&button(startLabel), Qt::Key_Space); },
        [this] {
            press("Edit sync contents…");
            applyChoice(docsOnly());
        }};
    for (const auto& enter : entries) {
        openSaved(saved.id);
        EXPECT_EQ(line("Password").echoMode(), QLineEdit::Password);
        enter();
        QTest::keyClick(editor.get(), Qt::Key_Escape);
        ASSERT_TRUE(editor->isVisible() && question() != nullptr);
        QTest::mouseClick(&testing::button(*question(), "Keep editing"), Qt::LeftButton);
        EXPECT_TRUE(editor->isVisible());
        editor->close();
        QTest::mouseClick(
            &testing::button(*editor->findChildren<ConfirmDialog*>().back(), "Discard changes"), Qt::LeftButton);
        EXPECT_FALSE(editor->isVisible());
    }
    EXPECT_EQ(*model->profile(saved.id), saved);
    EXPECT_EQ(stored.at(saved.id), "old");
}

TEST_F(ProfileEditorTest, UnreadablePasswordIsNotOverwritten) {
    std::latch answer(1);
    passwords.read = [&](const Uuid&) -> std::string {
        answer.wait();
        throw SyncError("Keychain: No password is stored for this profile; it must be entered again.");
    };
    const Uuid id = addProfile().id;
    open(id);
    EXPECT_FALSE(line("Password").isEnabled());
    EXPECT_EQ(line("Password").placeholderText(), "Reading from keyring…");
    EXPECT_FALSE(button("Test connection").isEnabled());
    answer.count_down();
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    EXPECT_TRUE(message().contains("it must be entered again"));
    type("Profile name", "Renamed");
    press("Save changes");
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(model->profile(id)->name, "Renamed");
    EXPECT_EQ(saves, 0) << "an empty field must not replace a password that could not be read";

    openSaved(id);
    type("Password", "entered again");
    press("Save changes");
    EXPECT_EQ(saving().text(), "Saving…");
    EXPECT_FALSE(line("Profile name").isEnabled());
    ASSERT_TRUE(closes());
    EXPECT_EQ(stored.at(id), "entered again");
}

TEST_F(ProfileEditorTest, MissingKeyringDoesNotPreventSaving) {
    const QString failure("Keychain: The name org.freedesktop.secrets was not provided by any .service files.");
    passwords.save = [&](const std::string&, const Uuid&) { throw SyncError(failure.toStdString()); };
    open();
    fillIn();
    press(downloadLabel);
    press(startLabel);
    press("Create profile");
    ASSERT_TRUE(saysSomething());
    EXPECT_TRUE(message().startsWith(failure));
    EXPECT_TRUE(model->profiles().empty());
    EXPECT_TRUE(line("Profile name").isEnabled()) << "the user can correct the profile and save again";
    auto& keep = button("Keep the password for this session only");
    EXPECT_EQ(editor->focusWidget(), &keep);
    QTest::keyClick(&keep, Qt::Key_Return);
    EXPECT_FALSE(editor->isVisible());
    ASSERT_EQ(model->profiles().size(), 1U);
    std::string kept;
    model->withPassword(model->profiles().front().id, [&kept](const std::string& password) { kept = password; }, {});
    EXPECT_EQ(kept, "s3cret");
    EXPECT_TRUE(stored.empty());
}

TEST_F(ProfileEditorTest, RefusedProfileStoresNoPassword) {
    const Uuid watched = addProfile().id;
    model->start(watched);
    open();
    fillIn();
    press(downloadLabel);
    press("Create profile");
    EXPECT_EQ(
        message(), "Another active profile already watches this local folder. Pause it before using this profile.");
    EXPECT_TRUE(isMarked("Local folder"));
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(stored.size(), 1U);
    EXPECT_EQ(model->profiles().size(), 1U);
}

TEST_F(ProfileEditorTest, ChosenRemoteFolderIsOnTheEnteredServer) {
    openSaved(addProfile().id);
    type("Password", "new");
    type("Remote folder", "../no/folder");
    std::optional<Profile> asked;
    editor->setChooseRemoteFolder([&](const Profile& draft, const std::string& password, const auto& apply) {
        asked = draft;
        EXPECT_EQ(password, "new");
        apply("/htdocs");
    });
    line("Server").clear();
    press("Choose a remote folder");
    EXPECT_EQ(message(), "Enter a name, server, username and local folder.");
    type("Server", "ftp.example.org");
    press("Choose a remote folder");
    EXPECT_EQ(asked->host, "ftp.example.org");
    EXPECT_EQ(line("Remote folder").text(), "/htdocs");
}

TEST_F(ProfileEditorTest, ChosenSyncContentsReachTheProfile) {
    const Uuid id = addProfile().id;
    open(id, true);
    EXPECT_FALSE(browsedForSync) << "the password is not known yet";
    ASSERT_TRUE(waitFor([this] { return browsedForSync.has_value(); }));
    EXPECT_EQ(browsedForSync, true);
    EXPECT_EQ(offered, DownloadSelection::everything());
    applyChoice(docsOnly());
    EXPECT_EQ(saving().text(), "Save changes");
    saving().click();
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(model->profile(id)->syncSelection, docsOnly());
    EXPECT_TRUE(model->profile(id)->needsDownload) << "added contents are downloaded before watching";
    editor.reset();
    applyChoice({}); // from a picker that outlives the editor
}

TEST_F(ProfileEditorTest, ConnectionTestReportsTheServersAnswer) {
    FtpServer server(FtpServer::Kind::odd);
    server.put("a.txt", "a");
    server.put("b.txt", "b");
    open();
    fillIn(&server);
    QTest::keyClick(editor->findChild<QComboBox*>(), Qt::Key_Down); // plain FTP
    type("Port", QString::number(server.port()));
    type("Remote folder", QString::fromStdString(server.remoteFolder()));
    button("Test connection").setFocus();
    QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(button("Test connection").isEnabled());
    QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(editor->isVisible()) << "a second Enter pressed another button";
    ASSERT_TRUE(saysSomething());
    EXPECT_EQ(
        message(), "Connected. The remote folder is readable (2 items). Upload permission is checked when a file "
                   "uploads.");

    type("Password", "wrong");
    EXPECT_EQ(message(), "") << "the message is about another password";
    press("Test connection");
    ASSERT_TRUE(saysSomething());
    EXPECT_TRUE(message().startsWith("The server refused the username or the password. Check"))
        << message().toStdString();

    type("Server", " " + line("Server").text() + " "); // blanks around it are no part of the name
    type("Password", QString::fromStdString(server.password()));
    type("Remote folder", QString::fromStdString(server.remoteFolder("new/shop")));
    press("Test connection");
    ASSERT_TRUE(saysSomething());
    EXPECT_TRUE(message().endsWith("/new/shop on the server. Create it, or choose another one."))
        << message().toStdString();
    press("Create it");
    ASSERT_TRUE(saysSomething());
    EXPECT_EQ(message(), "The remote folder was created.");
    EXPECT_TRUE(std::filesystem::is_directory(server.root() / "new/shop"));
    type("Server", " ");
    press("Test connection");
    EXPECT_EQ(find("Create it"), nullptr);
    EXPECT_EQ(message(), "Enter a name, server, username and local folder.");
    type("Server", "127.0.0.1");
    type("Remote folder", QString::fromStdString(server.remoteFolder()));

    const std::filesystem::path log = folder / "commands";
    FtpServer silent(FtpServer::Kind::odd, {.extra = {"--hang", "MLSD", "--log", log}});
    type("Port", QString::number(silent.port()));
    type("Password", QString::fromStdString(silent.password()));
    press("Test connection");
    ASSERT_TRUE(
        waitFor([&log] { return std::filesystem::exists(log) && readFile(log).find("MLSD") != std::string::npos; }));
    QElapsedTimer waited;
    waited.start();
    editor.reset();
    EXPECT_LT(waited.elapsed(), 15'000) << "a silent server holds curl for half a minute";
}

TEST_F(ProfileEditorTest, ChangesOfTheModelAreNotUndone) {
    const Uuid id = addProfile().id;
    openSaved(id);
    EXPECT_FALSE(button(startLabel).isChecked());
    model->toggle(id);
    EXPECT_TRUE(button(startLabel).isChecked());
    press(startLabel); // the user's choice from now on
    model->toggle(id);
    model->toggle(id);
    EXPECT_FALSE(button(startLabel).isChecked());
}

TEST_F(ProfileEditorTest, UploadedFilesCountOnlyForTheirPlace) {
    Profile profile = addProfile();
    profile.enabled = false;
    model->save(profile, std::nullopt, FileMap{{"index.html", Fingerprint{}}, {"b", Fingerprint{}}});
    const auto save = [&](const char* field, const char* text) {
        openSaved(profile.id);
        type(field, text);
        saving().click();
        auto* const asked = editor->findChild<NewPlaceDialog*>();
        if (asked == nullptr) return asked;
        asked->activateWindow(); // keys go to the row that has the focus
        EXPECT_TRUE(waitFor([asked] { return QApplication::focusWidget() == asked->focusWidget(); }));
        return asked;
    };
    openSaved(profile.id);
    press("Compare contents");
    saving().click();
    EXPECT_TRUE(model->profile(profile.id)->compareContents);
    EXPECT_EQ(save("Profile name", "Other"), nullptr);
    EXPECT_TRUE(model->profile(profile.id)->compareContents);
    auto* question = save("Server", "127.0.0.2");
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(
        question->accessibleDescription(), "Zembrastel knows 2 files as uploaded to /public_html on 127.0.0.1. The "
                                           "profile now names /public_html on 127.0.0.2.");
    QTest::keyClick(question, Qt::Key_Escape);
    EXPECT_TRUE(editor->isVisible()) << "nothing is saved before the answer";
    EXPECT_EQ(model->profile(profile.id)->host, "127.0.0.1");
    question = save("Server", "127.0.0.2");
    QTest::keyClick(question->focusWidget(), Qt::Key_Down);
    QTest::keyClick(question->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(model->profile(profile.id)->host, "127.0.0.2");
    EXPECT_EQ(model->baseline(profile.id).size(), 2U) << "the same site, moved";
    question = save("Remote folder", "/www");
    ASSERT_NE(question, nullptr);
    QTest::keyClick(question->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(model->profile(profile.id)->remoteFolder, "/www");
    EXPECT_TRUE(model->baseline(profile.id).empty()) << "the next check asks";
}

TEST_F(ProfileEditorTest, ChangesDuringKeyringPromptAreKept) {
    std::counting_semaphore<> answers(0);
    std::string calls; // read while the store waits for an answer
    passwords.save = [&](const std::string& password, const Uuid&) {
        answers.acquire();
        calls += "save " + password + ", ";
    };
    passwords.remove = [&](const Uuid&) {
        answers.acquire();
        calls += "remove, ";
    };
    const Uuid id = addProfile().id;
    const auto saveAs = [&](const QString& name) {
        openSaved(id);
        type("Profile name", name);
        type("Password", name);
        press("Save changes");
    };
    saveAs("Renamed");
    model->toggle(id);
    answers.release();
    ASSERT_TRUE(closes());
    EXPECT_EQ(model->profile(id)->name, "Renamed");
    EXPECT_TRUE(model->profile(id)->enabled);

    model->remove(id);
    saveAs("Kept");
    answers.release(2);
    ASSERT_TRUE(saysSomething());
    EXPECT_TRUE(message().startsWith("This profile was removed meanwhile.")) << message().toStdString();
    EXPECT_TRUE(model->profiles().empty());
    EXPECT_EQ(line("Profile name").text(), "Kept");
    press("Create profile");
    answers.release(2);
    ASSERT_TRUE(closes());
    EXPECT_EQ(model->profiles().front().name, "Kept");
    EXPECT_EQ(calls, "save Renamed, remove, save Kept, remove, save Kept, ") << "no password without its profile";
}

TEST_F(ProfileEditorTest, DemonstrationUsesNoServerAndNoKeyring) {
    passwords.read = [](const Uuid&) -> std::string { throw std::logic_error("read"); };
    passwords.save = [](const std::string&, const Uuid&) { throw std::logic_error("stored"); };
    startModel(true);
    open(model->profiles().front().id);
    EXPECT_TRUE(line("Password").isEnabled());
    EXPECT_FALSE(button("Test connection").isEnabled());
    press("Edit sync contents…");
    EXPECT_EQ(message(), "Not available in the demonstration.");
    EXPECT_FALSE(browsedForSync);
    type("Password", "x"); // the sample's folder does not exist
    press("Save changes");
    EXPECT_FALSE(editor->isVisible()) << message().toStdString();
}

} // namespace
} // namespace zembrastel::testing
