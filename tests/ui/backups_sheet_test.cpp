#include "ui/backups/backups_sheet.h"

#include "screen_fixture.h"
#include "support/kept_version.h"

#include <QDesktopServices>
#include <QSignalSpy>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;

class BackupsSheetTest : public ScreenFixture {
protected:
    BackupsSheetTest() {
        fs::create_directory(site);
        profile.name = "Site";
        profile.localFolder = site.string();
    }

    void keepTwoVersions() const {
        keepVersion(site, "11111111-2222-4333-8444-555555555555", "index.html", "oldest", 5);
        keepVersion(site, "AAAAAAAA-2222-4333-8444-555555555555", "index.html", "older", 9);
    }

    void open() {
        sheet = std::make_unique<BackupsSheet>(context, profile);
        screen = sheet.get();
        sheet->open();
        waitForList();
    }

    void waitForList() const {
        QSignalSpy listed(sheet.get(), &BackupsSheet::listed);
        ASSERT_TRUE(listed.wait(patience));
    }

    const fs::path site = folder / "site";
    Profile profile;
    std::unique_ptr<BackupsSheet> sheet;
};

TEST_F(BackupsSheetTest, EmptyListNamesTheReason) {
    open();
    EXPECT_TRUE(list().accessibleDescription().startsWith("No backups yet."));
    EXPECT_TRUE(shows("No versions"));
    EXPECT_FALSE(button("Open").isEnabled());
    EXPECT_FALSE(button("Restore…").isEnabled());
    fs::remove_all(site);
    sheet->refresh();
    waitForList();
    EXPECT_TRUE(list().accessibleDescription().startsWith("The backups could not be read."));
}

TEST_F(BackupsSheetTest, UnconfirmedRestoreChangesNothing) {
    writeFile(site / "index.html", "now");
    keepTwoVersions();
    open();
    EXPECT_TRUE(shows("1 file, 2 versions, 11\u00a0bytes"));
    const auto ask = [this](const QString& answer) {
        press("Restore…");
        auto* const question = sheet->findChild<QDialog*>();
        ASSERT_NE(question, nullptr);
        EXPECT_TRUE(question->accessibleDescription().contains("kept as a backup"));
        QTest::mouseClick(&testing::button(*question, answer), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    key(Qt::Key_Down);
    ask("Cancel");
    EXPECT_EQ(readFile(site / "index.html"), "now");
    ask("Restore");
    waitForList();
    EXPECT_EQ(readFile(site / "index.html"), "oldest");
    EXPECT_TRUE(message().startsWith("index.html was restored."));
    EXPECT_TRUE(shows("1 file, 3 versions, 14\u00a0bytes"));
    EXPECT_TRUE(row(list().currentIndex().row()).endsWith("6\u00a0bytes")) << "the selected version stays selected";
    EXPECT_EQ(list().currentIndex().row(), 2);
}

// Replaces the desktop, which opens files with other programs.
class Desktop : public QObject {
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler("file"); }

    Q_SLOT void open(const QUrl& url) { opened = url.toLocalFile(); }

    QString opened;
};

TEST_F(BackupsSheetTest, EnterOpensTheSelectedVersionOnly) {
    keepTwoVersions();
    open();
    const Desktop desktop;
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    ASSERT_TRUE(waitFor([&desktop] { return !desktop.opened.isEmpty(); }));
    EXPECT_EQ(readFile(desktop.opened.toStdString()), "oldest");
    EXPECT_TRUE(sheet->isVisible());
}

TEST_F(BackupsSheetTest, EarlyClosedSheetReceivesNothing) {
    keepTwoVersions();
    sheet = std::make_unique<BackupsSheet>(context, profile);
    sheet.reset();
    QCoreApplication::processEvents();
}

} // namespace
} // namespace zembrastel::testing

#include "backups_sheet_test.moc"
