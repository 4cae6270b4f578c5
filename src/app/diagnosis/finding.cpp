#include "app/diagnosis/finding.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zembrastel {
namespace {

using Outcome = Finding::Outcome;

bool isRefusal(std::string_view reply) {
    return reply.size() > 3 && (reply[0] == '4' || reply[0] == '5') && (reply[3] == ' ' || reply[3] == '-');
}

} // namespace

std::string_view word(Subject subject) {
    constexpr std::array<std::string_view, 19> words{
        "localFolder", "network",       "address", "port",         "connections", "encryption", "certificate",
        "login",       "folder",        "listing", "completeness", "hiddenFiles", "dateQuery",  "clock",
        "upload",      "temporaryName", "rename",  "replacement",  "testFile"};
    static_assert(words.size() == static_cast<std::size_t>(Subject::testFile) + 1);
    return words.at(static_cast<std::size_t>(subject));
}

std::string_view word(Outcome outcome) {
    constexpr std::array<std::string_view, 4> words{"fine", "unknown", "notice", "wrong"};
    return words.at(static_cast<std::size_t>(outcome));
}

Finding fine(Subject subject, std::string text) { return {.subject = subject, .text = std::move(text)}; }

Finding unknown(Subject subject, std::string text) {
    return {.subject = subject, .outcome = Outcome::unknown, .text = std::move(text)};
}

Finding notice(Subject subject, std::string text, std::string remedy) {
    return {.subject = subject, .outcome = Outcome::notice, .text = std::move(text), .remedy = std::move(remedy)};
}

Finding wrong(Subject subject, std::string text, std::string remedy) {
    return {.subject = subject, .outcome = Outcome::wrong, .text = std::move(text), .remedy = std::move(remedy)};
}

// A refusal of OPTS UTF8 does not count: many servers do not know it.
std::string refusal(const Transcript& answer) {
    for (auto reply = answer.replies.rbegin(); reply != answer.replies.rend(); ++reply) {
        if (isRefusal(*reply) && !containsAny(*reply, {"OPTS", "UTF8"})) return *reply;
    }
    return "";
}

std::string said(const Transcript& answer) {
    const std::string words = refusal(answer);
    if (!words.empty()) return " It says: " + words;
    return answer.failure.empty() ? "" : " " + answer.failure.substr(0, answer.failure.find('\n'));
}

bool contains(std::string_view text, std::string_view words) { return text.find(words) != std::string_view::npos; }

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::ranges::any_of(words, [text](auto each) { return contains(text, each); });
}

} // namespace zembrastel
