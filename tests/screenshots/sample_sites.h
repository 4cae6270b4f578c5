// The sites that the pictures show: five profiles, each in a state of its own, which the real model came to by events
// at set times, without a server.
//
// Main thread. "Today" is the day of the run, as the screens name days from it; all else is always the same.
#pragma once

#include "app/app_model.h"
#include "support/temporary_folder.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::screenshots {

// Stands still until it is set, and sleeps until it is woken.
class PictureClock final : public Clock {
public:
    void set(std::chrono::system_clock::time_point instant);
    void wake();

    [[nodiscard]] std::chrono::system_clock::time_point now() const override;
    [[nodiscard]] std::chrono::steady_clock::time_point steadyNow() const override { return {}; }
    [[nodiscard]] bool sleep(const std::stop_token& stop, std::chrono::nanoseconds) override;

private:
    mutable std::mutex mutex;
    std::condition_variable_any woken;
    std::chrono::system_clock::time_point shown;
    int wakes = 0;
};

class SampleSites {
public:
    // Returns when every site is in its state. Throws std::runtime_error when one does not come to it.
    explicit SampleSites(MainContext& context);

    [[nodiscard]] AppModel& model() { return *app; }

    // Has the paused site start, and find files missing on its server.
    void loseFiles();

    [[nodiscard]] Uuid id(const std::string& name) const;

private:
    struct Moment {
        std::chrono::system_clock::time_point when;
        WorkerEvent event;
        std::optional<TransferProgress> progress = std::nullopt; // told after the event
    };

    // What one site's job finds and does.
    struct Play {
        PathSet missing{};
        std::chrono::system_clock::time_point start{};
        std::chrono::system_clock::time_point checked{};
        std::vector<RemoteChange> changes{};
        std::optional<std::string> failure{};
        std::vector<Moment> moments{};
    };

    [[nodiscard]] JobWork work();
    void play(const std::string& name, Play chosen);
    void await(const std::function<bool()>& condition) const;
    [[nodiscard]] std::size_t lines(const std::string& name) const { return app->status(id(name)).activity.size(); }

    void playWebsite();
    void playPortal();
    void playCampaign();
    void playDocumentation();

    testing::TemporaryFolder folder;
    PictureClock clock;
    std::shared_ptr<const Play> current; // of the one site that plays; set before its thread begins
    std::unique_ptr<AppModel> app;
};

} // namespace zembrastel::screenshots
