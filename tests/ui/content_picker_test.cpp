#include "ui/content_picker/content_picker.h"

#include "screen_fixture.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "ui/theme/theme.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/search_field.h"

#include <ctime>
#include <filesystem>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;

using Rules = decltype(DownloadSelection::rules);

class Picker : public ScreenFixture {
protected:
    Picker() : server(FtpServer::Kind::vsftpd), site(server) {
        fs::create_directory(server.root() / "site");
        site.profile.exclusions = Exclusions("*.log");
    }

    // Opens the sheet on a server with these files.
    void open(const QStringList& files, bool forSync = true, const DownloadSelection& chosen = {}) {
        put(files);
        picker = std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, chosen, forSync,
            [this](const DownloadSelection& selection, const auto&) { applied = selection; });
        screen = picker.get();
        picker->open();
    }
    void openListed(const QStringList& files, bool forSync = true) {
        open(files, forSync);
        ASSERT_TRUE(settles());
    }

    void put(const QStringList& files) {
        for (const QString& path : files) server.put("site/" + path.toStdString(), "x");
    }

    [[nodiscard]] bool settles() {
        return waitFor([this] { return picker->browser().loading().empty(); });
    }

    void toggle(const std::string& path) {
        picker->browser().toggle(path);
        ASSERT_TRUE(settles());
    }

    [[nodiscard]] int count() const { return list().model()->rowCount(); }
    [[nodiscard]] int current() const { return list().currentIndex().row(); }
    [[nodiscard]] QRect place(int number) const { return list().visualRect(list().model()->index(number, 0)); }
    [[nodiscard]] QStringList rows() const {
        QStringList all;
        for (int number = 0; number < count(); ++number) all += row(number);
        return all;
    }

    void click(int number, int x) const {
        const QPoint point(place(number).left() + x, place(number).center().y());
        QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, point);
    }

    FtpServer server;
    LocalSite site;
    std::unique_ptr<RemoteDownloadPicker> picker;
    std::optional<DownloadSelection> applied;
};

TEST_F(Picker, ScreenReaderLearnsTheStateOfEveryRow) {
    fs::create_directory(server.root() / "site/empty");
    writeTree(site.root(), {{"drafts/idea.log", ""}});
    open({"docs/a.txt", "trace.log"}, true, {.rules = {{"docs/a.txt", true}}});
    EXPECT_EQ(rows(), QStringList{"Loading folder…"});
    ASSERT_TRUE(settles());
    toggle("empty");
    toggle("drafts");
    picker->browser().toggle("docs");
    EXPECT_EQ(
        rows(),
        (QStringList{
            "docs, open folder, Partially selected", "Loading folder…", "drafts, open folder, Not selected, Local only",
            "idea.log, Not selected, Local only, Excluded", "empty, open folder, Not selected, Empty folder",
            "This remote folder is empty.", "trace.log, Not selected, Excluded"}));
    EXPECT_TRUE(shows("1 item selected"));
    ASSERT_TRUE(settles());
    EXPECT_EQ(row(1), "a.txt, Selected");
    EXPECT_TRUE(shows("1 file selected"));
    EXPECT_EQ(list().model()->index(1, 0).data(Qt::ToolTipRole), "<span>docs/a.txt</span>");
}

TEST_F(Picker, OnlyConfirmingAppliesTheSelection) {
    openListed({"docs/a.txt", "docs/b.txt", "index.html"});
    EXPECT_EQ(current(), 0) << "the first entry replaces the loading message";
    key(Qt::Key_Right);
    ASSERT_TRUE(settles());
    key(Qt::Key_Right);
    EXPECT_EQ(current(), 1);
    key(Qt::Key_Space);
    EXPECT_EQ(row(0), "docs, open folder, Partially selected");
    key(Qt::Key_Left);
    EXPECT_EQ(current(), 0);
    key(Qt::Key_Space);
    EXPECT_EQ(row(2), "b.txt, Selected") << "ticking a partial folder ticks all of it";
    key(Qt::Key_Left);
    EXPECT_EQ(count(), 2);
    key(Qt::Key_Down);
    key(Qt::Key_Space);
    EXPECT_TRUE(shows("1 folder and 1 file selected"));

    key(Qt::Key_Escape);
    auto* const question = picker->findChild<ConfirmDialog*>();
    ASSERT_NE(question, nullptr) << "the ticks are lost without a question";
    QTest::keyClick(question, Qt::Key_Escape);
    EXPECT_TRUE(picker->isVisible());
    EXPECT_FALSE(applied);
    press("Use sync selection");
    EXPECT_FALSE(picker->isVisible());
    ASSERT_TRUE(applied);
    EXPECT_EQ(applied->rules, (Rules{{"docs", true}, {"index.html", true}}));
}

TEST_F(Picker, EmptyServerFolderChangesNoSelection) {
    std::filesystem::create_directory(server.root() / "site");
    openListed({}, false);
    bool isToldSo = false;
    QObject::connect(picker.get(), &RemoteDownloadPicker::nothingToDownload, [&] { isToldSo = true; });
    EXPECT_TRUE(shows("There is nothing to download."));
    press("Use selection");
    EXPECT_TRUE(isToldSo);
    EXPECT_EQ(applied, std::nullopt);
    EXPECT_FALSE(picker->isVisible());
}

