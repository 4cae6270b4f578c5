// A path that the user typed, as the rest of the program writes it.
#pragma once

#include "platform/text.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace zembrastel::cli {

// Without "." components and without slashes at the ends or in a row: "", "." and "/" are the root, "". ".." is kept,
// for others to refuse.
[[nodiscard]] inline std::string relativePath(std::string_view typed) {
    auto components = splitNonEmpty(typed, '/');
    std::erase(components, ".");
    return join(components, '/');
}

} // namespace zembrastel::cli
