// Observes the model for as long as it lives.
#pragma once

#include "app/app_model.h"

namespace zembrastel::cli {

class Observing {
public:
    Observing(AppModel& observed, ModelObserver& told) : model(observed), observer(told) { model.observe(observer); }
    Observing(const Observing&) = delete;
    Observing& operator=(const Observing&) = delete;
    ~Observing() { model.forget(observer); }

private:
    AppModel& model;
    ModelObserver& observer;
};

} // namespace zembrastel::cli
