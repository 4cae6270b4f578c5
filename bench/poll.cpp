// The polls of a worker whose files are all in the baseline, as the program runs them but for the pause between two.
#include "measure.h"
#include "model/scan.h"
#include "subjects.h"
#include "sync/sync_worker.h"

#include <CLI/CLI.hpp>
#include <stdexcept>

namespace zembrastel::bench {
namespace {

// Stands between two polls and measures each. The first polls settle; the one after the measured ones counts memory.
class PollWatch final : public Clock {
public:
    explicit PollWatch(std::size_t toMeasure) : measured(toMeasure) {}

    std::chrono::system_clock::time_point now() const override { return systemClock().now(); }
    std::chrono::steady_clock::time_point steadyNow() const override { return systemClock().steadyNow(); }

    bool sleep(const std::stop_token&, std::chrono::nanoseconds) override {
        const Moment end = bench::now();
        ++polls;
        if (countsMemory()) {
            allocations = count.end();
            return false;
        }
        if (polls > settling && polls <= settling + measured) {
            own.push_back(end.own - begin.own);
            wall.push_back(end.wall - begin.wall);
        }
        if (polls == settling + measured) count.begin();
        begin = bench::now();
        return true;
    }

    // Called in mid poll, while all that it compares is held.
    void event() {
        if (polls == settling + measured) heap = heapBytes();
    }

    std::vector<double> own;
    std::vector<double> wall;
    std::size_t heap = 0;
    std::size_t allocations = 0;

private:
    static constexpr std::size_t settling = 2;

    [[nodiscard]] bool countsMemory() const { return polls > settling + measured; }

    const std::size_t measured;
    std::size_t polls = 0;
    Moment begin;
    AllocationCount count;
};

void measure(const std::string& folder, std::size_t polls) {
    Profile profile;
    profile.localFolder = folder;
    const std::size_t before = heapBytes();
    PollWatch watch(polls);
    bool steady = true;
    const auto noteEvent = [&](const WorkerEvent& event) {
        const auto* const status = std::get_if<event::Status>(&event);
        steady = steady && status != nullptr && status->phase == Phase::watching;
        watch.event();
    };
    const SyncWorker worker{
        .profile = profile,
        .password = {},
        .control = std::make_shared<TransferControl>(),
        .initialBaseline = scan(profile),
        .events = {.deliver = noteEvent, .post = noteEvent},
        .clock = watch};
    const auto files = static_cast<double>(worker.initialBaseline.size());
    worker.run(std::stop_token());
    if (!steady) throw std::runtime_error("the folder changed while it was polled");
    Figures()
        .set("own", watch.own)
        .set("wall", watch.wall)
        .set("files", files)
        .set("heap", static_cast<double>(watch.heap - before))
        .set("allocations", static_cast<double>(watch.allocations))
        .print();
}

} // namespace

void addPoll(CLI::App& parent) {
    struct Options {
        std::string folder;
        std::size_t polls = 3;
    };
    auto* const command = parent.add_subcommand("poll", "Steady polls of a folder, and the memory they hold");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_option("--polls", options->polls);
    command->callback([options] { measure(options->folder, options->polls); });
}

} // namespace zembrastel::bench
