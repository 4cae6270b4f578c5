#include "cli/text/shell_words.h"

namespace zembrastel::cli {
namespace {

constexpr std::string_view blanks = " \t\n";
constexpr std::string_view escapableInDoubleQuotes = "\"\\$`";

class Splitter {
public:
    explicit Splitter(std::string_view text) : rest(text) {}

    std::optional<std::vector<std::string>> split() {
        while (!rest.empty()) {
            if (!takeNext()) return std::nullopt;
        }
        endWord();
        return std::move(words);
    }

private:
    // False if a quote that begins here does not end.
    bool takeNext() {
        const char next = take();
        if (blanks.find(next) != std::string_view::npos) {
            endWord();
            return true;
        }
        inWord = true; // also for empty quotes
        if (next == '\'') return takeSingleQuoted();
        if (next == '"') return takeDoubleQuoted();
        if (next == '\\') return takeEscaped();
        word += next;
        return true;
    }

    bool takeSingleQuoted() {
        const auto end = rest.find('\'');
        if (end == std::string_view::npos) return false;
        word += rest.substr(0, end);
        rest.remove_prefix(end + 1);
        return true;
    }

    bool takeDoubleQuoted() {
        while (!rest.empty()) {
            const char next = take();
            if (next == '"') return true;
            if (next == '\\' && !rest.empty() && rest.front() == '\n') {
                take();
            } else if (
                next == '\\' && !rest.empty() && escapableInDoubleQuotes.find(rest.front()) != std::string_view::npos) {
                word += take();
            } else {
                word += next;
            }
        }
        return false;
    }

    bool takeEscaped() {
        if (rest.empty()) return false;
        // An escaped line feed only continues the line.
        if (const char escaped = take(); escaped != '\n') word += escaped;
        return true;
    }

    char take() {
        const char next = rest.front();
        rest.remove_prefix(1);
        return next;
    }

    void endWord() {
        if (inWord) words.push_back(std::move(word));
        word.clear();
        inWord = false;
    }

    std::string_view rest;
    std::string word;
    bool inWord = false;
    std::vector<std::string> words;
};

} // namespace

std::optional<std::vector<std::string>> splitWords(std::string_view text) { return Splitter(text).split(); }

std::string shellQuoted(std::string_view word) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./:,+@%";
    if (!word.empty() && word.find_first_not_of(plain) == std::string_view::npos) return std::string(word);
    std::string quoted = "'";
    for (const char character : word) {
        if (character == '\'') {
            quoted += "'\\''";
        } else {
            quoted += character;
        }
    }
    return quoted + "'";
}

} // namespace zembrastel::cli
