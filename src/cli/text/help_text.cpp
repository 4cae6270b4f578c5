#include "cli/text/help_text.h"

namespace zembrastel::cli {

HelpText::HelpText() {
    constexpr std::size_t descriptionColumn = 32;
    column_width(descriptionColumn);
    label("SUBCOMMAND", "COMMAND");
    label("Positionals", "Arguments");
}

std::string HelpText::make_option_opts(const CLI::Option* option) const {
    if (option->get_type_size() == 0 || option->get_type_name().empty()) return "";
    return " " + option->get_type_name() + (option->get_allow_extra_args() ? "..." : "");
}

std::string HelpText::make_footer(const CLI::App* app) const {
    std::string text = CLI::Formatter::make_footer(app);
    if (app->get_parent() == nullptr) return text;
    if (!text.empty()) text += '\n';
    return text + "--state, --json and the password options can be given as well: see zembrastel-cli --help.\n";
}

} // namespace zembrastel::cli
