#include "screen.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/content_picker/content_picker.h"
#include "ui/theme/theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QListView>
#include <QScopeGuard>
#include <QTest>

#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>

namespace zembrastel::ui {
namespace {
using testing::FtpServer;
using testing::LocalSite;

namespace fs = std::filesystem;

class Picker : public ::testing::Test {
protected:
    Picker() : server(FtpServer::Kind::vsftpd), site(server) {
        theme().apply(Appearance::light);
        fs::create_directory(server.root() / "site");
        site.profile.exclusions = Exclusions("*.log");
    }

    void put(const QStringList& paths) {
        for (const QString& path : paths) server.put("site/" + path.toStdString(), "x");
    }

    RemoteDownloadPicker& open(bool forSync = true, const DownloadSelection& chosen = {}) {
        picker = std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, chosen, forSync,
            [this](const DownloadSelection& selection) { applied = selection; });
        picker->open();
        list = picker->findChild<QListView*>();
        return *picker;
    }

    [[nodiscard]] bool settles() {
        return testing::waitFor([this] { return picker->browser().loading().empty(); });
    }

    void toggle(const std::string& path) {
        picker->browser().toggle(path);
        ASSERT_TRUE(settles());
    }

    // What a screen reader would say of every line.
    [[nodiscard]] QStringList lines() const {
        QStringList said;
        for (int row = 0; row < list->model()->rowCount(); ++row) said += line(row);
        return said;
    }
    [[nodiscard]] QString line(int row) const {
        return list->model()->index(row, 0).data(Qt::AccessibleTextRole).toString();
    }

    void key(Qt::Key which) { QTest::keyClick(list, which); }

    void click(int row, int x) {
        const QRect place = list->visualRect(list->model()->index(row, 0));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, {place.left() + x, place.center().y()});
    }

    void press(const QString& label) { testing::button(*picker, label).click(); }
    [[nodiscard]] bool shows(const QString& text) const { return testing::findLabel(*picker, text) != nullptr; }

    FtpServer server;
    LocalSite site;
    QtMainContext context;
    std::unique_ptr<RemoteDownloadPicker> picker;
    QListView* list = nullptr;
    std::optional<DownloadSelection> applied;
};

TEST_F(Picker, EveryLineSaysWhatItIs) {
    put({"docs/a.txt", "trace.log"});
    fs::create_directory(server.root() / "site/empty");
    testing::writeTree(site.root(), {{"drafts/idea.log", ""}});
    open(true, {.rules = {{"docs/a.txt", true}}});
    EXPECT_EQ(lines(), QStringList{"Loading folder…"});
    ASSERT_TRUE(settles());
    toggle("empty");
    toggle("drafts");
    picker->browser().toggle("docs");
    EXPECT_EQ(
        lines(),
        (QStringList{
            "docs, open folder, Partially selected", "Loading folder…", "drafts, open folder, Not selected, Local only",
            "idea.log, Not selected, Local only, Excluded", "empty, open folder, Not selected, Empty folder",
            "This remote folder is empty.", "trace.log, Not selected, Excluded"}));
    EXPECT_TRUE(shows("1 item selected"));
    ASSERT_TRUE(settles());
    EXPECT_EQ(line(1), "a.txt, Selected");
    EXPECT_TRUE(shows("1 file selected"));
    EXPECT_EQ(list->model()->index(1, 0).data(Qt::ToolTipRole), "<span>docs/a.txt</span>");
}

TEST_F(Picker, KeysAloneFoldAndTickAndOnlyConfirmingHandsTheSelectionOver) {
    put({"docs/a.txt", "docs/b.txt", "index.html"});
    open();
    ASSERT_TRUE(settles());
    EXPECT_EQ(list->currentIndex().row(), 0) << "the keyboard went on from the line that said it was loading";
    key(Qt::Key_Right);
    ASSERT_TRUE(settles());
    key(Qt::Key_Right);
    EXPECT_EQ(list->currentIndex().row(), 1);
    key(Qt::Key_Space);
    EXPECT_EQ(line(0), "docs, open folder, Partially selected");
    key(Qt::Key_Left);
    EXPECT_EQ(list->currentIndex().row(), 0);
    key(Qt::Key_Space);
    EXPECT_EQ(line(2), "b.txt, Selected") << "a part became the whole";
    key(Qt::Key_Left);
    EXPECT_EQ(list->model()->rowCount(), 2);
    key(Qt::Key_Down);
    key(Qt::Key_Space);
    EXPECT_TRUE(shows("1 folder and 1 file selected"));

    key(Qt::Key_Escape);
    EXPECT_FALSE(picker->isVisible());
    EXPECT_FALSE(applied);
    picker->open();
    press("Use sync selection");
    EXPECT_FALSE(picker->isVisible());
    ASSERT_TRUE(applied);
    EXPECT_EQ(applied->rules, (std::map<std::string, bool, std::less<>>{{"docs", true}, {"index.html", true}}));
}

TEST_F(Picker, PointerHitsWhatItPointsAtAndNothingElse) {
    put({"docs/a.txt", "index.html"});
    open(false);
    ASSERT_TRUE(settles());
    click(0, 200); // beside the name
    EXPECT_TRUE(shows("Nothing selected"));
    EXPECT_TRUE(picker->browser().expanded().empty());
    click(0, 14);
    ASSERT_TRUE(settles());
    EXPECT_EQ(list->model()->rowCount(), 3);
    click(1, 24 + 39);
    EXPECT_EQ(picker->selection().rules, (std::map<std::string, bool, std::less<>>{{"docs/a.txt", true}}));
    press("Select all");
    EXPECT_TRUE(shows("Everything selected"));
    click(2, 39);
    EXPECT_TRUE(shows("Everything selected, 1 exception"));
    press("Select none");
    EXPECT_FALSE(picker->selection().hasSelection());
}

