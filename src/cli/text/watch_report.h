// Tells what happens to the watched profiles, as it happens.
//
// Observes the model on the main context, and belongs to the watch command.
#pragma once

#include "app/app_model.h"
#include "cli/command.h"
#include "cli/text/narration.h"

#include <map>
#include <set>
#include <string>

namespace zembrastel::cli {

class WatchReport final : public ModelObserver {
public:
    // All outlive the report.
    WatchReport(const AppModel& observed, const Surroundings& surroundings) : model(observed), around(surroundings) {}

    void statusChanged(const Uuid& id) override;
    void activityLogged(const Uuid& id, const Activity& activity) override;
    void reviewChanged(const Uuid& id) override;
    void alertChanged() override;

private:
    void tell(const Profile& profile, const std::string& text);
    void tellMissing(const Profile& profile, bool missing);
    void tellMissingOnServer(const Uuid& id);
    void tellReview(const Profile& profile, const std::vector<RemoteChange>& changes);
    [[nodiscard]] JsonLine& begin(JsonLine& object, const Profile& profile) const;

    const AppModel& model;
    const Surroundings& around;
    Clock& clock = systemClock();
    std::map<Uuid, Narration> narrations;
    std::map<Uuid, std::string> lastStatus;
    std::set<Uuid> reviewsTold;
    std::set<Uuid> missingTold;
    std::set<Uuid> missingOnServerTold;
};

} // namespace zembrastel::cli
