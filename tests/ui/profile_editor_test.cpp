#include "ui/profile_editor/profile_editor.h"

#include "model/error.h"
#include "screen.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/temporary_folder.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/theme/theme.h"
#include "ui/widgets/message_strip.h"
#include "ui/widgets/push_button.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QComboBox>
#include <QElapsedTimer>

#include <filesystem>
#include <latch>
#include <map>
#include <memory>
#include <semaphore>

using namespace zembrastel;
using namespace zembrastel::ui;
using zembrastel::testing::FtpServer;
using zembrastel::testing::readFile;
using zembrastel::testing::TemporaryFolder;
using zembrastel::testing::waitFor;
namespace fs = std::filesystem;

namespace {

constexpr const char* noService = "Keychain: The name org.freedesktop.secrets was not provided by any .service files.";

class ProfileEditorTest : public ::testing::Test {
protected:
    ProfileEditorTest() {
        theme().apply(Appearance::light);
        fs::create_directory(folder / "site");
    }

    void startModel(bool demo = false) {
        model = std::make_unique<AppModel>(
            context, AppModel::Options{
                         .demonstration = demo ? std::optional(demonstration()) : std::nullopt,
                         .storeOverride = StateStore(folder / "state"),
                         .passwordAccess = passwords});
        bridge = std::make_unique<ModelBridge>(*model);
    }

    void openEditor(const std::optional<Uuid>& id = std::nullopt, bool syncContents = false) {
        if (!model) startModel();
        editor = std::make_unique<ProfileEditor>(*bridge, context, id, nullptr);
        editor->setBrowse(
            [this](
                const Profile& draft, const std::string&, bool syncMode, const DownloadSelection& current, auto apply) {
                browsed = draft;
                browsedForSync = syncMode;
                offered = current;
                applyChoice = apply;
            });
        if (syncContents) editor->openSyncContentsOnAppear();
        editor->open();
    }

    // A saved profile, not watched, with the password "old" in the secret store.
    Profile savedProfile() {
        Profile profile;
        profile.name = "Site";
        profile.host = "127.0.0.1";
        profile.port = 1; // nothing listens there
        profile.username = "web";
        profile.localFolder = folder / "site";
        stored[profile.id] = "old";
        if (!model) startModel();
        model->save(profile, std::nullopt);
        return *model->profile(profile.id);
    }

    void fillIn() {
        type("Profile name", "Site");
        type("Server", "127.0.0.1");
        type("Port", "1");
        type("Username", "web");
        type("Password", "s3cret");
        type("Local folder", QString::fromStdString(folder / "site"));
    }

    [[nodiscard]] QLineEdit& line(const char* label) const {
        return zembrastel::testing::line(*editor, QString::fromUtf8(label));
    }

    void type(const char* label, const QString& text) const {
        line(label).selectAll();
        QTest::keyClicks(&line(label), text);
    }

    [[nodiscard]] QAbstractButton& button(const char* name) const {
        return zembrastel::testing::button(*editor, QString::fromUtf8(name));
    }
    [[nodiscard]] QString message() const { return editor->findChild<MessageStrip*>()->message(); }
    [[nodiscard]] PushButton& saving() const {
        for (auto* const candidate : editor->findChildren<PushButton*>()) {
            if (candidate->isDefault()) return *candidate;
        }
        throw std::logic_error("no default button");
    }

    TemporaryFolder folder;
    std::map<Uuid, std::string> stored;
    int saves = 0;
    AppModel::PasswordAccess passwords{
        .save =
            [this](const std::string& password, const Uuid& id) {
                ++saves;
                stored[id] = password;
            },
        .read = [this](const Uuid& id) { return stored.at(id); },
        .remove = [this](const Uuid& id) { stored.erase(id); }};
    QtMainContext context;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ModelBridge> bridge;
    std::unique_ptr<ProfileEditor> editor;
    std::optional<Profile> browsed;
    bool browsedForSync = false;
    DownloadSelection offered;
    std::function<void(const DownloadSelection&)> applyChoice;
};

const char* const startLabel = "Start watching this folder";
const char* const downloadLabel = "Download server files to the local folder first";

} // namespace

