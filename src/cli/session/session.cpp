#include "cli/session/session.h"

#include "app/records.h"
#include "cli/text/presentation.h"
#include "language/engine_translation.h"
#include "language/translation.h"
#include "model/error.h"
#include "model/records/comparison_record.h"
#include "model/records/publish_journal.h"

namespace zembrastel::cli {
namespace {

[[noreturn]] void failLoading(const std::exception& error) {
    throw CommandError(ExitCode::failed, translateEngineText(loadFailure(error)));
}

InstanceLock lockState(const StateStore& store) {
    std::optional<InstanceLock> lock;
    try {
        lock = InstanceLock::acquire(store.folder());
    } catch (const std::exception& error) {
        throw CommandError(ExitCode::failed, translate("Cannot lock the state folder: %1", {reasonText(error)}));
    }
    if (!lock) {
        throw CommandError(
            ExitCode::stateInUse, translate(
                                      "The state folder %1 is in use by another running program. Nothing was changed; "
                                      "stop that program first, or name another folder with --state.",
                                      {store.folder().string()}));
    }
    return *std::move(lock);
}

// The session stores the password, not the model, which would start an enabled profile with it. Returns why it could
// not be stored.
std::optional<std::string> storePassword(const std::optional<std::string>& password, const Uuid& id) {
    if (!password) return std::nullopt;
    try {
        PasswordStore::save(*password, id);
        return std::nullopt;
    } catch (const SecretServiceFailed& failure) {
        return failure.what();
    }
}

AppModel::Options withStore(AppModel::Options options, const StateStore& store) {
    options.storeOverride = store;
    return options;
}

} // namespace

StateFolder::StateFolder(const GlobalOptions& globalOptions) {
    if (!globalOptions.stateFolder.empty()) named = std::filesystem::absolute(globalOptions.stateFolder);
    if (!globalOptions.passwordFile.empty()) {
        passwordFile = std::filesystem::absolute(globalOptions.passwordFile).string();
    }
}

void StateFolder::requireNamed() const {
    std::error_code failed; // opening the folder reports it
    if (!named || std::filesystem::exists(*named, failed) || failed) return;
    throw CommandError(
        ExitCode::failed, translate("There is no such state folder: %1. Check what --state names.", {named->string()}));
}

template <class Loaded>
Loaded StateFolder::loadBy(Loaded (StateStore::*read)() const) const {
    requireNamed();
    try {
        const auto store = StateStore::find(named);
        return store ? ((*store).*read)() : Loaded{};
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

SavedState StateFolder::load() const { return loadBy(&StateStore::load); }

std::vector<Profile> StateFolder::loadProfiles() const { return loadBy(&StateStore::loadProfiles); }

ServerRecord StateFolder::recordOf(const SavedState& state, const Uuid& profile) const {
    ServerRecord record = zembrastel::recordOf(state, profile);
    if (const auto store = StateStore::find(named)) {
        record.announced = PublishJournal(store->folder(), profile).read();
        if (record.isFirst()) record.compared = ComparisonRecord(store->folder(), profile).read();
    }
    return record;
}

std::optional<PublishedContents> StateFolder::contentsOf(const Profile& profile) const {
    const auto store = profile.compareContents ? StateStore::find(named) : std::nullopt;
    return store ? std::optional(PublishedContents(store->folder(), profile)) : std::nullopt;
}

std::vector<PrivateItem> StateFolder::privateItems() const {
    std::vector<PrivateItem> items;
    try {
        if (const auto store = StateStore::find(named)) items = store->privateItems();
    } catch (const std::filesystem::filesystem_error&) {
        // The folder was removed meanwhile.
    }
    if (!passwordFile.empty()) items.push_back({.path = passwordFile, .reason = "it holds the password"});
    return items;
}

StateStore StateFolder::open() const {
    requireNamed();
    return openOrMake();
}

StateStore StateFolder::openOrMake() const {
    try {
        return StateStore(named);
    } catch (const std::exception& error) {
        failLoading(error);
    }
}

Session::Session(const CommandContext& context, StateStore opened, AppModel::Options options)
    : interrupt(context.interrupt), store(std::move(opened)), lock(lockState(store)),
      profiles(mainQueue, withStore(std::move(options), store)) {
    if (profiles.alert()) throw CommandError(ExitCode::failed, translateEngineText(*profiles.alert()));
}

Session Session::forChanges(const CommandContext& context, std::function<void(const Uuid&)> removePassword) {
    return {
        context,
        StateFolder(context.options).openOrMake(),
        {.passwordAccess =
             {.read = [](const Uuid&) -> std::string { throw SyncError("Not started."); },
              .remove = std::move(removePassword)},
         .watches = false}};
}

Interrupt::Scope Session::interruptible() {
    return interrupt.during([this] { mainQueue.quit(); });
}

bool Session::runUntil(const std::function<bool()>& condition) {
    const auto scope = interruptible();
    return mainQueue.runUntil(condition);
}

std::optional<std::string> Session::add(const Profile& profile, const std::optional<std::string>& password) {
    auto unstored = storePassword(password, profile.id);
    try {
        profiles.save(profile, std::nullopt);
    } catch (const std::exception&) {
        if (password && !unstored) PasswordStore::remove(profile.id);
        throw;
    }
    return unstored;
}

std::optional<std::string> Session::change(const Profile& profile, const std::optional<std::string>& password) {
    profiles.checkSavable(profile);
    auto unstored = storePassword(password, profile.id);
    profiles.save(profile, std::nullopt);
    return unstored;
}

} // namespace zembrastel::cli