TEST_F(Picker, ClickChangesOnlyThePartThatItHits) {
    openListed({"docs/a.txt", "index.html"}, false);
    EXPECT_TRUE(shows("Choose what to download"));
    click(0, 200); // beside the name
    EXPECT_TRUE(shows("Nothing selected"));
    EXPECT_TRUE(picker->browser().expanded().empty());
    click(0, 14);
    ASSERT_TRUE(settles());
    EXPECT_EQ(count(), 3);
    click(1, 24 + 39);
    EXPECT_EQ(picker->selection().rules, (Rules{{"docs/a.txt", true}}));
    press("Select all");
    EXPECT_TRUE(shows("All files on the server"));
    click(2, 90); // on the name
    EXPECT_TRUE(shows("All files on the server, 1 exception"));
    press("Select none");
    EXPECT_FALSE(picker->selection().hasSelection());
}

TEST_F(Picker, SearchHidesNoMatchAndLosesNoTick) {
    writeTree(site.root(), {{".zembrastel-backups/1/page", ""}, {"drafts/Banner.psd", std::string(2'340'000, ' ')}});
    openListed({"assets/img/hero-banner.webp", "assets/logo.svg", "index.html", "unopened/banner"});
    EXPECT_EQ(count(), 4) << "own backups cannot be synchronised";
    for (const char* path : {"assets", "assets/img", "drafts"}) toggle(path);
    QTest::keyClick(picker.get(), Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(picker->focusWidget(), "banner");
    EXPECT_EQ(
        rows(),
        (QStringList{
            "assets, open folder, Not selected", "img, open folder, Not selected", "hero-banner.webp, Not selected",
            "drafts, open folder, Not selected, Local only", "Banner.psd, Not selected, Local only",
            "2 names match. Folders that were not opened yet are not searched."}));
    EXPECT_EQ(list().model()->index(4, 0).data(Qt::AccessibleDescriptionRole), "level 2, 2.3\u00a0MB");
    EXPECT_FALSE(button("Select all").isEnabled());
    click(2, 48 + 90);
    QTest::keyClicks(picker->findChild<SearchField*>(), "x");
    EXPECT_EQ(row(0), "No name matches “bannerx”. Folders that were not opened yet are not searched.");
    QTest::keyClick(picker->findChild<SearchField*>(), Qt::Key_Escape);
    EXPECT_EQ(count(), 8);
    EXPECT_TRUE(picker->isVisible() && shows("1 file selected"));
}

TEST_F(Picker, KeyboardUserSeesTheCurrentRow) {
    openListed({"a", "b"});
    const auto isRinged = [this](int number) {
        const QImage picture = list().viewport()->grab(place(number)).toImage();
        return picture.pixelColor(1, picture.height() / 2) == colours().accent;
    };
    list().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(picker.get(), patience));
    EXPECT_FALSE(isRinged(0)) << "no key was used yet";
    key(Qt::Key_Down);
    EXPECT_TRUE(isRinged(1));
    EXPECT_FALSE(isRinged(0));
}

TEST_F(Picker, SecondEnterAfterRetryConfirmsNothing) {
    openListed({"lost/page", "other/page"});
    fs::rename(server.root() / "site/lost", server.root() / "lost");
    toggle("lost");
    ASSERT_TRUE(row(1).endsWith("The server does not let you read this folder., Retry")) << row(1).toStdString();
    fs::rename(server.root() / "lost", server.root() / "site/lost");
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_EQ(row(1), "Loading folder…");
    EXPECT_EQ(current(), 1);
    key(Qt::Key_Return);
    EXPECT_TRUE(picker->isVisible());
    ASSERT_TRUE(settles());
    EXPECT_EQ(row(1), "page, Not selected");
    EXPECT_EQ(current(), 1);
    EXPECT_FALSE(applied);
}

TEST_F(Picker, RefreshKeepsTheTicks) {
    openListed({"old/page"});
    key(Qt::Key_Space);
    put({"new/page"});
    press("Refresh");
    press("Refresh"); // while the first refresh is running
    ASSERT_TRUE(settles());
    EXPECT_EQ(rows(), (QStringList{"new, closed folder, Not selected", "old, closed folder, Selected"}));
    press("Cancel");
    EXPECT_FALSE(applied);
}

TEST_F(Picker, HugeFolderDoesNotBlockTheWindow) {
    constexpr int many = 50000;
    writeFile(site / "many/f0", "");
    for (int number = 1; number < many; ++number) { // links to one file are made five times as fast as files
        fs::create_hard_link(site / "many/f0", site / ("many/f" + std::to_string(number)));
    }
    openListed({});
    const auto expectQuick = [this](Qt::Key which) {
        timespec before{};
        timespec after{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
        key(which);
        QCoreApplication::processEvents();
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
        // Quadratic cost takes minutes; a sanitizer takes ten times as long as usual.
        EXPECT_LT(double(after.tv_sec - before.tv_sec) + 1e-9 * double(after.tv_nsec - before.tv_nsec), 1);
    };
    toggle("many");
    ASSERT_EQ(count(), many + 1);
    key(Qt::Key_Home);
    expectQuick(Qt::Key_Left);
    EXPECT_EQ(count(), 1);
    for (const Qt::Key each : {Qt::Key_Right, Qt::Key_End, Qt::Key_Space}) expectQuick(each);
    EXPECT_EQ(row(many), "f49999, Selected, Local only");
    EXPECT_TRUE(list().viewport()->rect().intersects(list().visualRect(list().currentIndex())));
    expectQuick(Qt::Key_Left);
    EXPECT_EQ(current(), 0);
}

} // namespace
} // namespace zembrastel::testing
