#include "model/error.h"
#include "screen.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/import/import_sheet.h"
#include "ui/widgets/message_strip.h"

#include <gtest/gtest.h>

#include <QAbstractItemModel>
#include <QFileDialog>
#include <QListView>

#include <memory>

using namespace zembrastel;
using namespace zembrastel::ui;
using namespace zembrastel::testing;

namespace {

class ImportSheetTest : public ::testing::Test {
protected:
    ImportSheetTest() {
        std::filesystem::create_directory(folder / "site");
        model = std::make_unique<AppModel>(
            context, AppModel::Options{
                         .storeOverride = StateStore(folder / "state"),
                         .passwordAccess = {
                             .save =
                                 [this](const std::string& password, const Uuid&) {
                                     if (locked) throw SyncError("The store is locked.");
                                     stored.push_back(password);
                                 },
                             .read = [](const Uuid&) -> std::string { throw SyncError("Not stored."); },
                             .remove = [](const Uuid&) {}}});
        bridge = std::make_unique<ModelBridge>(*model);
    }

    void open(const std::string& bytes) {
        writeFile(folder / "sitemanager.xml", bytes);
        sheet = std::make_unique<ImportSheet>(*bridge, context, folder / "sitemanager.xml", nullptr);
        sheet->open();
        ASSERT_TRUE(waitFor([this] { return list().isEnabled(); }));
    }

    void openSites() {
        open(
            R"(<FileZilla3><Servers>
              <Server><Name>whole</Name><Host>a.example</Host><Protocol>4</Protocol><User>u</User><LocalDir>)"
            + (folder / "site").string() + R"(</LocalDir><Pass encoding="base64">aHVzaA==</Pass></Server>
              <Server><Name>no folder</Name><Host>b.example</Host><Protocol>4</Protocol><User>u</User></Server>
              <Server><Name>shell</Name><Host>c.example</Host><Protocol>1</Protocol><User>u</User></Server>
            </Servers></FileZilla3>)");
    }

    [[nodiscard]] QListView& list() const { return *sheet->findChild<QListView*>(QString()); }
    [[nodiscard]] std::string message() const { return sheet->findChild<MessageStrip*>()->message().toStdString(); }

    [[nodiscard]] std::string accessibleText(int row) const {
        return list().model()->index(row, 0).data(Qt::AccessibleTextRole).toString().toStdString();
    }

    void press(const QString& text) const {
        auto& wanted = button(*sheet, text);
        ASSERT_TRUE(wanted.isEnabled()) << text.toStdString();
        QTest::mouseClick(&wanted, Qt::LeftButton);
    }

    TemporaryFolder folder;
    QtMainContext context;
    bool locked = false;
    std::vector<std::string> stored;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ModelBridge> bridge;
    std::unique_ptr<ImportSheet> sheet;
};

TEST_F(ImportSheetTest, WhatWasTickedIsThereWithItsPasswordAndNeedsNothingMoreToStart) {
    openSites();
    EXPECT_EQ(
        accessibleText(0), "whole, Selected, u@a.example:21 · FTPS (TLS) · /, Local folder: "
                               + (folder / "site").string() + ", The site names no remote folder; \"/\" is taken.");
    EXPECT_EQ(
        accessibleText(1),
        "no folder, u@b.example:21 · FTPS (TLS) · /, It has no local folder., Choose local folder…, The "
        "site names no remote folder; \"/\" is taken.");
    EXPECT_EQ(accessibleText(2), "shell, Skipped: It uses SFTP; only FTP and FTPS are supported.");
    press(QStringLiteral("Import 1 profile"));
    ASSERT_TRUE(waitFor([this] { return !sheet->isVisible(); }));
    ASSERT_EQ(model->profiles().size(), 1U);
    const Profile& imported = model->profiles().front();
    EXPECT_EQ(imported.name, "whole");
    EXPECT_FALSE(imported.enabled);
    EXPECT_FALSE(imported.requiresDownloadSelection());
    EXPECT_EQ(model->selection(), imported.id);
    EXPECT_EQ(stored, std::vector<std::string>{"hush"});
    model->toggle(imported.id);
    EXPECT_EQ(model->status(imported.id).title(), "Checking server"); // the password was at hand
}

TEST_F(ImportSheetTest, AMissingFolderIsNamedByKeyboardAndWhatCannotBeTakenStaysUnticked) {
    openSites();
    QTest::keyClick(&list(), Qt::Key_Space);
    EXPECT_TRUE(accessibleText(0).starts_with("whole, Not selected"));
    for (int row = 1; row < 3; ++row) {
        QTest::keyClick(&list(), Qt::Key_Down);
        QTest::keyClick(&list(), Qt::Key_Space);
        EXPECT_EQ(list().model()->index(row, 0).data(Qt::AccessibleTextRole).toString().indexOf("elected"), -1);
    }
    QTest::keyClick(&list(), Qt::Key_Up);
    QTest::keyClick(&list(), Qt::Key_Return);
    auto* const chooser = sheet->findChild<QFileDialog*>();
    ASSERT_NE(chooser, nullptr);
    Q_EMIT chooser->fileSelected(QString::fromStdString((folder / "site").string()));
    chooser->close();
    EXPECT_TRUE(accessibleText(1).starts_with("no folder, Selected")) << accessibleText(1);
    press(QStringLiteral("Import 1 profile"));
    ASSERT_TRUE(waitFor([this] { return !sheet->isVisible(); }));
    EXPECT_EQ(model->profiles().front().localFolder, folder / "site");
}

TEST_F(ImportSheetTest, WhatFailsIsToldInTheSheetAndLosesNothing) {
    open("<not FileZilla's/>");
    EXPECT_TRUE(message().starts_with("Cannot import sitemanager.xml: ")) << message();
    sheet->reject();

    locked = true;
    openSites();
    press(QStringLiteral("Import 1 profile"));
    ASSERT_TRUE(waitFor([this] { return !message().empty(); }));
    EXPECT_TRUE(message().starts_with("The store is locked. ")) << message();
    EXPECT_TRUE(model->profiles().empty());
    press(QStringLiteral("Keep the password for this session only"));
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(model->profiles().size(), 1U);

    openSites();
    EXPECT_EQ(accessibleText(0).find("elected"), std::string::npos); // it is there already
    EXPECT_NE(accessibleText(0).find("There is a profile of this name already."), std::string::npos);
}

} // namespace
