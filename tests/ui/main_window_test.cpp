#include "ui/main_window/main_window.h"

#include "screen_fixture.h"
#include "ui/theme/local_time.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace zembrastel::testing {
namespace {

class MainWindowTest : public ScreenFixture {
protected:
    MainWindow& open(bool demo = false) {
        window.reset();
        startModel(demo);
        window = std::make_unique<MainWindow>(*bridge);
        screen = window.get();
        const auto note = [this](const QString& hook) {
            return [this, hook](const Uuid& id) { asked << hook + QString::fromStdString(model->profile(id)->name); };
        };
        window->setHooks(
            {.newProfile = [this] { asked << "new"; },
             .editProfile = note("edit "),
             .editContents = note("contents "),
             .showBackups = note("backups ")});
        window->show();
        QCoreApplication::processEvents();
        return *window;
    }

    [[nodiscard]] ConfirmDialog* dialog() const {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window->findChild<ConfirmDialog*>();
    }
    void answer(const QString& name) const { QTest::mouseClick(&testing::button(*dialog(), name), Qt::LeftButton); }
    [[nodiscard]] bool failsCheck(const Uuid& id) const {
        return waitFor([&] { return model->checkFailures().contains(id); });
    }

    // From the side of the window where reading begins to the first painted letter of a text.
    [[nodiscard]] int distanceToInk(const QString& text) const {
        QLabel& label = *findLabel(*window, text);
        const bool rightToLeft = window->isRightToLeft();
        const QImage picture = label.grab().toImage().mirrored(rightToLeft, false);
        const int left = label.mapTo(window.get(), QPoint(0, 0)).x();
        for (int x = 0; x < picture.width(); ++x) {
            for (int y = 0; y < picture.height(); ++y) {
                if (picture.pixel(x, y) == picture.pixel(0, 0)) continue;
                return x + (rightToLeft ? window->width() - left - picture.width() : left);
            }
        }
        return -1;
    }

    QStringList asked;
    std::unique_ptr<MainWindow> window;
};

TEST_F(MainWindowTest, EveryEntryPointOpensANewProfile) {
    open();
    EXPECT_TRUE(shows("Save locally. Ship automatically."));
    QTest::keyClick(window->focusWidget(), Qt::Key_Return); // the first thing to do there has the focus
    QTest::keyClick(window.get(), Qt::Key_N, Qt::ControlModifier);
    QTest::mouseClick(&window->findChild<Sidebar*>()->plus(), Qt::LeftButton);
    EXPECT_EQ(asked, QStringList({"new", "new", "new"}));

    addProfile("Site & shop");
    EXPECT_FALSE(shows("Save locally. Ship automatically."));
    for (const char* const text :
         {"Site & shop", "Paused", "127.0.0.1", "Port 1", "/public_html", "All files in the local folder",
          "Local deletions kept on server", "—", "Your uploads will appear here."}) {
        EXPECT_TRUE(shows(text)) << text;
    }
    press("Edit sync contents…");
    EXPECT_EQ(asked.last(), "contents Site & shop");
}

TEST_F(MainWindowTest, MenuActsOnTheRowItWasOpenedFor) {
    open();
    const Uuid first = addProfile("first").id;
    const Uuid second = addProfile("second").id;
    EXPECT_EQ(list().currentIndex().row(), 1) << "a new profile is selected";
    key(Qt::Key_Up);
    EXPECT_EQ(model->selection(), first);
    EXPECT_TRUE(shows("first"));
    key(Qt::Key_Return);
    model->select(second);
    key(Qt::Key_Enter);
    EXPECT_EQ(asked, QStringList({"edit first", "edit second"}));

    const QRect place = list().visualRect(list().currentIndex());
    const QPoint more(place.right() - 20, place.top() + 18);
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, more);
    auto* const menu = list().findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_EQ(menu->actions().at(1)->text(), "Send everything again…");
    EXPECT_EQ(menu->actions().at(0)->text(), "Edit profile");
    model->select(first);
    menu->actions().at(0)->trigger();
    EXPECT_EQ(asked.last(), "edit second");
    menu->close();
}

