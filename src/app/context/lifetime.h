// Drops work that arrives after its object is gone.
//
// An object that posts work to the main context keeps a Lifetime and wraps the work in guard(). Wrapping may be done on
// any thread; the wrapped work must run on the thread that destroys the object, which is the main context.
#pragma once

#include <memory>
#include <utility>

namespace zembrastel {

class Lifetime {
public:
    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    // A function that passes its arguments on to `work`, and does nothing once this object is gone or was renewed.
    template <class Work>
    [[nodiscard]] auto guard(Work work) const {
        return [watched = std::weak_ptr(token), work = std::move(work)](auto&&... arguments) mutable {
            if (!watched.expired()) work(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    // Drops what was wrapped before.
    void renew() { token = std::make_shared<Token>(); }

private:
    struct Token {};

    std::shared_ptr<Token> token = std::make_shared<Token>();
};

} // namespace zembrastel
