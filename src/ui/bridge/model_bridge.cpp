#include "ui/bridge/model_bridge.h"

#include <QTimer>

#include <utility>

namespace zembrastel::ui {

ModelBridge::ModelBridge(AppModel& observed, QObject* parent) : QObject(parent), source(observed) {
    source.observe(receiver);
}

ModelBridge::~ModelBridge() { source.forget(receiver); }

void ModelBridge::gather(std::set<Uuid>& changed, const Uuid& id) {
    if (statuses.empty() && logs.empty()) QTimer::singleShot(0, this, &ModelBridge::emitGathered);
    changed.insert(id);
}

void ModelBridge::emitGathered() {
    // Meanwhile a profile may have been removed, possibly by a slot of this very signal.
    const auto emitEach = [this](const std::set<Uuid>& changed, void (ModelBridge::*signal)(const Uuid&)) {
        for (const Uuid& id : changed) {
            if (source.profile(id) != nullptr) Q_EMIT(this->*signal)(id);
        }
    };
    const std::set<Uuid> changedStatuses = std::exchange(statuses, {});
    const std::set<Uuid> changedLogs = std::exchange(logs, {});
    emitEach(changedStatuses, &ModelBridge::statusChanged);
    emitEach(changedLogs, &ModelBridge::activityChanged);
}

} // namespace zembrastel::ui
