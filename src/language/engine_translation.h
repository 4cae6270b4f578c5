// The engine's texts in the user's language: states, log lines, failures and advice.
//
// The engine speaks English, because what it says is saved, sent to other programs and printed for scripts. Both faces
// translate it at the last moment, so here, and nowhere else, a text that users read is recognised by its words:
// engine_texts.cpp lists the patterns. What is not recognised stays English. Any thread, after startTranslation().
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zembrastel {

// One text, which may consist of several sentences.
[[nodiscard]] std::string translateEngineText(std::string_view text);

// A text of progressText(), which has several parts.
[[nodiscard]] std::string translateProgress(std::string_view text);

// The patterns of the engine's texts, grouped by subject.
//
// %1 to %7 stand for a name, a number or another value, which stays as it is. %8 and %9 stand for amounts such as
// "1.5 MB" or "2 hours 5 minutes", and %text for a text of the engine; these are translated as well. A translation
// names them in any order.
[[nodiscard]] std::span<const char* const> engineTexts();
[[nodiscard]] std::span<const char* const> diagnosisTexts(); // what the checks of a server find, and what to do

} // namespace zembrastel
