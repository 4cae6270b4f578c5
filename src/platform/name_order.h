// The order of file names, and names that some file systems take for equal.
//
// Any thread. compareNames and nameSortKey use the rules of the user's language, from the process locale.
#pragma once

#include <string>
#include <string_view>

namespace zembrastel {

// Equal for names that differ only in case or in Unicode normalization form, which some file systems take for one file.
// The name must be valid UTF-8.
[[nodiscard]] std::string foldedName(std::string_view name);

// Negative, zero or positive if `a` sorts before, with or after `b` in a file manager: numbers by value, without case,
// by the rules of the user's language.
[[nodiscard]] int compareNames(std::string_view a, std::string_view b);

// Bytes that compare like compareNames compares the names. Faster for sorting many names: each is converted once.
[[nodiscard]] std::string nameSortKey(std::string_view name);

} // namespace zembrastel
