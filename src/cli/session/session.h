// The saved state that a command works on: StateFolder reads it, Session holds it.
//
// Main thread. Failures are CommandErrors that name the file or folder.
#pragma once

#include "app/app_model.h"
#include "app/context/main_context.h"
#include "cli/command.h"
#include "model/records/published_contents.h"
#include "model/state_store.h"
#include "platform/instance_lock.h"
#include "transport/compare/server_check.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::cli {

// The folder that --state names, or the default one. Reading makes and changes nothing, and another program may be
// running meanwhile. A folder that --state names must exist: a misspelt name would otherwise read as "no profiles".
class StateFolder {
public:
    explicit StateFolder(const GlobalOptions& globalOptions);

    [[nodiscard]] SavedState load() const;
    [[nodiscard]] std::vector<Profile> loadProfiles() const; // which is quicker

    // What is recorded of the profile's files, with what a killed program announced.
    [[nodiscard]] ServerRecord recordOf(const SavedState& state, const Uuid& profile) const;

    // The hashes of published contents, if the profile compares them.
    [[nodiscard]] std::optional<PublishedContents> contentsOf(const Profile& profile) const;

    // What the command line names and must not be published: the state folder and the password file.
    [[nodiscard]] std::vector<PrivateItem> privateItems() const;

    // Makes the default folder.
    [[nodiscard]] StateStore open() const;
    // Makes the folder that --state names as well, for a command that may save the first profile.
    [[nodiscard]] StateStore openOrMake() const;

private:
    void requireNamed() const;
    template <class Loaded>
    [[nodiscard]] Loaded loadBy(Loaded (StateStore::*read)() const) const;

    std::optional<std::filesystem::path> named;
    std::string passwordFile;
};

// The state folder, held by this program until the session ends, and the model of what is saved in it.
class Session {
public:
    // Opens the folder and sets the store of `options`. Ends the command with ExitCode::stateInUse if another program
    // holds the folder, and with ExitCode::failed if the saved state cannot be loaded.
    Session(const CommandContext& context, AppModel::Options options)
        : Session(context, StateFolder(context.options).open(), std::move(options)) {}

    // For a command that changes saved profiles: starts nothing and contacts no server. Makes the folder if needed.
    [[nodiscard]] static Session forChanges(
        const CommandContext& context, std::function<void(const Uuid&)> removePassword = PasswordStore::remove);

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] AppModel& model() { return profiles; }
    [[nodiscard]] MainQueue& queue() { return mainQueue; }
    [[nodiscard]] const std::filesystem::path& folder() const { return store.folder(); }

    // While the scope lives, an interrupt ends runUntil().
    [[nodiscard]] Interrupt::Scope interruptible();

    // Works until the condition holds. False if the user interrupted.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition);

    // Saves a new profile with its password. If the secret service fails, only the profile is saved; returns why, else
    // nullopt. Throws SyncError or std::filesystem::filesystem_error; then nothing is saved.
    [[nodiscard]] std::optional<std::string> add(const Profile& profile, const std::optional<std::string>& password);

    // Saves a changed profile likewise. If saving the file fails, a new password stays.
    [[nodiscard]] std::optional<std::string> change(const Profile& profile, const std::optional<std::string>& password);

private:
    Session(const CommandContext& context, StateStore opened, AppModel::Options options);

    Interrupt& interrupt;
    StateStore store;
    InstanceLock lock;
    MainQueue mainQueue;
    AppModel profiles;
};

// Observes the model as long as it lives.
class Observing {
public:
    Observing(AppModel& observed, ModelObserver& modelObserver) : model(observed), observer(modelObserver) {
        model.observe(observer);
    }
    Observing(const Observing&) = delete;
    Observing& operator=(const Observing&) = delete;
    ~Observing() { model.forget(observer); }

private:
    AppModel& model;
    ModelObserver& observer;
};

} // namespace zembrastel::cli
