// zembrastel_bench: one measurement a run, its figures as a line of JSON in seconds and bytes. bench/run puts them
// together.
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app{"One measurement of the program's speed"};
    app.require_subcommand(1);
    using namespace zembrastel::bench;
    for (auto* const add :
         {addTree, addState, addPasswords, addScan, addPoll, addSave, addLoad, addUpload, addCheck, addDownload,
          addBareUploads, addBareListings, addStage, addParse, addTime}) {
        add(app);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zembrastel_bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
