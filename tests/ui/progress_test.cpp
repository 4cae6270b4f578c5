#include "model/error.h"
#include "screen.h"
#include "support/fake_clock.h"
#include "support/temporary_folder.h"
#include "sync/progress_meter.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/desktop/tray_item.h"
#include "ui/main_window/profile_detail.h"
#include "ui/theme/turning_clock.h"

#include <gtest/gtest.h>

#include <QAccessible>

#include <atomic>
#include <memory>
#include <semaphore>

using namespace zembrastel;
using namespace zembrastel::ui;
using namespace zembrastel::testing;
using namespace std::chrono_literals;

namespace {

constexpr std::uint64_t size = 80'000'000;

// A profile whose worker sends one file, one step for each call of letGoOn().
class ProgressTest : public ::testing::Test {
protected:
    ProgressTest() {
        Profile profile;
        profile.name = "<b>Site & shop\u202e\n!";
        profile.host = "127.0.0.1";
        profile.username = "user";
        profile.localFolder = folder.path().string();
        const StateStore store(folder / "state");
        store.save({.profiles = {profile}, .baselines = {}, .remoteDates = {}});
        model = std::make_unique<AppModel>(
            context, AppModel::Options{
                         .storeOverride = store,
                         .sessionPasswords = {{profile.id, "secret"}},
                         .work = {
                             .check = [](const auto&...) { return ServerCheck(); },
                             .watch = [this](const SyncWorker& worker, const std::stop_token&) { send(worker); }},
                         .clock = clock});
        bridge = std::make_unique<ModelBridge>(*model);
        detail = std::make_unique<ProfileDetail>(*bridge);
        detail->resize(716, 640);
        detail->show();
        detail->showProfile(profile.id);
        model->start(profile.id);
        id = profile.id;
    }

    ~ProgressTest() override {
        steps.release(8);
        detail.reset();
        EXPECT_TRUE(waitFor([] { return !turningClock().running(); }));
    }

    void send(const SyncWorker& worker) {
        try {
            sendStepwise(worker);
        } catch (const Cancelled&) {
            // The test is over.
        }
    }

    void sendStepwise(const SyncWorker& worker) {
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
    }

    // Until the worker has taken one more step, and what it told is on the screen.
    void letGoOn() {
        const int before = moved;
        steps.release();
        ASSERT_TRUE(waitFor([&] { return moved > before; }));
        for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
    }

    [[nodiscard]] ProgressStrip& strip() const { return *detail->findChild<ProgressStrip*>(); }
    [[nodiscard]] ProgressLabel& label() const { return *detail->findChild<ProgressLabel*>(); }

    // Where everything is.
    [[nodiscard]] QList<QRect> places() const {
        QList<QRect> all;
        for (const auto* const each : detail->findChildren<QWidget*>()) {
            if (each->isVisible() && each != &strip() && each != &label()) all << each->geometry();
        }
        return all;
    }

    TemporaryFolder folder;
    FakeClock clock;
    std::counting_semaphore<> steps{0};
    std::atomic<int> moved = 0;
    QtMainContext context;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ModelBridge> bridge;
    std::unique_ptr<ProfileDetail> detail;
    Uuid id;
};

} // namespace

TEST_F(ProgressTest, BarComesAfterASecondMovesNothingAndGoesWithTheTransfer) {
    ASSERT_TRUE(waitFor([this] { return model->status(id).title() == "Uploading"; }));
    letGoOn();
    const QList<QRect> before = places();
    letGoOn();
    EXPECT_FALSE(strip().isVisible()) << "999 milliseconds";
    EXPECT_TRUE(label().text().isEmpty());

    letGoOn();
    ASSERT_TRUE(strip().isVisible());
    EXPECT_EQ(strip().value(), 50);
    EXPECT_TRUE(label().text().startsWith(QStringLiteral("40.0 of 80 MB, "))) << label().text().toStdString();
    EXPECT_TRUE(label().text().endsWith(QStringLiteral(" — 3 of 17 files done")));
    EXPECT_EQ(label().visibleText(), label().text());
    EXPECT_EQ(places(), before);
    label().resize(label().width() / 3, label().height()); // as in a small window
    EXPECT_EQ(label().visibleText(), QStringLiteral("40.0 of 80 MB, 3 of 17 files"));

    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&strip());
    EXPECT_EQ(accessible->role(), QAccessible::ProgressBar);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Transfer of video.mp4"));
    EXPECT_EQ(accessible->text(QAccessible::Description), label().text());
    EXPECT_EQ(accessible->valueInterface()->currentValue().toInt(), 50);
    const TrayItem tray(*bridge, QDBusConnection(QStringLiteral("no bus")));
    EXPECT_EQ(
        tray.toolTip(), QStringLiteral("Zembrastel\n\u2039b\u203aSite \uff06 shop !: 40.0 of 80 MB, 3 of 17 files"))
        << "a desktop could read the name as markup, or its end as a line of its own";

    steps.release();
    ASSERT_TRUE(waitFor([this] { return model->status(id).title() == "Watching"; }));
    QCoreApplication::processEvents();
    EXPECT_FALSE(strip().isVisible());
    EXPECT_TRUE(label().text().isEmpty());
    EXPECT_EQ(tray.toolTip(), QStringLiteral("Zembrastel"));
}
