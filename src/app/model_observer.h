// What the model reports to the parts of the program that show it. Main context; called after the change.
#pragma once

#include "app/profile_status.h"
#include "platform/uuid.h"

#include <functional>
#include <set>

namespace zembrastel {

class ModelObserver {
public:
    virtual ~ModelObserver() = default;

    virtual void profilesChanged() {}
    virtual void selectionChanged() {}
    virtual void alertChanged() {}
    // Of one profile: its status (log and new progress aside), and a new line in its log.
    virtual void statusChanged(const Uuid&) {}
    virtual void activityLogged(const Uuid&, const Activity&) {}
    // A profile's status has new progress. The end of progress is reported by statusChanged().
    virtual void progressChanged(const Uuid&) {}
    // Of one profile: its review or its check failure. For the first, also which review is presented.
    virtual void reviewChanged(const Uuid&) {}
    virtual void presentedReviewChanged() {}
};

// Those that observe a model. Each must outlive the model or be removed.
class Observers {
public:
    void add(ModelObserver& observer) { all.insert(&observer); }
    void remove(ModelObserver& observer) { all.erase(&observer); }
    void clear() { all.clear(); }

    void notify(const std::function<void(ModelObserver&)>& report) const {
        for (auto* observer : all) report(*observer);
    }

private:
    std::set<ModelObserver*> all;
};

} // namespace zembrastel
