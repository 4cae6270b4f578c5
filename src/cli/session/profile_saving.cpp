#include "cli/session/profile_saving.h"

#include "cli/session/session.h"
#include "cli/text/presentation.h"
#include "model/error.h"
#include "platform/standard_paths.h"

namespace zembrastel::cli {

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

void requireOwnFolder(const std::string& localFolder) {
    std::error_code unknown; // a home folder that is not there is in no other folder
    const auto home = std::filesystem::canonical(homeFolder(), unknown);
    const auto folder = std::filesystem::path(localFolder).lexically_normal();
    const bool holdsHome = !unknown && !folder.empty() && *home.lexically_relative(folder).begin() != "..";
    if (!holdsHome && folder != "/") return;
    throw CommandError(
        ExitCode::failed, "The local folder " + oneLine(localFolder)
                              + " is or holds your home folder, with keys and passwords that must not be published. "
                                "Nothing was changed; name the site's own folder.");
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

} // namespace zembrastel::cli