TEST_F(MainWindowTest, RemovalNeedsConfirmationAndReportsFailure) {
    bool isLocked = true;
    passwords.remove = [&](const Uuid&) {
        if (isLocked) throw SyncError("Keychain: locked.");
    };
    open();
    const Uuid kept = addProfile("kept").id;
    const Uuid id = addProfile().id;
    key(Qt::Key_Delete);
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(shows("Remove this sync profile?"));
    answer("Remove profile");
    ASSERT_TRUE(waitFor([&] { return model->alert().has_value() && dialog() != nullptr; }));
    EXPECT_TRUE(shows("Keychain: locked."));
    answer("OK");
    EXPECT_NE(model->profile(id), nullptr);
    EXPECT_FALSE(model->alert());

    isLocked = false;
    key(Qt::Key_Delete);
    answer("Remove profile");
    ASSERT_TRUE(waitFor([&] { return model->profile(id) == nullptr; }));
    EXPECT_EQ(model->selection(), kept);
    EXPECT_EQ(list().currentIndex().row(), 0);
    EXPECT_TRUE(shows("kept"));
}

TEST_F(MainWindowTest, SkippingAFailedCheckNeedsConfirmation) {
    open();
    const Uuid id = addProfile().id;
    press("Start watching");
    EXPECT_TRUE(model->profile(id)->enabled);
    ASSERT_TRUE(failsCheck(id));
    QCoreApplication::processEvents();
    const QString failure = QString::fromStdString(model->checkFailures().at(id));
    EXPECT_TRUE(shows("There is no answer from 127.0.0.1 at port 1."));
    EXPECT_TRUE(shows("Server check needs attention"));
    QGuiApplication::clipboard()->clear();
    press("Copy details");
    ASSERT_TRUE(waitFor([this] { return find("Details copied") != nullptr; }));
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains("The server check failed: " + failure));
    press("Backups…");
    EXPECT_EQ(asked.last(), "backups Site");

    press("Retry server check");
    EXPECT_EQ(find("Start without checking…"), nullptr);
    ASSERT_TRUE(failsCheck(id));
    press("Start without checking…");
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(model->checkFailures().contains(id));
    answer("Start without checking");
    EXPECT_FALSE(model->checkFailures().contains(id));
    EXPECT_EQ(find("Start without checking…"), nullptr);
    EXPECT_TRUE(model->status(id).activity.front().text.starts_with("Server comparison skipped by your choice"));
    press("Pause watching");
    EXPECT_FALSE(model->running(id));
}

TEST_F(MainWindowTest, MainSwitchNamesTheNextAction) {
    open(true);
    auto& start = button("Start watching");
    QTest::keyClick(&start, Qt::Key_Space);
    EXPECT_TRUE(model->running(model->profiles().front().id));
    QCoreApplication::processEvents();
    EXPECT_EQ(start.text(), "Pause watching");
    EXPECT_TRUE(shows("Checking server"));
    EXPECT_EQ(row(0), "My website, Checking server");
    press("Open in Finder"); // the sample's folder does not exist
    EXPECT_TRUE(shows("Could not open the local folder in Finder. Check that the folder is still available."));
}

TEST_F(MainWindowTest, AlertRaisedWhileHiddenAppearsOnShow) {
    writeFile(folder / "state" / "profiles.json", "nonsense");
    open();
    ASSERT_NE(dialog(), nullptr);
    ASSERT_TRUE(model->alert());
    EXPECT_NE(model->alert()->find(folder / "state/profiles.json"), std::string::npos) << *model->alert();
    EXPECT_TRUE(shows(QString::fromStdString(*model->alert())));
    window->hide();
    EXPECT_TRUE(model->alert()) << "the user has not read it yet";
    window->show();
    answer("OK");
    EXPECT_FALSE(model->alert());
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(MainWindowTest, TabKeyVisitsControlsInOrder) {
    open(true);
    QStringList names;
    QWidget* widget = &list();
    do {
        const bool reached = widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (reached && widget->focusProxy() == nullptr) {
            names << QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        }
        widget = widget->nextInFocusChain();
    } while (widget != &list());
    EXPECT_EQ(
        names, QStringList(
                   {"SYNC PROFILES", "New Sync Profile…", "Program menu", "Start watching",
                    "Open local folder in Finder", "Edit sync contents…", "Recent activity"}));
}

TEST_F(MainWindowTest, QuitIsReachableWithoutATray) {
    open(true);
    EXPECT_EQ(find("Quit Zembrastel"), nullptr);
    window->offerQuit(true);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get(), patience));
    QListView& last = list("Recent activity");
    last.setFocus();
    QTest::keyClick(&last, Qt::Key_Tab);
    EXPECT_TRUE(button("Quit Zembrastel").hasFocus());
    bool requested = false;
    QObject::connect(window.get(), &MainWindow::quitRequested, [&requested] { requested = true; });
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(requested);
    window->offerQuit(false);
    EXPECT_EQ(find("Quit Zembrastel"), nullptr);
}

