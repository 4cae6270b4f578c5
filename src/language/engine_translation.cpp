#include "language/engine_translation.h"

#include "language/translation.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <unordered_map>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::string_view innerText = "%text";
constexpr char textPlace = '0';
constexpr char firstAmount = '8';

// The words of a pattern around its places: one more than there are places.
struct Pattern {
    const char* text;
    std::vector<std::string_view> words;
    std::string places{};   // the digit of each place
    std::size_t length = 0; // of the words: the longest pattern that fits is the right one
};

// A place of a pattern or of its translation: its digit, and how many characters it takes.
struct Place {
    explicit Place(std::string_view text)
        : digit(text.starts_with(innerText) ? textPlace : text.at(1)), size(digit == textPlace ? innerText.size() : 2) {
    }

    char digit;
    std::size_t size;
};

Pattern parsed(const char* text) {
    Pattern pattern{.text = text, .words = {}};
    std::string_view rest = text;
    for (auto place = rest.find('%'); place != std::string_view::npos; place = rest.find('%')) {
        pattern.words.push_back(rest.substr(0, place));
        rest.remove_prefix(place);
        const Place next(rest);
        pattern.places += next.digit;
        rest.remove_prefix(next.size);
    }
    pattern.words.push_back(rest);
    for (const auto& each : pattern.words) pattern.length += each.size();
    return pattern;
}

// The values in the places, or nullopt if the text does not fit. The first place in the text is taken for each word.
std::optional<std::vector<std::string_view>> valuesIn(std::string_view text, const Pattern& pattern) {
    const auto& words = pattern.words;
    if (text.size() < pattern.length || !text.starts_with(words.front()) || !text.ends_with(words.back())) {
        return std::nullopt;
    }
    text.remove_prefix(words.front().size());
    text.remove_suffix(words.back().size());
    std::vector<std::string_view> values;
    for (std::size_t index = 1; index + 1 < words.size(); ++index) {
        const auto place = text.find(words[index]);
        if (place == std::string_view::npos) return std::nullopt;
        values.push_back(text.substr(0, place));
        text.remove_prefix(place + words[index].size());
    }
    // The full stop of a sentence is not the end of a name.
    if (words.back().empty() && !pattern.places.ends_with(textPlace) && text.ends_with('.')) return std::nullopt;
    values.push_back(text);
    const bool anyEmpty = std::ranges::any_of(values, &std::string_view::empty);
    return anyEmpty ? std::nullopt : std::optional(values);
}

struct Patterns {
    std::unordered_map<std::string_view, const char*> whole;
    std::vector<Pattern> withPlaces; // the longest words first
};

