// Tells how far the model's work has come: on the live line where there is one, and where it is asked for in lines of
// their own.
//
// Observes the model on the main context, for one command.
#pragma once

#include "app/app_model.h"
#include "cli/session/observing.h"
#include "cli/terminal/output.h"

#include <chrono>

namespace zembrastel::cli {

class ProgressReport final : public ModelObserver {
public:
    enum class Lines {
        none,
        // Where there is no live line, for a command about one profile: at most one line in ten seconds, or one JSON
        // line in a second.
        whereNotLive
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
    void tell(const Profile& profile, const TransferProgress& progress);

    const AppModel& model;
    Output& output;
    const Lines lines;
    Clock& clock = systemClock();
    Time lastLine = clock.steadyNow();
    const Observing observing;
};

} // namespace zembrastel::cli