TEST_F(MainWindowTest, RightToLeftLayoutMirrorsMargins) {
    const auto restore = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
    std::map<std::string, int> fromLeft;
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        open(true);
        for (const char* const text :
             {"SYNC PROFILES", "FOLDER SYNC", "LOCAL FOLDER", "All files in the local folder", "UPLOADED THIS SESSION",
              "Recent activity", "PENDING", "Paused"}) {
            const int distance = distanceToInk(text);
            constexpr int bearing = 3; // of a letter, which differs between its two sides
            EXPECT_NEAR(distance, fromLeft.emplace(text, distance).first->second, bearing) << text;
        }
    }
}

TEST_F(MainWindowTest, LongLogIsReachableInTheSmallestWindow) {
    open(true);
    const Uuid id = model->profiles().front().id;
    for (int i = 0; i < 80; ++i) model->toggle(id); // one line each time
    const int count = static_cast<int>(model->status(id).activity.size());
    window->resize(760, 520);
    QCoreApplication::processEvents();
    QListView& lines = list("Recent activity");
    ASSERT_GE(count, 80);
    ASSERT_EQ(lines.model()->rowCount(), count);
    EXPECT_EQ(lines.verticalScrollBar()->maximum(), 0) << "no scroll bar inside a scroll bar";
    QWheelEvent wheel(
        {5, 5}, lines.viewport()->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel); // Qt passes only system events on to parents
    qApp->notify(lines.viewport(), &wheel);
    EXPECT_GT(window->findChild<QScrollArea*>()->verticalScrollBar()->value(), 0) << "the wheel scrolls the page";
    lines.setFocus();
    QTest::keyClick(&lines, Qt::Key_End);
    const QRect last = lines.visualRect(lines.currentIndex());
    EXPECT_EQ(lines.currentIndex().row(), count - 1);
    EXPECT_TRUE(window->rect().contains(lines.viewport()->mapTo(window.get(), last.center())));
}

TEST_F(MainWindowTest, ForgettingMissingFilesClearsTheirRecord) {
    open();
    const Profile profile = addProfile();
    model->save(profile, std::nullopt, FileMap{{"index.html", {.size = 5}}});
    model->start(profile.id);
    ASSERT_TRUE(failsCheck(profile.id));
    model->startWithoutCheck(profile.id);
    ASSERT_TRUE(waitFor([this] { return find("Forget the missing files") != nullptr; }));
    EXPECT_EQ(model->baseline(profile.id).size(), 1U);
    press("Forget the missing files");
    ASSERT_TRUE(failsCheck(profile.id));
    model->startWithoutCheck(profile.id);
    EXPECT_TRUE(waitFor([&] { return model->baseline(profile.id).empty(); }));
    EXPECT_EQ(find("Forget the missing files"), nullptr);
}

