// The engine's texts in the user's language: states, log lines, failures and advice.
//
// The engine speaks English, because what it says is saved, sent to other programs and printed for scripts. Both faces
// translate it at the last moment, so here, and nowhere else, a text that users read is recognised by its words:
// engine_texts.cpp lists the patterns. What is not recognised stays English. Any thread, after startTranslation().
#pragma once

#include <string>
#include <string_view>

namespace zembrastel {

// One text, which may consist of several sentences.
[[nodiscard]] std::string translateEngineText(std::string_view text);

// A text of progressText(), which has several parts.
[[nodiscard]] std::string translateProgress(std::string_view text);

} // namespace zembrastel
