// The demonstration: a sample profile with a past, and jobs that report a day's work on a site without any server.
//
// Nothing here touches the network, the disk or the secret store. All reports come from a script: the server never has
// anything newer, and edits are uploaded every few seconds without end. A profile that was paused continues with the
// first edit that was not uploaded.
#pragma once

#include "app/jobs/job_work.h"
#include "app/profile_status.h"
#include "model/profile.h"
#include "platform/clock.h"

#include <functional>

namespace zembrastel {

// What a model shows without a store, a secret store and a server.
struct Demonstration {
    Profile profile;
    ProfileStatus past; // of the profile: uploads, a failure that went by, and a pause
    JobWork work;
    // The profile as it is saved. Throws SyncError.
    std::function<Profile(const Profile&)> validated;
};

// The clock must outlive the demonstration.
[[nodiscard]] Demonstration demonstration(Clock& clock = systemClock());

// The profile with a local folder that exists: a demonstration accepts any folder that the user names.
[[nodiscard]] Profile withExistingFolder(Profile profile);

} // namespace zembrastel