TEST_F(Picker, WhereOneReadsFromRightTheRowsAreMirroredForPointerAndKeys) {
    put({"docs/a.txt", "index.html"});
    QApplication::setLayoutDirection(Qt::RightToLeft);
    const auto restore = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
    open();
    ASSERT_TRUE(settles());
    const int width = list->visualRect(list->model()->index(0, 0)).width();
    click(0, 39);
    EXPECT_TRUE(shows("Nothing selected"));
    click(0, width - 39);
    EXPECT_TRUE(shows("1 folder selected"));
    key(Qt::Key_Left);
    ASSERT_TRUE(settles());
    EXPECT_EQ(line(1), "a.txt, Selected");
    key(Qt::Key_Right);
    EXPECT_EQ(list->model()->rowCount(), 2);
    click(0, width - 14);
    EXPECT_EQ(list->model()->rowCount(), 3);
}

TEST_F(Picker, TheRowThatKeysActOnIsMarkedOnceKeysAreUsed) {
    put({"a", "b"});
    open();
    ASSERT_TRUE(settles());
    const auto isRinged = [this](int row) {
        const QRect place = list->visualRect(list->model()->index(row, 0));
        return list->viewport()->grab(place).toImage().pixelColor(1, place.height() / 2) == colours().accent;
    };
    list->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(picker.get(), testing::patience));
    EXPECT_FALSE(isRinged(0)) << "the sheet was not opened by keyboard";
    key(Qt::Key_Down);
    EXPECT_TRUE(isRinged(1));
    EXPECT_FALSE(isRinged(0));
}

TEST_F(Picker, SecondEnterAfterRetryConfirmsNothing) {
    put({"lost/page", "other/page"});
    open();
    ASSERT_TRUE(settles());
    fs::rename(server.root() / "site/lost", server.root() / "lost");
    toggle("lost");
    ASSERT_EQ(line(1), "curl: (9) Server denied you to change to the given directory, Retry");
    fs::rename(server.root() / "lost", server.root() / "site/lost");
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_EQ(line(1), "Loading folder…");
    EXPECT_EQ(list->currentIndex().row(), 1);
    key(Qt::Key_Return);
    EXPECT_TRUE(picker->isVisible());
    ASSERT_TRUE(settles());
    EXPECT_EQ(line(1), "page, Not selected");
    EXPECT_EQ(list->currentIndex().row(), 1);
    EXPECT_FALSE(applied);
}

TEST_F(Picker, RefreshLooksAgainAndKeepsTheTicks) {
    put({"old/page"});
    open();
    ASSERT_TRUE(settles());
    key(Qt::Key_Space);
    put({"new/page"});
    press("Refresh");
    press("Refresh"); // while the first is still under way
    ASSERT_TRUE(settles());
    EXPECT_EQ(lines(), (QStringList{"new, closed folder, Not selected", "old, closed folder, Selected"}));
    press("Cancel");
    EXPECT_FALSE(applied);
}

TEST_F(Picker, FolderOfFiftyThousandOpensAndScrollsWithoutAStall) {
    constexpr int many = 50000;
    testing::writeFile(site / "many/f0", "");
    for (int number = 1; number < many; ++number) { // links of one file are made five times as fast as files
        fs::create_hard_link(site / "many/f0", site / ("many/f" + std::to_string(number)));
    }
    open();
    ASSERT_TRUE(settles());
    const auto busy = [](const auto& work) {
        timespec before{};
        timespec after{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
        work();
        QCoreApplication::processEvents();
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
        return double(after.tv_sec - before.tv_sec) + 1e-9 * double(after.tv_nsec - before.tv_nsec);
    };
    toggle("many");
    ASSERT_EQ(list->model()->rowCount(), many + 1);
    // Anything that grows with the square of the number takes minutes; sanitizers alone take ten times as long.
    constexpr double limit = 1;
    key(Qt::Key_Home);
    EXPECT_LT(busy([this] { key(Qt::Key_Left); }), limit);
    EXPECT_EQ(list->model()->rowCount(), 1);
    EXPECT_LT(busy([this] { key(Qt::Key_Right); }), limit);
    EXPECT_LT(busy([this] { key(Qt::Key_End); }), limit);
    EXPECT_LT(busy([this] { key(Qt::Key_Space); }), limit);
    EXPECT_EQ(line(many), "f49999, Selected, Local only");
    EXPECT_TRUE(list->viewport()->rect().intersects(list->visualRect(list->currentIndex())));
    EXPECT_LT(busy([this] { key(Qt::Key_Left); }), limit);
    EXPECT_EQ(list->currentIndex().row(), 0);
}

TEST_F(Picker, EveryControlHasANameAndTheSheetFitsASmallWindow) {
    for (const bool forSync : {true, false}) {
        open(forSync);
        picker->resize(10, 10);
        EXPECT_EQ(picker->size(), QSize(560, 440));
        EXPECT_EQ(testing::namelessControls(*picker), QStringList());
        EXPECT_TRUE(shows(forSync ? "Choose what to synchronise" : "Choose what to download"));
    }
}

} // namespace
} // namespace zembrastel::ui
