// How help is laid out: each option with the kind of its value, and nothing about the parser's own rules.
#pragma once

#include <CLI/CLI.hpp>

namespace zembrastel::cli {

class HelpText final : public CLI::Formatter {
public:
    HelpText();

    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_footer(const CLI::App* app) const override;
};

} // namespace zembrastel::cli
