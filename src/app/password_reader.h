// Reads passwords off the main context, where the secret store may keep a call waiting for a person.
//
// Used on the main context alone; one thread reads, in order of asking, for as long as the object lives.
#pragma once

#include "app/main_context.h"
#include "platform/uuid.h"

#include <functional>
#include <memory>
#include <string>

namespace zembrastel {

class PasswordReader {
public:
    // Blocks until the password is there; throws what the store throws.
    using Read = std::function<std::string(const Uuid& id)>;

    struct Result {
        std::string password;
        std::exception_ptr failure; // when there is one, there is no password
    };

    PasswordReader(MainContext& mainContext, Read readFunction);
    PasswordReader(const PasswordReader&) = delete;
    PasswordReader& operator=(const PasswordReader&) = delete;
    // Lets a read go that does not end within half a second: an open unlock prompt cannot be withdrawn, and must not
    // keep the program from ending. No result is handed over any more.
    ~PasswordReader();

    // Hands the result over on the main context.
    void read(const Uuid& id, std::function<void(Result)> done);

private:
    struct Shared;

    std::shared_ptr<Shared> shared;
};

} // namespace zembrastel
