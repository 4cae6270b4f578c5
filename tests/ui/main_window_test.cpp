#include "model/error.h"
#include "screen.h"
#include "support/fake_clock.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/main_window/main_window.h"
#include "ui/theme/local_time.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/wrap_label.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QScopeGuard>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>

using namespace zembrastel;
using namespace zembrastel::ui;
using namespace zembrastel::testing;

namespace {

class MainWindowTest : public ::testing::Test {
protected:
    // What a job waits for never comes, so that it stays where the test looks at it.
    MainWindowTest() {
        clock.onSleep = [](std::chrono::nanoseconds) { return false; };
    }
    ~MainWindowTest() override { close(); }

    void close() {
        window.reset();
        bridge.reset();
        model.reset();
    }

    MainWindow& open(bool demo = false) {
        close();
        model = std::make_unique<AppModel>(
            context, AppModel::Options{
                         .demonstration = demo ? std::optional(demonstration(clock)) : std::nullopt,
                         .storeOverride = StateStore(folder / "state"),
                         .passwordAccess = {
                             .save = [](const std::string&, const Uuid&) {},
                             .read = [](const Uuid&) { return std::string("secret"); },
                             .remove =
                                 [this](const Uuid&) {
                                     if (!removeFailure.empty()) throw SyncError(removeFailure);
                                 }},
                         .clock = clock});
        bridge = std::make_unique<ModelBridge>(*model);
        window = std::make_unique<MainWindow>(*bridge);
        window->setHooks(
            {.newProfile = [this] { asked << QStringLiteral("new"); },
             .editProfile = [this](const Uuid& id) { asked << QStringLiteral("edit ") + nameOf(id); },
             .editContents = [this](const Uuid& id) { asked << QStringLiteral("contents ") + nameOf(id); },
             .showBackups = [this](const Uuid& id) { asked << QStringLiteral("backups ") + nameOf(id); }});
        window->show();
        QCoreApplication::processEvents();
        return *window;
    }

    Uuid addProfile(const std::string& name) {
        Profile profile;
        profile.name = name;
        profile.host = "127.0.0.1";
        profile.port = 1; // nobody listens there
        profile.transport = TransferProtocol::ftp;
        profile.username = "user";
        profile.localFolder = folder / name;
        std::filesystem::create_directory(folder / name);
        model->save(profile, "secret");
        QCoreApplication::processEvents();
        return profile.id;
    }

    [[nodiscard]] QString nameOf(const Uuid& id) const { return QString::fromStdString(model->profile(id)->name); }

    [[nodiscard]] QAbstractButton* find(const QString& name) const { return findButton(*window, name); }
    [[nodiscard]] bool shows(const QString& text) const { return findLabel(*window, text) != nullptr; }

    void click(const QString& name) const { QTest::mouseClick(&button(*window, name), Qt::LeftButton); }
    void answer(const QString& name) const { QTest::mouseClick(&button(*dialog(), name), Qt::LeftButton); }

    // From the edge of the window at which one begins to read to where the first letter of a text is painted.
    [[nodiscard]] int distanceToInk(const QString& text) const {
        QLabel* const found = findLabel(*window, text);
        if (found == nullptr) throw std::logic_error("no label " + text.toStdString());
        const QImage picture = found->grab().toImage();
        const bool fromRight = window->isRightToLeft();
        const int width = picture.width();
        const auto isInk = [&](int column) {
            const int x = fromRight ? width - 1 - column : column;
            for (int y = 0; y < picture.height(); ++y) {
                if (picture.pixelColor(x, y) != picture.pixelColor(fromRight ? width - 1 : 0, 0)) return true;
            }
            return false;
        };
        int column = 0;
        while (column < width && !isInk(column)) ++column;
        const QPoint origin = found->mapTo(window.get(), QPoint(0, 0));
        return column + (fromRight ? window->width() - origin.x() - width : origin.x());
    }

    // Every button and every one-line label has the room that its text wants, inside the window. A path or a name may
    // be shortened, and says so by itself.
    void expectNothingCut() const {
        QCoreApplication::processEvents();
        const auto check = [this](const QWidget& widget, const QString& text) {
            const int right = widget.mapTo(window.get(), QPoint(widget.width(), 0)).x();
            EXPECT_GE(widget.width(), widget.sizeHint().width()) << text.toStdString();
            EXPECT_LE(right, window->width()) << text.toStdString();
        };
        for (const auto* const each : window->findChildren<QPushButton*>()) {
            if (each->isVisible()) check(*each, each->text());
        }
        for (const auto* const each : window->findChildren<QLabel*>()) {
            const bool fits = qobject_cast<const ElideLabel*>(each) || qobject_cast<const WrapLabel*>(each);
            if (each->isVisible() && !fits) check(*each, each->text());
        }
    }