const Patterns& patterns() {
    static const Patterns all = [] {
        Patterns made;
        const auto add = [&made](const char* text) {
            auto pattern = parsed(text);
            if (pattern.words.size() == 1) {
                made.whole.emplace(text, text);
            } else {
                made.withPlaces.push_back(std::move(pattern));
            }
        };
        std::ranges::for_each(engineTexts(), add);
        std::ranges::for_each(diagnosisTexts(), add);
        std::ranges::stable_sort(made.withPlaces, std::ranges::greater{}, &Pattern::length);
        return made;
    }();
    return all;
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// "1,5 MB"
std::string withDecimalSeparator(std::string text) {
    for (std::size_t at = 1; at + 1 < text.size(); ++at) {
        if (text[at] != '.' || !isDigit(text[at - 1]) || !isDigit(text[at + 1])) continue;
        // TRANSLATORS: Separates the whole number from its decimals.
        text.replace(at, 1, translate("."));
    }
    return text;
}

std::string durationText(std::uint64_t number, std::string_view unit) {
    if (unit.starts_with("minute")) return translatePlural("%n minute", "%n minutes", number);
    if (unit.starts_with("hour")) return translatePlural("%n hour", "%n hours", number);
    return translatePlural("%n day", "%n days", number);
}

// A size, or a duration of one or more units: "2 Stunden 5 Minuten" for "2 hours 5 minutes".
std::string amountText(const std::string& amount) {
    if (amount.ends_with('B')) return withDecimalSeparator(amount);
    std::istringstream parts(amount);
    std::string text;
    std::uint64_t number = 0;
    for (std::string unit; parts >> number >> unit;) text += (text.empty() ? "" : " ") + durationText(number, unit);
    return text.empty() ? amount : text;
}

std::string valueText(char place, std::string_view value) {
    if (place == textPlace) return translateEngineText(value);
    return place >= firstAmount ? amountText(std::string(value)) : std::string(value);
}

std::string withValues(const Pattern& pattern, const std::vector<std::string_view>& values) {
    const std::string text = translate(pattern.text);
    std::string result;
    for (std::string_view rest = text; !rest.empty();) {
        const auto words = rest.substr(0, rest.find('%'));
        result += words;
        rest.remove_prefix(words.size());
        if (rest.empty()) break;
        const Place place(rest);
        result += valueText(place.digit, values.at(pattern.places.find(place.digit)));
        rest.remove_prefix(place.size);
    }
    return result;
}

std::optional<std::string> knownText(std::string_view text) {
    const auto& known = patterns();
    if (const auto found = known.whole.find(text); found != known.whole.end()) return translate(found->second);
    for (const auto& pattern : known.withPlaces) {
        if (const auto values = valuesIn(text, pattern)) return withValues(pattern, *values);
    }
    return std::nullopt;
}

// A failure is put into a sentence by a full stop, which its pattern does not have.
std::optional<std::string> knownSentence(std::string_view text) {
    if (auto known = knownText(text)) return known;
    if (!text.ends_with('.')) return std::nullopt;
    auto known = knownText(text.substr(0, text.size() - 1));
    return known ? std::optional(*known + '.') : std::nullopt;
}

// The text as sentences that are all known: where the last value of one sentence could also take in the next ones.
std::optional<std::string> knownSentences(std::string_view text) {
    const auto end = text.find(". ");
    if (end == std::string_view::npos) return knownSentence(text);
    const auto first = knownSentence(text.substr(0, end + 1));
    const auto others = first ? knownSentences(text.substr(end + 2)) : std::nullopt;
    return others ? std::optional(*first + ' ' + *others) : std::nullopt;
}

// The text as a known sentence and what follows it, which is translated by itself. A name in the sentence may have full
// stops too, but only a few: with each one tried, the words of a server could take half a minute.
std::optional<std::string> translatedParts(std::string_view text) {
    constexpr int mostStops = 8;
    auto end = text.find(". ");
    for (int stops = 0; stops < mostStops && end != std::string_view::npos; ++stops, end = text.find(". ", end + 1)) {
        const auto known = knownSentence(text.substr(0, end + 1));
        if (known) return *known + ' ' + translateEngineText(text.substr(end + 2));
    }
    return std::nullopt;
}

} // namespace

std::string translateEngineText(std::string_view text) {
    // A server may send any amount of text.
    constexpr std::size_t longest = 4096;
    if (!translates() || text.empty() || text.size() > longest) return std::string(text);
    if (const auto known = knownSentences(text)) return *known;
    if (const auto known = knownSentence(text)) return *known;
    if (const auto known = translatedParts(text)) return *known;
    // "index.html: You may not write ...": a name, a message of curl or other foreign words come first.
    const auto end = std::min(text.find(": "), text.find(". "));
    if (end == std::string_view::npos) return std::string(text);
    return std::string(text.substr(0, end + 2)) + translateEngineText(text.substr(end + 2));
}

std::string translateProgress(std::string_view text) {
    for (const std::string_view between : {" — ", ", "}) {
        const auto end = text.find(between);
        if (end == std::string_view::npos) continue;
        return translateProgress(text.substr(0, end)).append(between)
               + translateProgress(text.substr(end + between.size()));
    }
    return withDecimalSeparator(translateEngineText(text)); // it has numbers, but no name
}

} // namespace zembrastel
