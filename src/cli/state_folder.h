// The state folder that the user chose: opening, reading and holding it.
//
// Failures are CommandErrors that say which file they are about.
#pragma once

#include "app/app_model.h"
#include "cli/command.h"
#include "model/state_store.h"
#include "platform/instance_lock.h"

namespace zembrastel {

[[nodiscard]] StateStore openState(const GlobalOptions& options);

// For commands that only look: another program may be running meanwhile.
[[nodiscard]] SavedState loadState(const GlobalOptions& options);
[[nodiscard]] std::vector<Profile> loadProfiles(const GlobalOptions& options); // which is quicker

// Keeps other programs from the state folder for as long as it lives. ExitCode::stateInUse when one is running.
[[nodiscard]] InstanceLock holdState(const StateStore& store);

// Ends the command when the model could not load the saved state.
void requireLoaded(const AppModel& model);

} // namespace zembrastel