    [[nodiscard]] ConfirmDialog* dialog() const {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window->findChild<ConfirmDialog*>();
    }

    [[nodiscard]] QListView& list(const QString& name) const {
        for (auto* const view : window->findChildren<QListView*>()) {
            if (view->accessibleName() == name) return *view;
        }
        throw std::logic_error("no such list");
    }

    [[nodiscard]] QListView& profileList() const { return list(QStringLiteral("SYNC PROFILES")); }

    TemporaryFolder folder;
    FakeClock clock;
    std::string removeFailure;
    QStringList asked;
    QtMainContext context;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ModelBridge> bridge;
    std::unique_ptr<MainWindow> window;
};

} // namespace

TEST_F(MainWindowTest, EveryWayToANewProfileIsOpenAndTheWelcomeGivesWayToIt) {
    open();
    EXPECT_TRUE(shows(QStringLiteral("Save locally. Ship automatically.")));
    click(QStringLiteral("Create your first profile"));
    QTest::keyClick(window.get(), Qt::Key_N, Qt::ControlModifier);
    auto* const plus = window->findChild<Sidebar*>();
    QTest::mouseClick(&plus->plus(), Qt::LeftButton);
    EXPECT_EQ(asked, QStringList({"new", "new", "new"}));

    addProfile("Site & shop");
    EXPECT_FALSE(shows(QStringLiteral("Save locally. Ship automatically.")));
    for (const char* const text :
         {"Site & shop", "Paused", "127.0.0.1", "Port 1", "/public_html", "All files in the local folder",
          "Local deletions kept on server", "—", "Your uploads will appear here."}) {
        EXPECT_TRUE(shows(QString::fromUtf8(text))) << text;
    }
    click(QStringLiteral("Edit sync contents…"));
    EXPECT_EQ(asked.last(), QStringLiteral("contents Site & shop"));
}

TEST_F(MainWindowTest, TheListIsWorkedByKeyboardAndItsMenuActsOnTheRowItWasOpenedFor) {
    open();
    const Uuid first = addProfile("first");
    const Uuid second = addProfile("second");
    QListView& profiles = profileList();
    EXPECT_EQ(profiles.currentIndex().row(), 1) << "a profile just made is selected";
    QTest::keyClick(&profiles, Qt::Key_Up);
    EXPECT_EQ(model->selection(), first);
    EXPECT_TRUE(shows(QStringLiteral("first")));
    QTest::keyClick(&profiles, Qt::Key_Return);
    model->select(second);
    QTest::keyClick(&profiles, Qt::Key_Enter);
    EXPECT_EQ(asked, QStringList({"edit first", "edit second"}));

    const QRect row = profiles.visualRect(profiles.currentIndex());
    QTest::mouseClick(
        profiles.viewport(), Qt::LeftButton, {}, QPoint(row.right() - 20, row.top() + 18)); // the "more" button
    auto* const menu = profiles.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 3);
    EXPECT_EQ(menu->actions().at(1)->text(), QStringLiteral("Send everything again…"));
    EXPECT_EQ(menu->actions().at(0)->text(), QStringLiteral("Edit profile"));
    model->select(first);
    menu->actions().at(0)->trigger();
    EXPECT_EQ(asked.last(), QStringLiteral("edit second"));
    menu->close();
}

TEST_F(MainWindowTest, AProfileIsRemovedOnlyWhenThatIsConfirmedAndAFailureIsTold) {
    open();
    const Uuid kept = addProfile("kept");
    const Uuid id = addProfile("site");
    const auto askByKey = [this] { QTest::keyClick(&profileList(), Qt::Key_Delete); };
    askByKey();
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(shows(QStringLiteral("Remove this sync profile?")));
    removeFailure = "Keychain: locked.";
    answer(QStringLiteral("Remove profile"));
    ASSERT_TRUE(waitFor([&] { return model->alert().has_value() && dialog() != nullptr; }));
    EXPECT_TRUE(shows(QStringLiteral("Keychain: locked.")));
    answer(QStringLiteral("OK"));
    EXPECT_NE(model->profile(id), nullptr);
    EXPECT_FALSE(model->alert());

    removeFailure.clear();
    askByKey();
    answer(QStringLiteral("Remove profile"));
    ASSERT_TRUE(waitFor([&] { return model->profile(id) == nullptr; }));
    EXPECT_EQ(model->selection(), kept);
    EXPECT_EQ(profileList().currentIndex().row(), 0);
    EXPECT_TRUE(shows(QStringLiteral("kept")));
}

