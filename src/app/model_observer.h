// What the model tells those who show it. Called on the main context, after the change.
#pragma once

#include "app/profile_status.h"
#include "platform/uuid.h"

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
    // There is new progress in a profile's status. What ends it is a change of the status.
    virtual void progressChanged(const Uuid&) {}
    // Of one profile: its review or its check failure. For the first, also which review is presented.
    virtual void reviewChanged(const Uuid&) {}
    virtual void presentedReviewChanged() {}
};

} // namespace zembrastel
