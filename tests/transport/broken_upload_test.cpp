// A server that fails at each step of an upload in turn. At any step and in any way, the live file is the old or the
// new one, only temporary files are left beside it, and the next upload repairs it.
//
// The user stops a transfer that stalls: curl's time limits of 15 to 240 seconds end it in the same way, later.
#include "support/certificates.h"
#include "support/fake_clock.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "sync/sync_worker.h"

#include <future>
#include <gtest/gtest.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::FileTree;
using testing::FtpServer;
using testing::readPublished;

struct Scenario {
    std::string path; // of the uploaded file
    FileTree onServer{{"site/other", "old"}};
    FtpServer::Tls tls = FtpServer::Tls::none;
};

class BrokenUpload : public ::testing::TestWithParam<std::tuple<Scenario, std::string>> {
protected:
    BrokenUpload() { after["site/" + scenario.path] = testing::readFile(site / scenario.path); }

    void requireEntire() const {
        const auto tree = readPublished(server.root());
        EXPECT_TRUE(tree == scenario.onServer || tree == after) << "neither the old files nor the new ones";
    }

    // Runs a worker until the poll after the upload, through all its retries, which take no time, and stops a transfer
    // that stalls. True if the file went live.
    bool upload() {
        constexpr std::size_t maxWaits = 20; // a few are enough
        const auto control = std::make_shared<TransferControl>();
        const bool stalls = way == "stall" && fs::exists(breaking);
        testing::FakeClock clock;
        std::stop_source stop;
        bool live = false;
        std::size_t waits = 0;
        clock.onSleep = [&](std::chrono::nanoseconds) {
            requireEntire();
            if (live || ++waits == maxWaits) stop.request_stop();
            return !stop.stop_requested();
        };
        const auto take = [&](const WorkerEvent& event) {
            live = live || std::holds_alternative<event::Uploaded>(event);
        };
        const SyncWorker worker{
            .profile = site.profile,
            .password = site.password,
            .control = control,
            .initialBaseline = {},
            .events = {.deliver = take, .post = take},
            .clock = clock,
            .mayReplaceUnseen = true};
        auto running = std::async(std::launch::async, [&] { worker.run(stop.get_token()); });
        const auto ended = [&] { return running.wait_for(std::chrono::seconds(0)) == std::future_status::ready; };
        if (stalls) {
            EXPECT_TRUE(
                testing::eventually([&] { return ended() || !fs::exists(breaking); }, std::chrono::seconds(60)));
            if (!fs::exists(breaking)) control->cancel();
        }
        running.get();
        return live;
    }

    const Scenario scenario = std::get<0>(GetParam());
    const std::string way = std::get<1>(GetParam());
    const testing::ScopedTrust trust{testing::certificates().ca};
    testing::TemporaryFolder folder;
    const fs::path breaking = folder / "break";
    FtpServer server{FtpServer::Kind::odd, {.tls = scenario.tls, .extra = {"--break", breaking.string()}}};
    // Some blocks, and more than one TLS record.
    testing::LocalSite site{server, {{scenario.path, testing::randomBytes(90'000)}}};
    FileTree after = scenario.onServer;
};

TEST_P(BrokenUpload, NoStepLeavesATornFile) {
    for (int step = 1; step < 200 && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        fs::remove_all(server.root());
        testing::writeTree(server.root(), scenario.onServer);
        testing::writeFile(folder / "next", std::to_string(step) + " " + way);
        fs::rename(folder / "next", breaking);
        const bool live = upload();
        requireEntire();
        if (!live) {
            EXPECT_FALSE(fs::exists(breaking)) << "an upload without a fault failed";
            EXPECT_TRUE(upload()) << "the next upload does not repair it";
        }
        EXPECT_TRUE(readPublished(server.root()) == after);
        if (!fs::remove(breaking)) continue;
        RecordProperty("faults", step - 1); // the upload has no more steps
        return;
    }
    ADD_FAILURE() << "no upload came through";
}

const auto ways = ::testing::Values("close", "reset", "stall", "450 Not just now", "553 Not allowed", "421 Going away");
const FileTree live{{"site/page", "the old page"}, {"site/other", "old"}};

INSTANTIATE_TEST_SUITE_P(
    Replacement, BrokenUpload, ::testing::Combine(::testing::Values(Scenario{"page", live}), ways));
INSTANTIATE_TEST_SUITE_P(
    RestOfUploads, BrokenUpload,
    ::testing::Combine(
        ::testing::Values(
            Scenario{"page"}, Scenario{"a/b/page"}, Scenario{"page", live, FtpServer::Tls::explicitTls},
            Scenario{"a/b/page", live, FtpServer::Tls::explicitTls}),
        ways));

} // namespace
} // namespace zembrastel
