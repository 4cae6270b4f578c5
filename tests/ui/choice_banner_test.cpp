#include "ui/main_window/choice_banner.h"

#include "screen_fixture.h"
#include "ui/main_window/main_window.h"

#include <thread>

namespace zembrastel::testing {
namespace {

FirstComparison comparison(std::uint64_t all, int alike) {
    FirstComparison found{.localFiles = all};
    for (int number = 0; number < alike; ++number) {
        found.alike.files.set(std::to_string(number), {.size = 1'000'000});
        found.alike.dates.set(std::to_string(number), {});
    }
    return found;
}

TEST(ChoiceText, OffersOnlyWhatIsPossible) {
    FirstComparison compared = comparison(5, 3);
    for (const auto& [path, equal] : {std::pair("0", true), {"1", true}, {"2", false}}) compared.add(path, equal);
    FirstComparison different = comparison(1, 1);
    different.add("0", false);
    FirstComparison begun = comparison(5, 3);
    begun.add("0", true);
    struct {
        FirstComparison found;
        QString heading;
        QString buttons;
    } const cases[]{
        {comparison(640, 612), "612 of 640 files are on the server already.",
         "Upload the other 28|compare|Upload all 640"},
        {comparison(640, 640), "All 640 files are on the server already.", "Start watching|compare|Upload all 640"},
        {begun, "3 of 5 files are on the server already.", "Upload the other 2|compare|Upload all 5"},
        {compared, "2 of 5 files are the same on the server.", "Upload the other 3||Upload all 5"},
        {different, "None of your files is the same on the server.", "||Upload all 1"},
    };
    for (const auto& [found, heading, buttons] : cases) {
        const auto shown = choiceText(found);
        EXPECT_EQ(shown.heading, heading);
        EXPECT_EQ(shown.adopt + u'|' + (shown.compares ? "compare|" : "|") + shown.sendAll, buttons);
    }
    EXPECT_TRUE(choiceText(comparison(640, 612)).text.endsWith("downloads 612.0\u00a0MB."));
    EXPECT_TRUE(choiceText(begun).text.endsWith("downloads 2.0\u00a0MB."));
    EXPECT_TRUE(choiceText(compared).text.endsWith("replaces 1 file on the server."));
}

using ChoiceInWindow = ScreenFixture;

TEST_F(ChoiceInWindow, NothingIsUploadedBeforeTheChoice) {
    options.work = {
        .check =
            [](const FTPTransport&, const ServerRecord& recorded, const std::stop_token&) {
                return recorded.isFirst() ? ServerCheck{.first = comparison(4, 3)} : ServerCheck{};
            },
        .watch = [](const auto&, const auto&) {},
        .compareContents =
            [](const FTPTransport& server, const auto& files, const auto& compared) {
                compared(files.back(), std::nullopt);
                while (!server.control->isStopped()) std::this_thread::yield();
                throw Cancelled();
            }};
    const Profile profile = addProfile();
    MainWindow window(*bridge);
    screen = &window;
    window.show();
    model->start(profile.id);
    ASSERT_TRUE(waitFor([this] { return shows("3 of 4 files are on the server already."); }));
    EXPECT_EQ(window.focusWidget() == &button("Upload the other 1"), false) << "a banner never takes the focus";
    press("Compare contents first");
    ASSERT_TRUE(waitFor([this] { return shows("1 differs so far. Nothing is uploaded before you decide."); }));
    window.activateWindow();
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(shows("2 of 4 files are on the server already."));
    EXPECT_EQ(find("Stop comparing"), nullptr);
    EXPECT_FALSE(model->watching(profile.id));
    press("Upload the other 2");
    ASSERT_TRUE(waitFor([&] { return model->watching(profile.id); }));
    EXPECT_EQ(model->baseline(profile.id).size(), 2U);
    EXPECT_EQ(find("Upload all 4"), nullptr);
}

} // namespace
} // namespace zembrastel::testing
