// The demonstration: a sample profile with a past, and jobs that report a day's work on a site without any server.
//
// Nothing here touches the network, the disk or the secret store. What is reported follows from the script alone.
#pragma once

#include "app/job_work.h"
#include "app/profile_status.h"
#include "model/profile.h"
#include "platform/clock.h"

#include <chrono>

namespace zembrastel {

[[nodiscard]] Profile sampleProfile();

// What the sample profile has done so far: uploads, a failure that went by, and a pause.
[[nodiscard]] ProfileStatus samplePast(std::chrono::system_clock::time_point now);

// A server that never has anything newer, and edits that go up every few seconds, for ever. A profile that was paused
// goes on with what was not yet uploaded. The clock must outlive the work.
[[nodiscard]] JobWork demoWork(Clock& clock);

// The profile with a local folder that is there, which a demonstration takes for granted of any that is named.
[[nodiscard]] Profile withExistingFolder(Profile profile);

// The profile as validated() returns it, whether or not its local folder is there.
[[nodiscard]] Profile validatedForDemo(const Profile& profile);

} // namespace zembrastel
