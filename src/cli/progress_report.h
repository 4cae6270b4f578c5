// Shows on the live line how far the model's work has come.
//
// Observes the model on the main context, for one command.
#pragma once

#include "app/app_model.h"
#include "cli/observing.h"
#include "cli/output.h"

namespace zembrastel {

class ProgressReport final : public ModelObserver {
public:
    // Both outlive the report.
    ProgressReport(AppModel& observed, Output& where) : model(observed), output(where), observing(observed, *this) {}
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;
    ~ProgressReport() override { output.live("", ""); }

    void progressChanged(const Uuid&) override { show(); }
    void statusChanged(const Uuid&) override { show(); }

private:
    void show();

    const AppModel& model;
    Output& output;
    const Observing observing;
};

} // namespace zembrastel
