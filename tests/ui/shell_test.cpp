// What the program remembers, and its help.
#include "screen_fixture.h"
#include "ui/help/about_dialog.h"
#include "ui/help/help_window.h"
#include "ui/shell.h"
#include "ui/widgets/search_field.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QRegularExpression>
#include <QScrollBar>

namespace zembrastel::testing {
namespace {

class ShellTest : public ScreenFixture {
protected:
    [[nodiscard]] static MainWindow& shownWindow() {
        QCoreApplication::processEvents();
        for (QWidget* const each : QApplication::topLevelWidgets()) {
            auto* const window = qobject_cast<MainWindow*>(each);
            if (window != nullptr && window->isVisible()) return *window;
        }
        throw std::logic_error("no window");
    }
};

TEST_F(ShellTest, WindowForgetsNeitherSizeNorProfile) {
    const Profile first = addProfile("First");
    const Profile second = addProfile("Second");
    for (const auto& [shown, expected] : {std::pair(&first, &second), {&second, &first}}) {
        {
            Shell shell(*model, context);
            shell.showWindow();
            shownWindow().resize(900 + static_cast<int>(shown->name.size()), 600);
            model->select(expected->id);
            QCoreApplication::processEvents();
        }
        model->select(shown->id);
        Shell shell(*model, context);
        shell.showWindow();
        EXPECT_EQ(shownWindow().size(), QSize(900 + static_cast<int>(shown->name.size()), 600));
        EXPECT_EQ(model->selection(), expected->id);
    }
}

TEST_F(ShellTest, FilterLosesNoProfile) {
    MainWindow window(*[this] {
        for (int number = 1; number <= 9; ++number) addProfile("Shop " + std::to_string(number));
        return bridge.get();
    }());
    screen = &window;
    window.show();
    auto& filter = *window.findChild<SearchField*>();
    EXPECT_FALSE(filter.isVisible());
    const Profile last = addProfile("Bakery");
    EXPECT_TRUE(filter.isVisible());
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(window.focusWidget(), "sHOP 7");
    EXPECT_EQ(list("SYNC PROFILES").model()->rowCount(), 1);
    EXPECT_EQ(model->selection(), last.id) << "typing shows another profile";
    QTest::keyClicks(&filter, "x");
    EXPECT_TRUE(shows("No profile matches “sHOP 7x”."));
    QTest::keyClick(&filter, Qt::Key_Escape);
    EXPECT_EQ(list("SYNC PROFILES").model()->rowCount(), 10);
    QTest::keyClicks(&filter, "bak");
    model->remove(last.id);
    ASSERT_TRUE(waitFor([&] { return model->profiles().size() == 9; }));
    EXPECT_FALSE(filter.isVisible());
    EXPECT_EQ(list("SYNC PROFILES").model()->rowCount(), 9) << "a hidden filter still hides profiles";
}

TEST(Help, EveryLinkInTheManualLeadsSomewhere) {
    const QString folder = ZEMBRASTEL_SOURCE_DIR "/docs";
    QFile manual(folder + "/MANUAL.md");
    ASSERT_TRUE(manual.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(manual.readAll());
    QSet<QString> anchors;
    for (const QString& line : text.split('\n')) {
        if (line.startsWith('#')) anchors << anchorOf(QString(line).remove(QRegularExpression("^#+ ")));
    }
    auto links = QRegularExpression(R"(\]\(#([^)]+)\))").globalMatch(text);
    ASSERT_TRUE(links.hasNext());
    while (links.hasNext()) {
        const QString anchor = links.next().captured(1);
        EXPECT_TRUE(anchors.contains(anchor)) << anchor.toStdString();
    }
    HelpWindow window(folder);
    window.bringForward();
    const auto& page = *window.findChild<QTextBrowser*>();
    EXPECT_FALSE(page.toPlainText().contains("<!--"));
    window.resize(620, 400);
    QCoreApplication::processEvents();
    EXPECT_LT(page.width(), 620);
    EXPECT_EQ(page.horizontalScrollBar()->maximum(), 0);
    QTest::keyClicks(window.findChild<SearchField*>(), "systemctl");
    QTest::keyClick(window.findChild<SearchField*>(), Qt::Key_Return);
    EXPECT_EQ(page.textCursor().selectedText(), "systemctl");
}

TEST(About, CopiedVersionServesAReport) {
    AboutDialog about;
    about.open();
    EXPECT_EQ(about.focusWidget(), &button(about, "Close"));
    QTest::mouseClick(&button(about, "Copy version"), Qt::LeftButton);
    const QString copied = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(
        QRegularExpression("^Zembrastel \\d+\\.\\d+\\.\\d+\nQt 6\\.\\d+\\.\\d+\ncurl \\d+\\.\\d+\\.\\d+\n.+, .+$")
            .match(copied)
            .hasMatch())
        << copied.toStdString();
}

} // namespace
} // namespace zembrastel::testing
