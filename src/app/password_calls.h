// Calls the secret store off the main context, because it may wait for the user.
//
// Main context. One thread makes all calls, in the order of the requests.
#pragma once

#include "app/context/main_context.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zembrastel {

class PasswordCalls {
public:
    // Blocks until the store has answered, and returns the password if it gave one. Throws what the store throws.
    using Call = std::function<std::string()>;

    struct Result {
        std::string password;
        std::optional<std::string> failure; // what the user reads; then there is no password
    };

    explicit PasswordCalls(MainContext& mainContext);
    PasswordCalls(const PasswordCalls&) = delete;
    PasswordCalls& operator=(const PasswordCalls&) = delete;
    // Abandons a call that does not end within half a second: an open unlock prompt cannot be withdrawn, and must not
    // keep the program from ending. No result is handed over afterwards.
    ~PasswordCalls();

    // Hands the result over on the main context, never before ask() returns. The call may outlive this object and must
    // own what it uses.
    void ask(Call call, std::function<void(Result)> done);

private:
    struct Shared;

    std::shared_ptr<Shared> shared;
};

} // namespace zembrastel
