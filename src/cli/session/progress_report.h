// Prints the progress of work: on the live line if there is one, else on request in lines of its own.
//
// Main context, for one command.
#pragma once

#include "app/app_model.h"
#include "cli/session/session.h"
#include "cli/terminal/output.h"

#include <chrono>
#include <optional>

namespace zembrastel::cli {

// Of one profile. Without a live line: at most one line in ten seconds, or one JSON line a second.
class ProgressLines {
public:
    // The output outlives it.
    explicit ProgressLines(Output& where) : output(where) {}
    ProgressLines(const ProgressLines&) = delete;
    ProgressLines& operator=(const ProgressLines&) = delete;
    ~ProgressLines() { output.live("", ""); }

    // Nullopt: no work is in progress.
    void show(const Profile& profile, const std::optional<TransferProgress>& progress);

private:
    void print(const Profile& profile, const TransferProgress& progress);

    Output& output;
    Clock& clock = systemClock();
    std::chrono::steady_clock::time_point lastLine = clock.steadyNow();
};

// Of the model's work, which it observes.
class ProgressReport final : public ModelObserver {
public:
    enum class Lines {
        none,
        withoutLiveLine // for a command about one profile: see ProgressLines
    };

    // Both outlive the report.
    ProgressReport(AppModel& observed, Output& where, Lines wanted = Lines::none)
        : model(observed), output(where), lines(where), printsLines(wanted == Lines::withoutLiveLine),
          observing(observed, *this) {}
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;
    ~ProgressReport() override = default;

    void progressChanged(const Uuid& id) override { show(id); }
    void statusChanged(const Uuid& id) override { show(id); }

private:
    void show(const Uuid& id);
    void showLive();

    const AppModel& model;
    Output& output;
    ProgressLines lines;
    const bool printsLines;
    const Observing observing;
};

} // namespace zembrastel::cli
