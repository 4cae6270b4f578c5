// The fuzz targets: one function for each place that reads what others wrote.
//
// Each takes one input and returns when all is well. It ends the process when a promise is broken, so that libFuzzer
// keeps the input. Nothing but a SyncError may come out of the code under test, and the targets take that in
// themselves.
#pragma once

#include <array>
#include <string_view>

namespace zembrastel::fuzz {

void mlsd(std::string_view input);              // the listing for machines
void list(std::string_view input);              // the listing for people
void dates(std::string_view input);             // of MLSD facts and of headers
void exclusions(std::string_view input);        // rules and a path, with a byte FF between them
void selection(std::string_view input);         // a line each: "+path" ticks, "-path" unticks
void savedState(std::string_view input);        // profiles.json
void profileJson(std::string_view input);       // what `profile add --from` reads
void profileImport(std::string_view input);     // what `profile import` reads
void curlQuoting(std::string_view input);       // one value of curl's configuration
void controlConnection(std::string_view input); // a line each: user, password, remote folder, path, name
void shellWords(std::string_view input);        // a password command
void controlMessages(std::string_view input);   // what one running program sends another

struct Target {
    std::string_view name;
    void (*run)(std::string_view input);
};

inline constexpr std::array allTargets{
    Target{"mlsd", mlsd},
    Target{"list", list},
    Target{"dates", dates},
    Target{"exclusions", exclusions},
    Target{"selection", selection},
    Target{"saved_state", savedState},
    Target{"profile_json", profileJson},
    Target{"profile_import", profileImport},
    Target{"curl_quoting", curlQuoting},
    Target{"control_connection", controlConnection},
    Target{"shell_words", shellWords},
    Target{"control_messages", controlMessages}};

} // namespace zembrastel::fuzz
