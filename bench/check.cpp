// What a start does before anything is uploaded, by the whole program but for its faces: the comparison with the
// server, or the first download of all files.
#include "app/app_model.h"
#include "app/context/main_context.h"
#include "measure.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <stdexcept>

namespace zembrastel::bench {
namespace {

constexpr std::chrono::hours patience{10};

// Counts the files that came, and sees the worker's first pause, with which a first download has ended.
class FirstPause final : public Clock {
public:
    explicit FirstPause(MainQueue& mainQueue) : queue(mainQueue) {}

    std::chrono::system_clock::time_point now() const override { return systemClock().now(); }
    std::chrono::steady_clock::time_point steadyNow() const override { return systemClock().steadyNow(); }

    bool sleep(const std::stop_token& stop, std::chrono::nanoseconds) override {
        queue.quit();
        return systemClock().sleep(stop, std::chrono::hours(1));
    }

private:
    MainQueue& queue;
};

AppModel::Options optionsFor(const StateStore& store, bool watches, Clock& clock) {
    const Uuid id = store.load().profiles.at(0).id;
    return {.storeOverride = store, .sessionPasswords = {{id, "s3cret"}}, .clock = clock, .watches = watches};
}

void requireSuccess(const AppModel& model, const Uuid& id) {
    const ProfileStatus& status = model.status(id);
    if (status.failed()) throw std::runtime_error(status.title() + ": " + status.detail);
}

void check(const std::string& stateFolder) {
    MainQueue queue;
    AppModel model(queue, optionsFor(StateStore(stateFolder), false, systemClock()));
    const Uuid id = model.profiles().front().id;
    const Moment begin = now();
    model.start(id);
    const auto over = [&] {
        return !model.running(id) || model.reviews().contains(id) || model.checkFailures().contains(id);
    };
    queue.runUntil(over, patience);
    const Moment end = now();
    requireSuccess(model, id);
    const auto review = model.reviews().find(id);
    const std::size_t offered = review == model.reviews().end() ? 0 : review->second.changes.size();
    Figures().since(begin, end).set("offered", static_cast<double>(offered)).print();
}

void download(const std::string& stateFolder) {
    MainQueue queue;
    FirstPause clock(queue);
    AppModel model(queue, optionsFor(StateStore(stateFolder), true, clock));
    const Uuid id = model.profiles().front().id;
    const Moment begin = now();
    model.start(id);
    queue.runUntil([] { return false; }, patience);
    const Moment end = now();
    requireSuccess(model, id);
    if (model.profiles().front().needsDownload) throw std::runtime_error("the download has not ended");
    Figures().since(begin, end).set("files", static_cast<double>(model.baseline(id).size())).print();
}

void add(CLI::App& parent, const char* name, const char* about, void (*measure)(const std::string&)) {
    auto* const command = parent.add_subcommand(name, about);
    const auto folder = std::make_shared<std::string>();
    command->add_option("FOLDER", *folder, "The state folder")->required();
    command->callback([folder, measure] { measure(*folder); });
}

} // namespace

void addCheck(CLI::App& parent) { add(parent, "check", "The comparison of the first profile with its server", check); }

void addDownload(CLI::App& parent) { add(parent, "download", "The first download of the first profile", download); }

} // namespace zembrastel::bench
