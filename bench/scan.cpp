// The first scan of a folder by a process that has done nothing else.
#include "model/scan.h"
#include "measure.h"
#include "subjects.h"

#include <CLI/CLI.hpp>

namespace zembrastel::bench {

void addScan(CLI::App& parent) {
    struct Options {
        std::string folder;
        bool noRules = false;
    };
    auto* const command = parent.add_subcommand("scan", "The first scan of a folder");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_flag("--no-rules", options->noRules, "Without the default exclusions");
    command->callback([options] {
        Profile profile;
        profile.localFolder = options->folder;
        if (options->noRules) profile.exclusions = Exclusions("");
        const Moment begin = now();
        const auto files = scan(profile);
        Figures().since(begin).set("files", static_cast<double>(files.size())).print();
    });
}

} // namespace zembrastel::bench
