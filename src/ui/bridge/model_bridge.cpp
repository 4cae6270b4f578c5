#include "ui/bridge/model_bridge.h"

#include <QTimer>

#include <utility>

namespace zembrastel::ui {

ModelBridge::ModelBridge(AppModel& observed, QObject* parent) : QObject(parent), source(observed) {
    source.observe(receiver);
}

ModelBridge::~ModelBridge() { source.forget(receiver); }

void ModelBridge::gather(std::set<Uuid>& changed, const Uuid& id) {
    if (statuses.empty() && logs.empty()) QTimer::singleShot(0, this, &ModelBridge::tellGathered);
    changed.insert(id);
}

void ModelBridge::tellGathered() {
    // A profile may have been removed meanwhile, also by one who is being told.
    const auto tell = [this](const std::set<Uuid>& changed, void (ModelBridge::*signal)(const Uuid&)) {
        for (const Uuid& id : changed) {
            if (source.profile(id) != nullptr) Q_EMIT(this->*signal)(id);
        }
    };
    const std::set<Uuid> changedStatuses = std::exchange(statuses, {});
    const std::set<Uuid> changedLogs = std::exchange(logs, {});
    tell(changedStatuses, &ModelBridge::statusChanged);
    tell(changedLogs, &ModelBridge::activityChanged);
}

} // namespace zembrastel::ui