TEST(EditorRules, EachObjectionPointsAtTheFieldThatHasToChange) {
    Profile valid;
    valid.name = "Site";
    valid.host = "host";
    valid.username = "web";
    valid.localFolder = "/tmp";
    EXPECT_EQ(validate(valid).message, "");
    struct Case {
        EditorField field;
        std::function<void(Profile&)> spoil;
    };
    const std::vector<Case> cases{
        {EditorField::name, [](Profile& p) { p.name = " ", p.localFolder = ""; }},
        {EditorField::server, [](Profile& p) { p.host = "ftps://host"; }},
        {EditorField::server, [](Profile& p) { p.host = "host:21", p.port = 0; }},
        {EditorField::port, [](Profile& p) { p.port = 65536; }},
        {EditorField::username, [](Profile& p) { p.username = "a:b", p.remoteFolder = ".."; }},
        {EditorField::username, [](Profile& p) { p.username = ""; }},
        {EditorField::remoteFolder, [](Profile& p) { p.remoteFolder = "/a/../b"; }},
        {EditorField::localFolder, [](Profile& p) { p.localFolder = "/nowhere/at/all"; }},
        {EditorField::downloadContents, [](Profile& p) { p.needsDownload = true; }},
    };
    for (const auto& [field, spoil] : cases) {
        Profile draft = valid;
        spoil(draft);
        const ValidationProblem problem = validate(draft);
        EXPECT_EQ(problem.field, field) << problem.message;
        EXPECT_NE(problem.message, "");
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

TEST(EditorRules, TheSavingButtonNeverPromisesWhatItDoesNotDo) {
    EXPECT_EQ(savingLabel({.busy = true, .downloadFirst = true}), QStringLiteral("Saving…"));
    EXPECT_EQ(savingLabel({.downloadFirst = true}), QStringLiteral("Choose download contents…"));
    EXPECT_EQ(
        savingLabel({.isNew = true, .downloadFirst = true, .contentsChosen = true}),
        QStringLiteral("Create profile & download"));
    EXPECT_EQ(savingLabel({.downloadFirst = true, .contentsChosen = true}), QStringLiteral("Save & resynchronise"));
    EXPECT_EQ(savingLabel({.isNew = true, .contentsChosen = true}), QStringLiteral("Create profile"));
    EXPECT_EQ(savingLabel({}), QStringLiteral("Save changes"));
    EXPECT_EQ(portAfterChange(21, TransferProtocol::ftps, TransferProtocol::implicitTLS), 990);
    EXPECT_EQ(portAfterChange(2121, TransferProtocol::ftps, TransferProtocol::implicitTLS), 2121);
}

TEST_F(ProfileEditorTest, ANewProfileGetsItsDownloadContentsBeforeItIsSaved) {
    openEditor();
    QTest::keyClick(&line("Profile name"), Qt::Key_Return);
    EXPECT_EQ(message(), QStringLiteral("Enter a name, server, username and local folder."));
    EXPECT_TRUE(line("Profile name").property("bad").toBool());
    EXPECT_FALSE(browsed.has_value()) << "a server that is not known cannot be browsed";
    fillIn();
    EXPECT_EQ(message(), QString());
    EXPECT_FALSE(line("Profile name").property("bad").toBool());

    QTest::keyClick(&line("Profile name"), Qt::Key_Return);
    ASSERT_TRUE(browsed.has_value());
    EXPECT_FALSE(browsedForSync);
    EXPECT_FALSE(offered.hasSelection()) << "nothing is selected automatically";
    applyChoice(DownloadSelection{}); // nothing ticked
    EXPECT_EQ(saving().text(), QStringLiteral("Choose download contents…"));
    DownloadSelection chosen;
    chosen.set("docs", true);
    applyChoice(chosen);
    EXPECT_EQ(saving().text(), QStringLiteral("Create profile && download"));
    EXPECT_EQ(saves, 0);

    QTest::keyClick(&saving(), Qt::Key_Return);
    ASSERT_TRUE(waitFor([this] { return !editor->isVisible(); }));
    ASSERT_EQ(model->profiles().size(), 1U);
    const Profile& saved = model->profiles().front();
    EXPECT_TRUE(saved.enabled && saved.needsDownload && model->running(saved.id));
    EXPECT_EQ(saved.initialDownloadSelection, chosen);
    EXPECT_EQ(saved.effectiveSyncSelection(), chosen);
    EXPECT_EQ(saved.transport, TransferProtocol::ftps);
    EXPECT_EQ(stored.at(saved.id), "s3cret");
}

TEST_F(ProfileEditorTest, ADownloadIsWantedOnlyTogetherWithTheStart) {
    openEditor();
    EXPECT_TRUE(button(startLabel).isChecked());
    QTest::keyClick(&button(downloadLabel), Qt::Key_Space);
    QTest::keyClick(&button(startLabel), Qt::Key_Space);
    EXPECT_FALSE(editor->draft().enabled || editor->draft().needsDownload);
    EXPECT_EQ(saving().text(), QStringLiteral("Create profile"));
    QTest::keyClick(&button(downloadLabel), Qt::Key_Space);
    EXPECT_TRUE(editor->draft().enabled && editor->draft().needsDownload);
}

TEST_F(ProfileEditorTest, ADraftThatIsCancelledLeavesNothingBehind) {
    const Profile before = savedProfile();
    openEditor(before.id);
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    type("Profile name", QStringLiteral("Other"));
    type("Password", QStringLiteral("new"));
    EXPECT_EQ(line("Password").echoMode(), QLineEdit::Password);
    QTest::keyClick(&line("Profile name"), Qt::Key_Escape);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(*model->profile(before.id), before);
    EXPECT_EQ(stored.at(before.id), "old");
}

TEST_F(ProfileEditorTest, WaitingForTheSecretStoreBlocksNothingAndAnUntouchedPasswordStaysAsItIs) {
    std::latch answer(1);
    passwords.read = [&](const Uuid&) -> std::string {
        answer.wait();
        throw SyncError("Keychain: No password is stored for this profile; it must be entered again.");
    };
    const Profile before = savedProfile();
    openEditor(before.id);
    EXPECT_FALSE(line("Password").isEnabled());
    EXPECT_EQ(line("Password").placeholderText(), QStringLiteral("Reading from keyring…"));
    EXPECT_FALSE(button("Test connection").isEnabled());
    answer.count_down();
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    EXPECT_TRUE(message().contains(QStringLiteral("it must be entered again")));

    type("Profile name", QStringLiteral("Renamed"));
    button("Save changes").click();
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(model->profile(before.id)->name, "Renamed");
    EXPECT_EQ(saves, 0) << "an empty field must not replace a password that could not be read";

    openEditor(before.id);
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    type("Password", QStringLiteral("entered again"));
    button("Save changes").click();
    EXPECT_EQ(saving().text(), QStringLiteral("Saving…"));
    EXPECT_FALSE(line("Profile name").isEnabled());
    ASSERT_TRUE(waitFor([this] { return !editor->isVisible(); }));
    EXPECT_EQ(stored.at(before.id), "entered again");
}

TEST_F(ProfileEditorTest, WithoutASecretServiceThePasswordCanBeKeptForTheSession) {
    passwords.save = [](const std::string&, const Uuid&) { throw SyncError(noService); };
    openEditor();
    fillIn();
    button(downloadLabel).click();
    button(startLabel).click();
    button("Create profile").click();
    ASSERT_TRUE(waitFor([this] { return !message().isEmpty(); }));
    EXPECT_TRUE(message().startsWith(QLatin1String(noService)));
    EXPECT_TRUE(model->profiles().empty());
    EXPECT_TRUE(line("Profile name").isEnabled()) << "it can be mended and saved again";
    EXPECT_EQ(editor->focusWidget(), &button("Keep the password for this session only"));

    QTest::keyClick(&button("Keep the password for this session only"), Qt::Key_Return);
    EXPECT_FALSE(editor->isVisible());
    ASSERT_EQ(model->profiles().size(), 1U);
    std::string kept;
    model->withPassword(model->profiles().front().id, [&kept](const std::string& password) { kept = password; }, {});
    EXPECT_EQ(kept, "s3cret");
    EXPECT_TRUE(stored.empty());
}

TEST_F(ProfileEditorTest, AProfileThatCannotBeSavedStoresNoPassword) {
    startModel(false);
    Profile watched = savedProfile();
    model->start(watched.id);
    openEditor();
    fillIn();
    button(downloadLabel).click();
    button("Create profile").click();
    EXPECT_EQ(
        message(),
        QStringLiteral(
            "Another active profile already watches this local folder. Pause it before using this profile."));
    EXPECT_TRUE(line("Local folder").property("bad").toBool());
    EXPECT_EQ(saves, 0);
    EXPECT_EQ(stored.size(), 1U);
    EXPECT_EQ(model->profiles().size(), 1U);
}

TEST_F(ProfileEditorTest, EditSyncContentsOpensOnceThePasswordIsThereAndEndsInTheProfile) {
    const Profile before = savedProfile();
    openEditor(before.id, true);
    EXPECT_FALSE(browsed.has_value());
    ASSERT_TRUE(waitFor([this] { return browsed.has_value(); }));
    EXPECT_TRUE(browsedForSync);
    EXPECT_EQ(offered, DownloadSelection::everything());
    DownloadSelection chosen;
    chosen.set("docs", true);
    applyChoice(chosen);
    EXPECT_EQ(saving().text(), QStringLiteral("Save changes"));
    saving().click();
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(model->profile(before.id)->syncSelection, chosen);
    EXPECT_TRUE(model->profile(before.id)->needsDownload) << "added contents are downloaded before watching";

    editor.reset();
    applyChoice({}); // a picker that outlives the editor
}

TEST_F(ProfileEditorTest, TheConnectionTestTellsWhatTheServerSaysAndEndsWithTheSheet) {
    FtpServer server(FtpServer::Kind::odd);
    server.put("a.txt", "a");
    server.put("b.txt", "b");
    openEditor();
    fillIn();
    QTest::keyClick(editor->findChild<QComboBox*>(), Qt::Key_Down); // plain FTP
    type("Port", QString::number(server.port()));
    type("Username", QString::fromStdString(server.username()));
    type("Password", QString::fromStdString(server.password()));
    type("Remote folder", QString::fromStdString(server.remoteFolder()));
    button("Test connection").setFocus();
    QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(button("Test connection").isEnabled());
    QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(editor->isVisible()) << "a second press went to another button";
    ASSERT_TRUE(waitFor([this] { return !message().isEmpty(); }));
    EXPECT_EQ(
        message(), QStringLiteral("Connected. The remote folder is readable (2 items). Upload permission is checked "
                                  "when a file uploads."));

    type("Password", QStringLiteral("wrong"));
    EXPECT_EQ(message(), QString()) << "what is said no longer holds";
    button("Test connection").click();
    ASSERT_TRUE(waitFor([this] { return !message().isEmpty(); }));
    EXPECT_TRUE(message().contains(QStringLiteral("67"))) << message().toStdString();

    const fs::path heard = folder / "commands";
    FtpServer silent(FtpServer::Kind::odd, {.extra = {"--hang", "MLSD", "--log", heard}});
    type("Port", QString::number(silent.port()));
    type("Password", QString::fromStdString(silent.password()));
    button("Test connection").click();
    ASSERT_TRUE(waitFor([&heard] { return fs::exists(heard) && readFile(heard).find("MLSD") != std::string::npos; }));
    QElapsedTimer waited;
    waited.start();
    editor.reset();
    EXPECT_LT(waited.elapsed(), 15'000) << "a silent server holds curl for half a minute";
}

TEST_F(ProfileEditorTest, WhatTheModelChangesMeanwhileIsNotUndone) {
    const Profile before = savedProfile();
    openEditor(before.id);
    ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
    EXPECT_FALSE(button(startLabel).isChecked());
    model->toggle(before.id);
    EXPECT_TRUE(button(startLabel).isChecked());
    button(startLabel).click(); // now it is the user's choice
    model->toggle(before.id);
    model->toggle(before.id);
    EXPECT_FALSE(button(startLabel).isChecked());
}

TEST_F(ProfileEditorTest, MovedProfileIsOfferedToBeSentWhole) {
    const Profile before = savedProfile();
    model->save(before, std::nullopt, FileMap{{"index.html", Fingerprint{}}});
    int offers = 0;
    for (const auto& [field, text] : {std::pair("Profile name", "Other"), std::pair("Server", "127.0.0.2")}) {
        openEditor(before.id);
        QObject::connect(editor.get(), &ProfileEditor::moved, [&offers] { ++offers; });
        ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
        type(field, QString::fromUtf8(text));
        EXPECT_EQ(offers, 0);
        saving().click();
    }
    EXPECT_EQ(offers, 1);
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
    const Uuid id = savedProfile().id;
    const auto saveAs = [&](const QString& name) {
        openEditor(id);
        ASSERT_TRUE(waitFor([this] { return line("Password").isEnabled(); }));
        type("Profile name", name);
        type("Password", name);
        button("Save changes").click();
    };
    saveAs(QStringLiteral("Renamed"));
    model->toggle(id);
    answers.release();
    ASSERT_TRUE(waitFor([this] { return !editor->isVisible(); }));
    EXPECT_EQ(model->profile(id)->name, "Renamed");
    EXPECT_TRUE(model->profile(id)->enabled);

    model->remove(id);
    saveAs(QStringLiteral("Kept"));
    answers.release(2);
    ASSERT_TRUE(waitFor([this] { return !message().isEmpty(); }));
    EXPECT_TRUE(message().startsWith(QStringLiteral("This profile was removed meanwhile."))) << message().toStdString();
    EXPECT_TRUE(model->profiles().empty());
    EXPECT_EQ(line("Profile name").text(), QStringLiteral("Kept"));
    button("Create profile").click();
    answers.release(2);
    ASSERT_TRUE(waitFor([this] { return !editor->isVisible(); }));
    EXPECT_EQ(model->profiles().front().name, "Kept");
    EXPECT_EQ(calls, "save Renamed, remove, save Kept, remove, save Kept, ") << "no password stays without its profile";
}

TEST_F(ProfileEditorTest, EveryControlHasANameAndCanBeReachedWithTheTabKey) {
    openEditor();
    button("Excluded files and folders").click();
    std::vector<QWidget*> reached;
    editor->activateWindow();
    line("Profile name").setFocus();
    for (QWidget* at = editor->focusWidget(); at != nullptr;) {
        reached.push_back(at);
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name).isEmpty())
            << at->metaObject()->className();
        QTest::keyClick(at, Qt::Key_Tab);
        at = editor->focusWidget();
        if (at == reached.front() || reached.size() > 50) break;
    }
    // Seven lines, a list, a text, two switches, four buttons of the form and three below it.
    EXPECT_EQ(reached.size(), 18U);
}

TEST_F(ProfileEditorTest, TheDemonstrationTouchesNeitherServerNorSecretStore) {
    passwords.read = [](const Uuid&) -> std::string { throw std::logic_error("read"); };
    passwords.save = [](const std::string&, const Uuid&) { throw std::logic_error("stored"); };
    startModel(true);
    openEditor(model->profiles().front().id);
    EXPECT_TRUE(line("Password").isEnabled());
    EXPECT_FALSE(button("Test connection").isEnabled());
    button("Edit sync contents…").click();
    EXPECT_EQ(message(), QStringLiteral("Not available in the demonstration."));
    EXPECT_FALSE(browsed);
    type("Password", QStringLiteral("x")); // the sample's folder is on nobody's disk
    button("Save changes").click();
    EXPECT_FALSE(editor->isVisible()) << message().toStdString();
}
