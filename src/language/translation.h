// The language of the texts that users read: the catalogue of gettext that the environment asks for.
//
// Started at most once, before any thread. Until then, and for a language without a catalogue, every text stays
// English. The other functions may be called on any thread. What programs read is never translated, so with --json
// nothing is started. The engine stays English as well: see engine_translation.h.
//
// scripts/terminal-translations collects the texts that are given to these functions in po/.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

namespace zembrastel {

// Takes the language from LANGUAGE, LC_ALL, LC_MESSAGES or LANG, as Qt does; its locale need not be installed. The
// locale of the process does not change, so numbers, sorting and the texts of system errors stay as they are.
void startTranslation();

// True if the user prefers another language to English, whether it has a catalogue or not.
[[nodiscard]] bool translates();

// The text in the user's language, with the values in the places of %1 to %9.
[[nodiscard]] std::string translate(const char* text, std::initializer_list<std::string> values = {});

// The form for this number, which takes the place of %n: "1 file", "1,000 files".
[[nodiscard]] std::string translatePlural(
    const char* one, const char* many, std::uint64_t number, std::initializer_list<std::string> values = {});

// Marks a text for the catalogue that is translated later.
[[nodiscard]] constexpr const char* translatable(const char* text) { return text; }

} // namespace zembrastel
