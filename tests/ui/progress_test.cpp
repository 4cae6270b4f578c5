#include "screen_fixture.h"
#include "sync/progress_meter.h"
#include "ui/desktop/tray_item.h"
#include "ui/main_window/profile_detail.h"
#include "ui/theme/turning_clock.h"

#include <QAccessible>

#include <atomic>
#include <semaphore>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;

// A profile whose worker sends one file, one step for each call of letStep().
class ProgressTest : public ScreenFixture {
protected:
    ProgressTest() {
        options.work = {
            .check = [](const auto&...) { return ServerCheck(); },
            .watch = [this](const SyncWorker& worker, const std::stop_token&) { send(worker); }};
        Profile profile = addProfile();
        id = profile.id;
        profile.name = "<b>Site & shop\u202e\n!";
        model->save(profile, std::nullopt);
        detail = std::make_unique<ProfileDetail>(*bridge);
        detail->resize(716, 640);
        detail->show();
        detail->showProfile(id);
        model->start(id);
    }

    ~ProgressTest() override {
        steps.release(8);
        detail.reset();
        EXPECT_TRUE(waitFor([] { return !turningClock().running(); }));
        model->shutdown();
    }

    void send(const SyncWorker& worker) {
        constexpr std::uint64_t size = 80'000'000;
        try {
            worker.events.deliver(uploadingStatus("video.mp4", 17));
            ProgressMeter meter(worker.clock, worker.events.progress);
            meter.begin(TransferProgress::Work::uploading);
            meter.setFiles(3, 17);
            meter.fileBegins("video.mp4", size);
            for (const auto& [after, bytes] : {std::pair(500ms, size / 8), {499ms, size / 4}, {501ms, size / 2}}) {
                steps.acquire();
                clock.advance(after);
                meter.fileMoved(bytes);
                ++moved;
            }
            steps.acquire();
            worker.events.deliver(watchingStatus());
        } catch (const Cancelled&) {
            // The test has ended.
        }
    }

    // Returns when the worker has taken one more step and the screen shows it.
    void letStep() {
        const int before = moved;
        steps.release();
        ASSERT_TRUE(waitFor([&] { return moved > before; }));
        for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
    }

    [[nodiscard]] ProgressStrip& strip() const { return *detail->findChild<ProgressStrip*>(); }
    [[nodiscard]] ProgressLabel& label() const { return *detail->findChild<ProgressLabel*>(); }

    // The places of all other visible widgets.
    [[nodiscard]] QList<QRect> places() const {
        QList<QRect> all;
        for (const auto* const each : detail->findChildren<QWidget*>()) {
            if (each->isVisible() && each != &strip() && each != &label()) all << each->geometry();
        }
        return all;
    }

    std::counting_semaphore<> steps{0};
    std::atomic<int> moved = 0;
    std::unique_ptr<ProfileDetail> detail;
    Uuid id;
};

TEST_F(ProgressTest, AppearingProgressBarMovesNothing) {
    ASSERT_TRUE(waitFor([this] { return model->status(id).title() == "Uploading"; }));
    letStep();
    const QList<QRect> before = places();
    letStep();
    EXPECT_FALSE(strip().isVisible()) << "after 999 milliseconds";
    EXPECT_TRUE(label().text().isEmpty());

    letStep();
    ASSERT_TRUE(strip().isVisible());
    EXPECT_EQ(strip().value(), 50);
    EXPECT_TRUE(label().text().startsWith("40.0 of 80 MB, ")) << label().text().toStdString();
    EXPECT_TRUE(label().text().endsWith(" — 3 of 17 files done"));
    EXPECT_EQ(label().visibleText(), label().text());
    EXPECT_EQ(places(), before);
    label().resize(label().width() / 3, label().height()); // as in a small window
    EXPECT_EQ(label().visibleText(), "40.0 of 80 MB, 3 of 17 files");

    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&strip());
    EXPECT_EQ(accessible->role(), QAccessible::ProgressBar);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Transfer of video.mp4");
    EXPECT_EQ(accessible->text(QAccessible::Description), label().text());
    EXPECT_EQ(accessible->valueInterface()->currentValue().toInt(), 50);
    const TrayItem tray(*bridge, QDBusConnection("no bus"));
    EXPECT_EQ(tray.toolTip(), "Zembrastel\n\u2039b\u203aSite \uff06 shop !: 40.0 of 80 MB, 3 of 17 files")
        << "a desktop could read the name as markup, or its end as a line of its own";

    steps.release();
    ASSERT_TRUE(waitFor([this] { return model->status(id).title() == "Watching"; }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(strip().isVisible());
    EXPECT_TRUE(label().text().isEmpty());
    EXPECT_EQ(tray.toolTip(), "Zembrastel");
}

} // namespace
} // namespace zembrastel::testing