TEST_F(MainWindowTest, AFailedCheckIsSkippedOnlyAfterAWarningAndCanBeTriedAgain) {
    open();
    const Uuid id = addProfile("site");
    click(QStringLiteral("Start watching"));
    EXPECT_TRUE(model->profile(id)->enabled);
    const auto failed = [&] { return model->checkFailures().contains(id); };
    ASSERT_TRUE(waitFor(failed));
    QCoreApplication::processEvents();
    EXPECT_TRUE(shows(QString::fromStdString(model->checkFailures().at(id))));
    EXPECT_TRUE(shows(QStringLiteral("Server check needs attention")));
    QGuiApplication::clipboard()->clear();
    click(QStringLiteral("Copy details"));
    ASSERT_TRUE(waitFor([this] { return find(QStringLiteral("Details copied")) != nullptr; }));
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(
        QStringLiteral("The server check failed: ") + QString::fromStdString(model->checkFailures().at(id))));
    click(QStringLiteral("Backups…"));
    EXPECT_TRUE(asked.last().startsWith(QStringLiteral("backups ")));

    click(QStringLiteral("Retry server check"));
    EXPECT_EQ(find(QStringLiteral("Start without checking…")), nullptr);
    ASSERT_TRUE(waitFor(failed));
    click(QStringLiteral("Start without checking…"));
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(failed());
    answer(QStringLiteral("Start without checking"));
    EXPECT_FALSE(failed());
    EXPECT_EQ(find(QStringLiteral("Start without checking…")), nullptr);
    EXPECT_TRUE(model->status(id).activity.front().text.starts_with("Server comparison skipped by your choice"));
    click(QStringLiteral("Pause watching"));
    EXPECT_FALSE(model->running(id));
}

TEST_F(MainWindowTest, WatchingIsSwitchedByKeyboardAndTheNextActionIsNamed) {
    open(true);
    const Uuid id = model->profiles().front().id;
    auto* const start = find(QStringLiteral("Start watching"));
    ASSERT_NE(start, nullptr);
    QTest::keyClick(start, Qt::Key_Space);
    EXPECT_TRUE(model->running(id));
    QCoreApplication::processEvents();
    EXPECT_EQ(start->text(), QStringLiteral("Pause watching"));
    EXPECT_TRUE(shows(QStringLiteral("Checking server")));
    EXPECT_EQ(
        profileList().currentIndex().data(Qt::AccessibleTextRole).toString(),
        QStringLiteral("My website, Checking server"));

    click(QStringLiteral("Open in Finder")); // the sample's folder is not there
    EXPECT_TRUE(
        shows(QStringLiteral("Could not open the local folder in Finder. Check that the folder is still available.")));
}

TEST_F(MainWindowTest, AnAlertThatCameWhileNobodyLookedIsToldWhenTheWindowIsShown) {
    std::filesystem::create_directories(folder / "state");
    writeFile(folder / "state" / "profiles.json", "nonsense");
    open();
    ASSERT_NE(dialog(), nullptr);
    ASSERT_TRUE(model->alert());
    EXPECT_TRUE(model->alert()->find(folder / "state/profiles.json") != std::string::npos) << *model->alert();
    EXPECT_TRUE(shows(QString::fromStdString(*model->alert())));
    window->hide();
    EXPECT_TRUE(model->alert()) << "not read yet";
    window->show();
    answer(QStringLiteral("OK"));
    EXPECT_FALSE(model->alert());
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(MainWindowTest, EveryControlHasANameAndTheTabKeyMeetsThemInOrder) {
    open(true);
    QStringList names;
    QWidget* widget = &profileList();
    do {
        const bool reached = widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) != 0;
        if (reached && widget->focusProxy() == nullptr) {
            names << QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        }
        widget = widget->nextInFocusChain();
    } while (widget != &profileList());
    EXPECT_EQ(
        names.join(u'|').toStdString(), "SYNC PROFILES|New Sync Profile…|Menu|Start watching|Open local folder in "
                                        "Finder|Edit sync contents…|Recent activity");
}

