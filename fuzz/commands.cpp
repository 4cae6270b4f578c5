// Whether a name, a folder, a user or a password can become more than that: an option of curl, a command to the server,
// a word of a shell.
#include "cli/text/shell_words.h"
#include "curl_reading.h"
#include "platform/text.h"
#include "promise.h"
#include "targets.h"
#include "transport/curl/curl_configuration.h"

#include <algorithm>

namespace zembrastel::fuzz {
namespace {

constexpr std::string_view endsCommands("\r\n\0", 3);

bool staysOneCommand(std::string_view text) { return text.find_first_of(endsCommands) == std::string_view::npos; }

std::string percentDecoded(std::string_view text) {
    const auto value = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'A' + 10; };
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        promise(at + 2 < text.size(), "an escape in a URL is whole");
        decoded += static_cast<char>(value(text[at + 1]) * 16 + value(text[at + 2]));
        at += 2;
    }
    return decoded;
}

// What stands in `options` for an upload under these names; nothing else may stand there.
CurlOptions expectedOptions(
    const Profile& profile, const std::string& password, const std::string& url, const std::string& name) {
    return {
        {"silent", {}},
        {"show-error", {}},
        {"globoff", {}},
        {"connect-timeout", "15"},
        {"max-time", "600"},
        {"speed-time", "30"},
        {"speed-limit", "1"},
        {"ftp-pasv", {}},
        {"proxy", ""},
        {"proto", "=ftp,ftps"},
        {"user", profile.username + ":" + password},
        {"url", url},
        {"quote", "*OPTS UTF8 ON"},
        {"ssl-reqd", {}},
        {"upload-file", name},
        {"quote", "-RNTO " + name}};
}

// What the server gets of the URL: the folders and the name, as they were given.
void checkUrl(std::string_view url, const Profile& profile, const std::string& path) {
    const std::string start = "ftp://localhost:21/";
    promise(url.starts_with(start), "the server is the profile's");
    promise(url.find_first_of("?#;@\\ ") == std::string_view::npos, "a URL has a path and nothing else");
    std::vector<std::string> sent;
    for (const auto piece : splitNonEmpty(url.substr(start.size()), '/')) sent.push_back(percentDecoded(piece));
    std::vector<std::string> given;
    for (const auto piece : splitNonEmpty(profile.remoteFolder, '/')) given.emplace_back(piece);
    for (const auto piece : splitNonEmpty(path, '/')) given.emplace_back(piece);
    promise(sent == given, "the path is the one that was given");
    promise(std::ranges::all_of(sent, staysOneCommand), "no folder ends a command to the server");
}

} // namespace

void curlQuoting(std::string_view input) {
    const auto quoted = unlessRefused([&] { return quote(input); });
    promise(quoted.has_value() == (input.find('\0') == std::string_view::npos), "a null character alone is refused");
    if (!quoted) return;
    const auto read = readCurlConfiguration("user = " + *quoted + "\nsilent\n");
    promise(read == CurlOptions{{"user", std::string(input)}, {"silent", {}}}, "curl reads what was quoted");
}

void controlConnection(std::string_view input) {
    // The field that comes last takes the other line feeds.
    const auto take = [&input] {
        const auto end = std::min(input.find('\n'), input.size());
        const std::string field(input.substr(0, end));
        input.remove_prefix(std::min(end + 1, input.size()));
        // Line feeds get into the other fields under another byte.
        std::string text = field;
        std::ranges::replace(text, '\x01', '\n');
        return text;
    };
    Profile profile;
    profile.host = "localhost";
    profile.username = take();
    const std::string password = take();
    profile.remoteFolder = take();
    const std::string path = take();
    const std::string name(input);
    const auto text = unlessRefused([&] {
        return curlConfiguration(profile, password, path, false, {{"upload-file", name}, {"quote", "-RNTO " + name}});
    });
    if (!text) return;
    promise(
        staysOneCommand(profile.username) && staysOneCommand(password) && staysOneCommand(name),
        "what would end a command to the server is refused");
    const auto options = readCurlConfiguration(*text);
    promise(options.has_value() && options->size() > 11, "the configuration can be read");
    const auto url = (*options)[11].second.value_or("");
    promise(*options == expectedOptions(profile, password, url, name), "curl gets these options and no others");
    checkUrl(url, profile, path);
}

void shellWords(std::string_view input) {
    const std::string word(input);
    promise(cli::splitWords(cli::shellQuoted(word)) == std::vector<std::string>{word}, "a quoted word stays one word");
    const auto words = cli::splitWords(input);
    if (!words) return;
    std::string line;
    for (const auto& each : *words) line += cli::shellQuoted(each) + ' ';
    promise(cli::splitWords(line) == words, "words that are quoted again are the same words");
}

} // namespace zembrastel::fuzz
