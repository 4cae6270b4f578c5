// How a fuzz target says that a promise is broken.
#pragma once

#include "model/error.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace zembrastel::fuzz {

inline void promise(bool kept, const char* what) {
    if (kept) return;
    std::fprintf(stderr, "BROKEN PROMISE: %s\n", what);
    std::abort();
}

// The value, or nothing when it was refused with a sentence for the user.
template <class Call>
auto unlessRefused(Call call) -> std::optional<decltype(call())> {
    try {
        return call();
    } catch (const SyncError& error) {
        promise(*error.what() != '\0', "a refusal has words");
        return std::nullopt;
    }
}

} // namespace zembrastel::fuzz
