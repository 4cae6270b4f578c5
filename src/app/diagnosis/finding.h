// One fact about a server, and the words for it.
//
// Pure functions; any thread.
#pragma once

#include "transport/ftp_transport.h"

#include <string>
#include <string_view>

namespace zembrastel {

// What a finding is about.
enum class Subject {
    localFolder,
    network,
    address,
    port,
    connections,
    encryption,
    certificate,
    login,
    folder,
    listing,
    completeness,
    hiddenFiles,
    dateQuery,
    clock,
    upload,
    temporaryName,
    rename,
    replacement,
    testFile
};

struct Finding {
    enum class Outcome {
        fine,
        unknown, // could not be found out
        notice,  // works, with a drawback
        wrong    // does not work, or does harm
    };

    Subject subject = Subject::address;
    Outcome outcome = Outcome::fine;
    std::string text;     // what was seen
    std::string remedy{}; // what to do, and what to ask the hosting provider for; empty if all is well
};

// One word that stays the same, for other programs.
[[nodiscard]] std::string_view word(Subject subject);
[[nodiscard]] std::string_view word(Finding::Outcome outcome);

[[nodiscard]] Finding fine(Subject subject, std::string text);
[[nodiscard]] Finding unknown(Subject subject, std::string text);
[[nodiscard]] Finding notice(Subject subject, std::string text, std::string remedy);
[[nodiscard]] Finding wrong(Subject subject, std::string text, std::string remedy);

// The last reply that refused something; empty if there was none.
[[nodiscard]] std::string refusal(const Transcript& answer);

// The server's words of refusal, or else curl's, as the end of a sentence.
[[nodiscard]] std::string said(const Transcript& answer);

[[nodiscard]] bool contains(std::string_view text, std::string_view words);
[[nodiscard]] bool containsAny(std::string_view text, std::initializer_list<std::string_view> words);

} // namespace zembrastel
