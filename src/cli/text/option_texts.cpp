#include "cli/text/option_texts.h"

#include <charconv>

namespace zembrastel::cli {
namespace {

constexpr char mark = '\x1F'; // what nobody types

} // namespace

CLI::Validator portNumber() {
    return {
        [](const std::string& text) {
            constexpr int mostPort = 65535;
            int port = 0;
            const auto parsed = std::from_chars(text.data(), text.data() + text.size(), port);
            const bool isNumber = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
            return isNumber && port >= 1 && port <= mostPort ? "" : "must be a number from 1 to 65535, not " + text;
        },
        ""};
}

std::string markedBrackets(const std::string& argument) {
    const bool looksLikeList = argument.starts_with('[') && argument.ends_with(']');
    return looksLikeList ? mark + argument : argument;
}

std::string unmarked(const std::string& argument) { return argument.starts_with(mark) ? argument.substr(1) : argument; }

void takeBracketsAsTyped(CLI::App& app) {
    for (auto* option : app.get_options([](const CLI::Option* candidate) { return candidate->get_type_size() > 0; })) {
        option->transform([](const std::string& text) { return unmarked(text); });
    }
    for (auto* command : app.get_subcommands({})) takeBracketsAsTyped(*command);
}

} // namespace zembrastel::cli
