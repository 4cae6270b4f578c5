// Saved profiles as commands change them: with their passwords, and without any contact with a server.
//
// Used on the main thread alone. Failures are CommandErrors where nothing else is said.
#pragma once

#include "app/app_model.h"
#include "app/context/main_queue.h"
#include "cli/command.h"
#include "model/state_store.h"
#include "platform/instance_lock.h"

namespace zembrastel::cli {

// The state folder, held for this program, and the model of what is in it, which starts nothing.
class EditableState {
public:
    // Ends the command when another program holds the folder or the saved state cannot be loaded.
    explicit EditableState(
        const Surroundings& around, std::function<void(const Uuid&)> removePassword = PasswordStore::remove);

    [[nodiscard]] AppModel& model() { return profiles; }
    [[nodiscard]] MainQueue& mainQueue() { return queue; }

    // Both or nothing. Throws SyncError or std::filesystem::filesystem_error.
    void add(const Profile& profile, const std::optional<std::string>& password);

    // The same of a profile that is there. A new password stays where saving the file failed.
    void change(const Profile& profile, const std::optional<std::string>& password);

private:
    StateStore store;
    InstanceLock held;
    MainQueue queue;
    AppModel profiles;
};

// The profile as it is saved.
[[nodiscard]] Profile validProfile(const Profile& profile);

// Refuses the user's home folder and every folder above it: they are no site, and hold keys and passwords.
void requireOwnFolder(const std::string& localFolder);

// Of these profiles none may have the id or the name of the new one.
void requireNew(const Profile& profile, const std::vector<Profile>& others);

} // namespace zembrastel::cli
