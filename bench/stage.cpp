// The copy of a file that is made before it is sent.
#include "measure.h"
#include "model/fingerprint.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "subjects.h"
#include "transport/local_place.h"
#include "transport/transfer_control.h"

#include <CLI/CLI.hpp>
#include <sys/stat.h>

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
        const auto source = LocalPlace::resolve(options->folder, options->name);
        const Descriptor from = source.parent->openForReading(source.name);
        const PrivateFolder staging;
        const Descriptor staged = staging.folder().create("upload", S_IRUSR | S_IWUSR);
        copyContents(from.get(), staged.get(), source.url, [&control] { control.check(); });
        Figures().since(begin).set("bytes", static_cast<double>(source.fingerprint().size)).print();
    });
}

} // namespace zembrastel::bench
