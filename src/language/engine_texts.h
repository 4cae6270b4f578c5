// The patterns of the engine's texts, grouped by subject.
//
// %1 to %9 stand for a name, a number or another value, which stays as it is; %text stands for a text of the engine,
// which is translated as well and is the last value of its pattern. A translation names them in any order.
#pragma once

#include <span>

namespace zembrastel {

[[nodiscard]] std::span<const char* const> engineTexts();
[[nodiscard]] std::span<const char* const> diagnosisTexts(); // what the checks of a server find, and what to do

} // namespace zembrastel
