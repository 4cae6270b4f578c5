// The model's changes as Qt signals, at a rate that widgets can follow.
//
// Main thread. Signals are emitted at once, except for statuses and logs: a hundred busy profiles change them far more
// often than a screen is repainted, so each changed profile is reported once per turn of the event loop.
#pragma once

#include "app/app_model.h"
#include "app/model_observer.h"

#include <QObject>

#include <set>

namespace zembrastel::ui {

class ModelBridge : public QObject {
    Q_OBJECT

public:
    // The model must outlive the bridge.
    explicit ModelBridge(AppModel& observed, QObject* parent = nullptr);
    ~ModelBridge() override;

    [[nodiscard]] AppModel& model() const { return source; }

Q_SIGNALS:
    void profilesChanged();
    void selectionChanged();
    void alertChanged();
    // A profile's status, progress or counters changed, or it was started or stopped.
    void statusChanged(const zembrastel::Uuid& id);
    // A profile's log has new lines. Read the log to get them.
    void activityChanged(const zembrastel::Uuid& id);
    // A profile's review or check failure changed.
    void reviewChanged(const zembrastel::Uuid& id);
    void presentedReviewChanged();

private:
    class Receiver final : public ModelObserver {
    public:
        explicit Receiver(ModelBridge& owner) : bridge(owner) {}

        void profilesChanged() override { Q_EMIT bridge.profilesChanged(); }
        void selectionChanged() override { Q_EMIT bridge.selectionChanged(); }
        void alertChanged() override { Q_EMIT bridge.alertChanged(); }
        void statusChanged(const Uuid& id) override { bridge.gather(bridge.statuses, id); }
        void progressChanged(const Uuid& id) override { bridge.gather(bridge.statuses, id); }
        void activityLogged(const Uuid& id, const Activity&) override { bridge.gather(bridge.logs, id); }
        void reviewChanged(const Uuid& id) override { Q_EMIT bridge.reviewChanged(id); }
        void presentedReviewChanged() override { Q_EMIT bridge.presentedReviewChanged(); }

    private:
        ModelBridge& bridge;
    };

    void gather(std::set<Uuid>& changed, const Uuid& id);
    void emitGathered();

    AppModel& source;
    Receiver receiver{*this};
    std::set<Uuid> statuses;
    std::set<Uuid> logs;
};

} // namespace zembrastel::ui
