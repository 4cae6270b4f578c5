// The patterns of the engine's texts, grouped by subject.
//
// %1 to %7 stand for a name, a number or another value, which stays as it is. %8 and %9 stand for amounts such as
// "1.5 MB" or "2 hours 5 minutes", and %text for a text of the engine; these are translated as well. A translation
// names them in any order.
#pragma once

#include <span>

namespace zembrastel {

[[nodiscard]] std::span<const char* const> engineTexts();
[[nodiscard]] std::span<const char* const> diagnosisTexts(); // what the checks of a server find, and what to do

} // namespace zembrastel
