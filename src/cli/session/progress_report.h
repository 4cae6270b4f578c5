// Prints the progress of the model's work: on the live line if there is one, else on request in lines of its own.
//
// Observes the model on the main context, for one command.
#pragma once

#include "app/app_model.h"
#include "cli/session/session.h"
#include "cli/terminal/output.h"

#include <chrono>

namespace zembrastel::cli {

class ProgressReport final : public ModelObserver {
public:
    enum class Lines {
        none,
        // Without a live line, for a command about one profile: at most one line in ten seconds, or one JSON line a
        // second.
        withoutLiveLine
    };

    // Both outlive the report.
    ProgressReport(AppModel& observed, Output& where, Lines wanted = Lines::none)
        : model(observed), output(where), lines(wanted), observing(observed, *this) {}
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;
    ~ProgressReport() override { output.live("", ""); }

    void progressChanged(const Uuid& id) override { show(id); }
    void statusChanged(const Uuid& id) override { show(id); }

private:
    using Time = std::chrono::steady_clock::time_point;

    void show(const Uuid& id);
    void showLive();
    void print(const Profile& profile, const TransferProgress& progress);

    const AppModel& model;
    Output& output;
    const Lines lines;
    Clock& clock = systemClock();
    Time lastLine = clock.steadyNow();
    const Observing observing;
};

} // namespace zembrastel::cli