TEST(DetailBanners, EachFailureOffersItsWayOut) {
    DetailBanners banners;
    const auto offered = [&] {
        QStringList texts;
        for (auto* const each : banners.buttons()) {
            if (each->isVisibleTo(&banners)) texts << qobject_cast<QPushButton*>(each)->text();
        }
        return texts.join('|');
    };
    const Failure refusal{
        .message = "curl: (67) Access denied", .kind = Failure::Kind::transfer, .code = CurlCode::loginRefused};
    ProfileStatus status;
    const std::string ofCheck = refusal.message;
    status.failure = refusal;
    banners.setWaiting(true, shownFailure(status, &ofCheck, Profile()));
    EXPECT_EQ(offered(), "Review newer server files…");
    banners.setWaiting(false, shownFailure(status, &ofCheck, Profile()));
    EXPECT_EQ(offered(), "Edit profile…|Retry server check|Start without checking…|Pause|Details");
    EXPECT_FALSE(banners.findChild<QPlainTextEdit*>()->isVisibleTo(&banners));
    for (auto* const each : banners.buttons()) {
        auto* const button = qobject_cast<QPushButton*>(each);
        if (button != nullptr && button->text() == "Details") button->click();
    }
    EXPECT_EQ(banners.findChild<QPlainTextEdit*>()->toPlainText(), "curl: (67) Access denied");
    EXPECT_TRUE(banners.findChild<QPlainTextEdit*>()->isVisibleTo(&banners));
    const Failure lost{
        .message = "curl: (56)", .kind = Failure::Kind::transfer, .code = CurlCode::receiveFailed, .path = "a/b"};
    status.enter(Phase::waitingToRetry, "curl: (56)");
    status.failure = lost;
    status.retryAt = std::chrono::system_clock::time_point{};
    status.waiting = 3;
    banners.setWaiting(false, shownFailure(status, nullptr, Profile()));
    EXPECT_EQ(offered(), "Retry now|Pause|Details");
    EXPECT_TRUE(banners.failure().accessibleName().startsWith("The server closed the connection. a/b is tried again"));
    EXPECT_TRUE(banners.failure().accessibleName().endsWith("2 more files wait behind it."));
    status.refused = {lost};
    banners.setWaiting(false, shownFailure(status, nullptr, Profile()));
    banners.setRefused(status, Profile());
    EXPECT_EQ(offered(), "") << "other files go on";
    EXPECT_TRUE(banners.refused().isVisibleTo(&banners));
    status.phase = Phase::watching;
    EXPECT_EQ(profileSummary(status, 3), "1 file cannot be uploaded");
    QStringList asked;
    QObject::connect(
        &banners.refused(), &RefusedFilesBanner::retryRequested, [&](const QString& path) { asked << path; });
    for (auto* const each : banners.refused().findChildren<QPushButton*>()) each->click();
    EXPECT_EQ(asked, QStringList{"a/b"});
    banners.setWaiting(false, std::nullopt, false, {"a", "b", "c", "d", "e"});
    EXPECT_EQ(offered(), "Send again|Leave them");
    QStringList texts;
    for (const auto* const label : banners.findChildren<QLabel*>()) texts << label->text();
    EXPECT_TRUE(texts.contains("5 files are missing on the server.") && texts.contains("a\nb\nc\nand 2 more"));
    banners.setWaiting(false, std::nullopt);
    EXPECT_EQ(offered(), "");
}

TEST(ActivityListModel, NewLinesDoNotMoveTheCurrentLine) {
    std::deque<Activity> log;
    ActivityListModel lines;
    const auto add = [&](int number) { log.push_front({.date = {}, .text = "line " + std::to_string(number)}); };
    for (int i = 0; i < 3; ++i) add(i);
    lines.setActivity(log);
    const QPersistentModelIndex current = lines.index(1);
    for (int i = 3; i < 5; ++i) add(i);
    log.pop_back();
    lines.setActivity(log);
    EXPECT_EQ(lines.rowCount(), 4);
    EXPECT_EQ(current.row(), 3);
    EXPECT_EQ(current.data(), "line 1");
    lines.setActivity({{.date = {}, .text = "of another profile"}});
    EXPECT_EQ(lines.rowCount(), 1);
    lines.setActivity({});
    EXPECT_EQ(lines.rowCount(), 0);
}

TEST(LocalTime, TimesFollowTheUsersLocale) {
    const QDateTime now({2026, 3, 1}, {9, 41, 7});
    const QDateTime earlier = now.addSecs(-50);
    const QLocale british("en_GB");
    const QLocale german("de_DE");
    EXPECT_EQ(logTime(earlier, now, british), "09:40:17");
    EXPECT_EQ(logTime(earlier, now, german), "09:40:17");
    EXPECT_EQ(logTime(earlier, now, QLocale("en_US")).simplified().replace(u'\u202f', u' '), "9:40:17 AM");
    EXPECT_EQ(dayAndTime(earlier, now, british), "Today, 09:40");
    EXPECT_EQ(logTime(now.addSecs(-12 * 3600), now, british), "Yesterday, 21:41");
    EXPECT_EQ(dayAndTime(now.addDays(-2), now, german), "27.02.26, 09:41");
}

} // namespace
} // namespace zembrastel::testing
