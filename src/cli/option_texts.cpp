#include "cli/option_texts.h"

namespace zembrastel {
namespace {

constexpr char mark = '\x1F'; // what nobody types

} // namespace

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

} // namespace zembrastel
