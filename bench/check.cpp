// The comparison with the server.
#include "measure.h"
#include "model/state_store.h"
#include "subjects.h"
#include "transport/ftp_transport.h"

#include <CLI/CLI.hpp>

namespace zembrastel::bench {
namespace {

struct Enough {};

void measure(const std::string& stateFolder, std::size_t most) {
    SavedState state = StateStore(stateFolder).load();
    const FTPTransport transport{
        .profile = state.profiles.at(0), .password = "s3cret", .control = std::make_shared<TransferControl>()};
    const auto& id = transport.profile.id;
    std::size_t folders = 0;
    double firstFolder = 0; // when the local folder was scanned
    const auto count = [&](const std::string&) {
        if (folders == 0) firstFolder = now().wall;
        if (most != 0 && folders == most) throw Enough();
        ++folders;
    };
    std::size_t newer = 0;
    const Moment begin = now();
    try {
        newer = transport.newerRemoteFiles({state.baselines[id], (*state.remoteDates)[id]}, count).changes.size();
    } catch (const Enough&) {
        // The time for as many folders is what was asked for.
    }
    Figures()
        .since(begin)
        .set("scan", firstFolder - begin.wall)
        .set("folders", static_cast<double>(folders))
        .set("newer", static_cast<double>(newer))
        .print();
}

} // namespace

void addCheck(CLI::App& parent) {
    struct Options {
        std::string stateFolder;
        std::size_t most = 0;
    };
    auto* const command = parent.add_subcommand("check", "The comparison of the first profile with its server");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->stateFolder, "The state folder")->required();
    command->add_option("--most", options->most, "End after so many folders");
    command->callback([options] { measure(options->stateFolder, options->most); });
}

} // namespace zembrastel::bench
