#include "app/passwords.h"

namespace zembrastel {

void Passwords::read(const Uuid& id, std::function<void(std::string)> then, std::function<void(std::string)> failed) {
    if (const auto known = atHand.find(id); known != atHand.end()) {
        then(std::string(known->second));
        return;
    }
    if (!access.read) {
        then({});
        return;
    }
    calls.ask(
        [readStored = access.read, id] { return readStored(id); },
        lifetime.guard(
            [this, id, then = std::move(then), failed = std::move(failed)](const PasswordCalls::Result& result) {
                // A password that was kept for the session meanwhile is newer than the answer.
                if (!result.failure) atHand.try_emplace(id, result.password);
                if (const auto found = atHand.find(id); found != atHand.end()) {
                    then(std::string(found->second));
                } else {
                    failed(*result.failure);
                }
            }));
}

void Passwords::store(const Uuid& id, const std::string& password, Done done) {
    if (!access.save) {
        done(std::nullopt);
        return;
    }
    calls.ask(
        [save = access.save, id, password] {
            save(password, id);
            return password;
        },
        lifetime.guard([done = std::move(done)](const PasswordCalls::Result& result) { done(result.failure); }));
}

void Passwords::storeNow(const Uuid& id, const std::string& password) {
    if (!access.save) return;
    access.save(password, id);
    keep(id, password);
}

void Passwords::remove(const Uuid& id, Done done) {
    if (!access.remove) {
        done(std::nullopt);
        return;
    }
    calls.ask(
        [removeStored = access.remove, id] {
            removeStored(id);
            return std::string();
        },
        lifetime.guard([done = std::move(done)](const PasswordCalls::Result& result) { done(result.failure); }));
}

} // namespace zembrastel
