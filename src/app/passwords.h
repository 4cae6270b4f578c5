// The passwords of the profiles: those at hand for this session, and those in the secret store.
//
// Main context. The secret store may wait for the user, so it is called on a thread of its own, in the order of the
// requests. No result is handed over once this object is gone.
#pragma once

#include "app/context/lifetime.h"
#include "app/password_calls.h"
#include "model/password_store.h"
#include "platform/uuid.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace zembrastel {

// Where passwords are kept. The functions may block, and throw what the user reads.
struct PasswordAccess {
    std::function<void(const std::string& password, const Uuid& id)> save = PasswordStore::save;
    std::function<std::string(const Uuid& id)> read = PasswordStore::read;
    std::function<void(const Uuid& id)> remove = PasswordStore::remove;

    // Stores nothing, and has an empty password for every profile: for a demonstration.
    [[nodiscard]] static PasswordAccess none() { return {.save = nullptr, .read = nullptr, .remove = nullptr}; }
};

class Passwords {
public:
    // nullopt, or the message of a failure.
    using Done = std::function<void(const std::optional<std::string>& failure)>;

    Passwords(MainContext& context, PasswordAccess toUse, std::map<Uuid, std::string> known)
        : access(std::move(toUse)), atHand(std::move(known)), calls(context) {}

    // Keeps the password in memory until the program ends, and stores it nowhere.
    void keep(const Uuid& id, const std::string& password) { atHand.insert_or_assign(id, password); }

    // Hands the password to `then`: before it returns if the password is at hand, or else when the secret store has
    // given it. Hands the message of a failure to `failed`.
    void read(const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed);

    // Stores the password. What is at hand stays as it is.
    void store(const Uuid& id, const std::string& password, Done done);

    // Stores the password before it returns, however long the secret store takes, and has it at hand. Throws what the
    // store throws.
    void storeNow(const Uuid& id, const std::string& password);

    // Removes what is stored.
    void remove(const Uuid& id, Done done);

    // Drops what is at hand.
    void forget(const Uuid& id) { atHand.erase(id); }

private:
    PasswordAccess access;
    std::map<Uuid, std::string> atHand;
    Lifetime lifetime;
    PasswordCalls calls;
};

} // namespace zembrastel
