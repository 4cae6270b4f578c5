#include "cli/profile_saving.h"

#include "cli/presentation.h"
#include "cli/state_folder.h"
#include "model/error.h"

namespace zembrastel {

EditableState::EditableState(const Surroundings& around, std::function<void(const Uuid&)> removePassword)
    : store(openOrMakeState(around.options)), held(holdState(store)),
      profiles(
          queue, {.storeOverride = store,
                  .passwordAccess =
                      {.read = [](const Uuid&) -> std::string { throw SyncError("Not started."); },
                       .remove = std::move(removePassword)},
                  .watches = false}) {
    requireLoaded(profiles);
}

// The password is stored here rather than by the model, which would start an enabled profile with it.
void EditableState::add(const Profile& profile, const std::optional<std::string>& password) {
    if (password) PasswordStore::save(*password, profile.id);
    try {
        profiles.save(profile, std::nullopt);
    } catch (const std::exception&) {
        if (password) PasswordStore::remove(profile.id);
        throw;
    }
}

void EditableState::change(const Profile& profile, const std::optional<std::string>& password) {
    profiles.checkSavable(profile);
    if (password) PasswordStore::save(*password, profile.id);
    profiles.save(profile, std::nullopt);
}

Profile validProfile(const Profile& profile) {
    try {
        return profile.validated();
    } catch (const SyncError& error) {
        throw CommandError(ExitCode::failed, sentence(error.what()) + " Nothing was changed.");
    }
}

void requireNew(const Profile& profile, const std::vector<Profile>& others) {
    for (const auto& other : others) {
        if (other.id == profile.id) {
            throw CommandError(
                ExitCode::failed,
                "The id " + profile.id.text() + " is that of " + inQuotes(other.name) + ". Nothing was changed.");
        }
        if (other.name == profile.name) {
            throw CommandError(
                ExitCode::failed,
                "There is a profile " + inQuotes(other.name) + " already. Nothing was changed; give another --name.");
        }
    }
}

} // namespace zembrastel
