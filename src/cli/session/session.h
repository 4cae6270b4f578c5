// The state folder that the user chose: opening, reading and holding it.
//
// Failures are CommandErrors that say which file they are about.
#pragma once

#include "app/app_model.h"
#include "cli/command.h"
#include "model/state_store.h"
#include "platform/instance_lock.h"
#include "transport/compare/server_check.h"

namespace zembrastel::cli {

// For commands that work on saved profiles. A folder that --state names must exist: a misspelt name would otherwise
// read as "no profiles".
[[nodiscard]] StateStore openState(const GlobalOptions& options);

// For commands that may save the first profile: makes the folder.
[[nodiscard]] StateStore openOrMakeState(const GlobalOptions& options);

// For commands that only look: makes and changes nothing, and another program may be running meanwhile.
[[nodiscard]] SavedState loadState(const GlobalOptions& options);
[[nodiscard]] std::vector<Profile> loadProfiles(const GlobalOptions& options); // which is quicker

// What is recorded of the profile's files, with what a killed program announced.
[[nodiscard]] ServerRecord recordOf(const SavedState& state, const Uuid& profile, const GlobalOptions& options);

// What must not be published of what the command line names: the state folder and the password file.
[[nodiscard]] std::vector<PrivateItem> privateItems(const GlobalOptions& options);

// Keeps other programs from the state folder for as long as it lives. ExitCode::stateInUse when one is running.
[[nodiscard]] InstanceLock holdState(const StateStore& store);

// Ends the command when the model could not load the saved state.
void requireLoaded(const AppModel& model);

} // namespace zembrastel::cli