TEST_F(MainWindowTest, WithoutATrayTheWayToQuitIsSeenAndReachedByKeyboard) {
    open(true);
    EXPECT_EQ(find(QStringLiteral("Quit Zembrastel")), nullptr);
    window->offerQuit(true);
    auto* const quit = find(QStringLiteral("Quit Zembrastel"));
    ASSERT_NE(quit, nullptr);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get(), patience));
    QListView& last = list(QStringLiteral("Recent activity"));
    last.setFocus();
    QTest::keyClick(&last, Qt::Key_Tab);
    EXPECT_TRUE(quit->hasFocus());
    bool wanted = false;
    QObject::connect(window.get(), &MainWindow::quitRequested, [&wanted] { wanted = true; });
    QTest::keyClick(quit, Qt::Key_Return);
    EXPECT_TRUE(wanted);
    window->offerQuit(false);
    EXPECT_FALSE(quit->isVisible());
}

TEST_F(MainWindowTest, NoTextIsCutInTheSmallestWindowHoweverLargeTheDesktopsTextIs) {
    const QFont usual = QApplication::font();
    const auto restore = qScopeGuard([&usual] { QApplication::setFont(usual); });
    for (const double points : {10.0, 14.0}) {
        QFont font = usual;
        font.setPointSizeF(points);
        QApplication::setFont(font);
        open();
        window->resize(scaledToText(QSize(760, 520)));
        expectNothingCut();
        const Uuid id = addProfile("A name that is much longer than there is room for it in any window of this size");
        model->toggle(id); // whose server refuses the connection
        ASSERT_TRUE(waitFor([&] { return model->checkFailures().contains(id); }));
        QCoreApplication::processEvents();
        expectNothingCut();
        model->remove(id);
    }
}

TEST_F(MainWindowTest, WhereOneReadsFromRightTextsBeginAsFarFromThereAsTheyDoElsewhereFromTheLeft) {
    const auto restore = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
    const std::array texts{"SYNC PROFILES",         "FOLDER SYNC",     "LOCAL FOLDER", "All files in the local folder",
                           "UPLOADED THIS SESSION", "Recent activity", "PENDING",      "Paused"};
    std::map<std::string, int> fromLeft;
    open(true);
    for (const char* const text : texts) fromLeft[text] = distanceToInk(QString::fromUtf8(text));
    QApplication::setLayoutDirection(Qt::RightToLeft);
    open(true);
    constexpr int bearing = 3; // a letter's own, which is another at its other end
    for (const char* const text : texts) {
        EXPECT_NEAR(distanceToInk(QString::fromUtf8(text)), fromLeft[text], bearing) << text;
    }
}

TEST_F(MainWindowTest, TheWholeOfALongLogCanBeReachedInTheSmallestWindow) {
    open(true);
    const Uuid id = model->profiles().front().id;
    for (int i = 0; i < 80; ++i) model->toggle(id); // one line each time
    const int count = static_cast<int>(model->status(id).activity.size());
    window->resize(760, 520);
    QCoreApplication::processEvents();
    QListView& lines = list(QStringLiteral("Recent activity"));
    ASSERT_GE(count, 80);
    ASSERT_EQ(lines.model()->rowCount(), count);
    EXPECT_EQ(lines.verticalScrollBar()->maximum(), 0) << "no scroll bar inside a scroll bar";
    QWheelEvent wheel(
        {5, 5}, lines.viewport()->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel); // only what the system sends is passed on to parents
    qApp->notify(lines.viewport(), &wheel);
    EXPECT_GT(window->findChild<QScrollArea*>()->verticalScrollBar()->value(), 0) << "the wheel turns the page";
    lines.setFocus();
    QTest::keyClick(&lines, Qt::Key_End);
    const QRect last = lines.visualRect(lines.currentIndex());
    const QPoint seen = lines.viewport()->mapTo(window.get(), last.center());
    EXPECT_EQ(lines.currentIndex().row(), count - 1);
    EXPECT_LT(seen.y(), window->height());
    EXPECT_GT(seen.y(), 0);
}

