#include "curl_reading.h"

namespace zembrastel::fuzz {
namespace {

// The value that begins after an opening quote, and what follows the closing one.
struct Quoted {
    std::string value;
    std::string_view rest;
};

std::optional<Quoted> readQuoted(std::string_view text) {
    constexpr std::string_view letters = "tnrv";
    constexpr std::string_view meanings = "\t\n\r\v";
    std::string value;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '"') return Quoted{value, text.substr(at + 1)};
        if (text[at] != '\\') {
            value += text[at];
            continue;
        }
        if (++at == text.size()) break;
        const auto letter = letters.find(text[at]);
        value += letter == std::string_view::npos ? text[at] : meanings[letter];
    }
    return std::nullopt;
}

bool isOptionName(std::string_view text) {
    return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string_view::npos;
}

} // namespace

std::optional<CurlOptions> readCurlConfiguration(std::string_view text) {
    CurlOptions options;
    while (!text.empty()) {
        const auto end = text.find('\n');
        if (end == std::string_view::npos) return std::nullopt;
        const auto line = text.substr(0, end);
        text.remove_prefix(end + 1);
        constexpr std::string_view separator = " = \"";
        const auto middle = line.find(separator);
        if (!isOptionName(line.substr(0, middle))) return std::nullopt;
        if (middle == std::string_view::npos) {
            options.emplace_back(line, std::nullopt);
            continue;
        }
        const auto quoted = readQuoted(line.substr(middle + separator.size()));
        if (!quoted || !quoted->rest.empty()) return std::nullopt;
        options.emplace_back(line.substr(0, middle), quoted->value);
    }
    return options;
}

} // namespace zembrastel::fuzz
