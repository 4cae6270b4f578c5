// How long any other program takes, from before it is started until after it has ended.
#include "measure.h"
#include "subjects.h"

#include <CLI/CLI.hpp>

namespace zembrastel::bench {

void addTime(CLI::App& parent) {
    auto* const command = parent.add_subcommand("time", "Another program's run, its output thrown away");
    const auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("COMMAND", *words, "After --")->required();
    command->callback([words] { printTimeOf([&] { runProgram(*words); }); });
}

} // namespace zembrastel::bench
