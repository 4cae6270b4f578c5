// The sheet with kept versions, and the copying of details for whoever helps.
#include "ui/backups/backups_sheet.h"

#include "screen.h"
#include "support/file_tree.h"
#include "support/kept_version.h"
#include "support/temporary_folder.h"
#include "ui/backups/backup_list.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/main_window/profile_detail.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace zembrastel::testing {

using namespace ui;

namespace {

namespace fs = std::filesystem;

class BackupsSheetTest : public ::testing::Test {
protected:
    BackupsSheetTest() {
        fs::create_directory(site);
        profile.name = "Site";
        profile.localFolder = site.string();
    }

    void open() {
        sheet = std::make_unique<BackupsSheet>(context, profile);
        sheet->open();
        list = sheet->findChild<BackupListView*>();
        waitForList();
    }

    void waitForList() const {
        QSignalSpy listed(sheet.get(), &BackupsSheet::listed);
        ASSERT_TRUE(listed.wait(patience));
    }

    [[nodiscard]] bool shows(const QString& words) const {
        const auto labels = sheet->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&words](const QLabel* label) {
            return label->isVisible() && label->text().contains(words);
        });
    }

    TemporaryFolder folder;
    const fs::path site = folder / "site";
    Profile profile;
    QtMainContext context;
    std::unique_ptr<BackupsSheet> sheet;
    BackupListView* list = nullptr;
};

TEST_F(BackupsSheetTest, FolderWithoutBackupsSaysSoAndOffersNothing) {
    open();
    EXPECT_TRUE(list->accessibleDescription().startsWith("No backups yet."));
    EXPECT_TRUE(shows("No versions"));
    EXPECT_FALSE(button(*sheet, "Open").isEnabled());
    EXPECT_FALSE(button(*sheet, "Restore…").isEnabled());
    fs::remove_all(site);
    sheet->refresh();
    waitForList();
    EXPECT_TRUE(list->accessibleDescription().startsWith("The backups could not be read."));
}

TEST_F(BackupsSheetTest, VersionIsRestoredOnlyWhenConfirmed) {
    writeFile(site / "index.html", "now");
    keepVersion(site, "11111111-2222-4333-8444-555555555555", "index.html", "oldest", 5);
    keepVersion(site, "AAAAAAAA-2222-4333-8444-555555555555", "index.html", "older", 9);
    open();
    EXPECT_TRUE(shows("1 file, 2 versions, 11 bytes"));
    EXPECT_EQ(namelessControls(*sheet), QStringList());
    const auto ask = [this](const QString& answer) {
        QTest::mouseClick(&button(*sheet, "Restore…"), Qt::LeftButton);
        auto* const question = sheet->findChild<QDialog*>();
        ASSERT_NE(question, nullptr);
        EXPECT_TRUE(question->accessibleDescription().contains("kept as a backup"));
        QTest::mouseClick(&button(*question, answer), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    QTest::keyClick(list, Qt::Key_Down);
    ask("Cancel");
    EXPECT_EQ(readFile(site / "index.html"), "now");
    ask("Restore");
    waitForList();
    EXPECT_EQ(readFile(site / "index.html"), "oldest");
    EXPECT_TRUE(shows("index.html was restored."));
    EXPECT_TRUE(shows("1 file, 3 versions"));
    // What was chosen stays chosen.
    EXPECT_TRUE(list->currentIndex().data(Qt::AccessibleTextRole).toString().endsWith("6 bytes"));
    EXPECT_EQ(list->currentIndex().row(), 2);
}

// Stands in for the desktop, which opens files with programs.
class Desktop : public QObject {
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    Q_SLOT void open(const QUrl& url) {
        place = url.toLocalFile();
        Q_EMIT opened();
    }
    Q_SIGNAL void opened();

    QString place;
};

TEST_F(BackupsSheetTest, EnterOpensTheChosenVersionAndNoOther) {
    keepVersion(site, "11111111-2222-4333-8444-555555555555", "index.html", "oldest", 5);
    keepVersion(site, "AAAAAAAA-2222-4333-8444-555555555555", "index.html", "older", 9);
    open();
    Desktop desktop;
    QSignalSpy opened(&desktop, &Desktop::opened);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_TRUE(opened.wait(patience));
    EXPECT_EQ(readFile(desktop.place.toStdString()), "oldest");
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(BackupsSheetTest, SheetThatIsClosedEarlyIsNotTold) {
    keepVersion(site, "11111111-2222-4333-8444-555555555555", "index.html", "old", 5);
    sheet = std::make_unique<BackupsSheet>(context, profile);
    sheet.reset();
    QCoreApplication::processEvents();
}

} // namespace
} // namespace zembrastel::testing

#include "backups_sheet_test.moc"
