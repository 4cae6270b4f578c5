// How curl reads a configuration, written from its manual (curl(1), "--config").
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zembrastel::fuzz {

using CurlOptions = std::vector<std::pair<std::string, std::optional<std::string>>>;

// Nothing for a text in a form that the program never writes, such as a comment or a value without quotes.
[[nodiscard]] std::optional<CurlOptions> readCurlConfiguration(std::string_view text);

} // namespace zembrastel::fuzz
