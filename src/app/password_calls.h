// Reads and stores passwords off the main context, since the secret store may keep a call waiting for a person.
//
// Used on the main context alone; one thread does all of it, in order of asking, for as long as the object lives.
#pragma once

#include "app/main_context.h"
#include "platform/uuid.h"

#include <functional>
#include <memory>
#include <string>

namespace zembrastel {

class PasswordCalls {
public:
    // Blocks until the password is there; throws what the store throws.
    using Read = std::function<std::string(const Uuid& id)>;
    // Blocks until the password is stored; throws what the store throws.
    using Save = std::function<void(const std::string& password, const Uuid& id)>;

    struct Result {
        std::string password;       // what was read or stored
        std::exception_ptr failure; // when there is one, there is no password
    };

    // Without a save function there must be no saving.
    PasswordCalls(MainContext& mainContext, Read readFunction, Save saveFunction = {});
    PasswordCalls(const PasswordCalls&) = delete;
    PasswordCalls& operator=(const PasswordCalls&) = delete;
    // Lets a call go that does not end within half a second: an open unlock prompt cannot be withdrawn, and must not
    // keep the program from ending. No result is handed over any more.
    ~PasswordCalls();

    // Both hand the result over on the main context.
    void read(const Uuid& id, std::function<void(Result)> done);
    void save(const Uuid& id, const std::string& password, std::function<void(Result)> done);

private:
    struct Shared;

    void request(std::function<std::string()> work, std::function<void(Result)> done);

    const Read readPassword;
    const Save savePassword;
    std::shared_ptr<Shared> shared;
};

} // namespace zembrastel
