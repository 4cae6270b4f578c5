// The copy of a file that is made before it is sent.
#include "measure.h"
#include "model/fingerprint.h"
#include "platform/private_folder.h"
#include "subjects.h"
#include "transport/local_place.h"
#include "transport/publish/staged_copy.h"
#include "transport/transfer_control.h"

#include <CLI/CLI.hpp>

namespace zembrastel::bench {

void addStage(CLI::App& parent) {
    struct Options {
        std::string folder;
        std::string name;
    };
    auto* const command = parent.add_subcommand("stage", "The staged copy of one file");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_option("NAME", options->name)->required();
    command->callback([options] {
        const TransferControl control;
        const Moment begin = now();
        const auto version = LocalPlace::resolve(options->folder, options->name).fingerprint();
        const PrivateFolder staging;
        const Descriptor staged = stageCopy(options->folder, options->name, version, staging, "upload", control);
        Figures().since(begin).set("bytes", static_cast<double>(version.size)).print();
    });
}

} // namespace zembrastel::bench
