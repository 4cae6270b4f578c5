// Calls the secret store off the main context, since it may keep a call waiting for a person.
//
// Used on the main context alone; one thread does all of it, in order of asking, for as long as the object lives.
#pragma once

#include "app/context/main_context.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zembrastel {

class PasswordCalls {
public:
    // Blocks until the store has answered; the password where it gave one. Throws what the store throws.
    using Call = std::function<std::string()>;

    struct Result {
        std::string password;
        std::optional<std::string> failure; // what the user is to read; there is no password then
    };

    explicit PasswordCalls(MainContext& mainContext);
    PasswordCalls(const PasswordCalls&) = delete;
    PasswordCalls& operator=(const PasswordCalls&) = delete;
    // Lets a call go that does not end within half a second: an open unlock prompt cannot be withdrawn, and must not
    // keep the program from ending. No result is handed over any more.
    ~PasswordCalls();

    // Hands the result over on the main context, never before it returns. The call may outlive this object and must own
    // what it uses.
    void ask(Call call, std::function<void(Result)> done);

private:
    struct Shared;

    std::shared_ptr<Shared> shared;
};

} // namespace zembrastel