TEST_F(MainWindowTest, MissingFilesAreForgottenAtAClick) {
    open();
    const Uuid id = addProfile("Site");
    model->save(*model->profile(id), std::nullopt, FileMap{{"index.html", {.size = 5}}});
    const auto startUnchecked = [&] {
        ASSERT_TRUE(waitFor([&] { return model->checkFailures().contains(id); })); // there is no server
        model->startWithoutCheck(id);
    };
    model->start(id);
    startUnchecked();
    const auto forget = QStringLiteral("Forget the missing files");
    ASSERT_TRUE(waitFor([&] { return find(forget) != nullptr; }));
    EXPECT_EQ(model->baseline(id).size(), 1U);
    click(forget);
    startUnchecked();
    EXPECT_TRUE(waitFor([&] { return model->baseline(id).empty(); }));
    EXPECT_EQ(find(forget), nullptr);
}

TEST(DetailBanners, AReviewIsNotHiddenBehindAFailureOfTheCheck) {
    DetailBanners banners;
    banners.setWaiting(true, "curl: (28) Timeout was reached");
    const auto seen = [&] {
        QStringList texts;
        for (auto* const widget : banners.buttons()) {
            if (widget->isVisibleTo(&banners)) texts << qobject_cast<QPushButton*>(widget)->text();
        }
        return texts;
    };
    EXPECT_EQ(seen(), QStringList({"Review newer server files…"}));
    banners.setWaiting(false, "curl: (28) Timeout was reached");
    EXPECT_EQ(seen(), QStringList({"Retry server check", "Start without checking…"}));
    banners.setWaiting(false, std::nullopt, false, {"a", "b", "c", "d", "e"});
    EXPECT_EQ(seen(), QStringList({"Send again", "Leave them"}));
    for (const char* text : {"5 files are missing on the server.", "a\nb\nc\nand 2 more"}) {
        const auto labels = banners.findChildren<QLabel*>();
        EXPECT_TRUE(std::ranges::any_of(labels, [&](const QLabel* label) { return label->text() == text; })) << text;
    }
    banners.setWaiting(false, std::nullopt);
    EXPECT_TRUE(seen().isEmpty());
}

TEST(ActivityListModel, WhoReadsAnOldLineStaysOnItWhileNewOnesComeAndOldOnesGo) {
    std::deque<Activity> log;
    for (int i = 0; i < 3; ++i) log.push_front({.date = {}, .text = "line " + std::to_string(i)});
    ActivityListModel lines;
    lines.setActivity(log);
    const QPersistentModelIndex read = lines.index(1); // "line 1"
    for (int i = 3; i < 5; ++i) log.push_front({.date = {}, .text = "line " + std::to_string(i)});
    log.pop_back();
    lines.setActivity(log);
    EXPECT_EQ(lines.rowCount(), 4);
    EXPECT_EQ(read.row(), 3);
    EXPECT_EQ(read.data().toString(), QStringLiteral("line 1"));
    lines.setActivity({{.date = {}, .text = "of another profile"}});
    EXPECT_EQ(lines.rowCount(), 1);
    lines.setActivity({});
    EXPECT_EQ(lines.rowCount(), 0);
}

TEST(LocalTime, AnInstantIsWrittenAsTheLocaleHasItAndNearDaysByName) {
    const QDateTime now({2026, 3, 1}, {9, 41, 7});
    const QDateTime earlier = now.addSecs(-50);
    const QLocale british(QLocale::English, QLocale::UnitedKingdom);
    const QLocale german(QLocale::German, QLocale::Germany);
    EXPECT_EQ(logTime(earlier, now, british), QStringLiteral("09:40:17"));
    EXPECT_EQ(logTime(earlier, now, german), QStringLiteral("09:40:17"));
    EXPECT_EQ(
        logTime(earlier, now, QLocale(QLocale::English, QLocale::UnitedStates)).simplified().replace(u'\u202f', u' '),
        QStringLiteral("9:40:17 AM"));
    EXPECT_EQ(dayAndTime(earlier, now, british), QStringLiteral("Today, 09:40"));
    EXPECT_EQ(logTime(now.addSecs(-12 * 3600), now, british), QStringLiteral("Yesterday, 21:41"));
    EXPECT_EQ(dayAndTime(now.addDays(-2), now, german), QStringLiteral("27.02.26, 09:41"));
}
