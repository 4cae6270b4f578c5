// What the same conversations with a server take when nothing but curl runs: the same configurations, one curl after
// another, their output thrown away.
#include "measure.h"
#include "model/state_store.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "subjects.h"
#include "transport/curl/curl_configuration.h"
#include "transport/local_place.h"
#include "tree.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace zembrastel::bench {
namespace {

struct Site {
    explicit Site(const std::string& stateFolder) : profile(StateStore(stateFolder).load().profiles.at(0)) {}

    void talk(std::string_view path, bool directory, const std::vector<TransferOption>& options) const {
        const std::string configuration = curlConfiguration(profile, "s3cret", path, directory, options);
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throwFileError("pipe", "curl");
        const Descriptor reading(ends[0]);
        Descriptor writing(ends[1]);
        // It is short enough to be held by the pipe.
        if (write(writing.get(), configuration.data(), configuration.size()) < 0) throwFileError("write", "curl");
        writing.close();
        dup2(reading.get(), STDIN_FILENO); // which the child inherits
        runProgram({"/usr/bin/curl", "--disable", "--config", "-"});
    }

    const Profile profile;
};

void upload(const Site& site, std::size_t count, const std::string& file) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = "new-" + std::to_string(i) + ".html";
        const std::string temporary = temporaryName();
        site.talk(
            "new/" + temporary, false,
            {{"ftp-create-dirs"}, {"upload-file", file}, {"quote", "-RNFR " + temporary}, {"quote", "-RNTO " + name}});
        site.talk("new/" + name, false, {{"head"}});
    }
}

void list(const Site& site, const TreeShape& shape, std::size_t most) {
    for (std::size_t number = 0; number < std::min(most, shape.folders()); ++number) {
        const std::string path = shape.folder(number);
        site.talk(path, true, {{"request", "MLSD"}});
        site.talk(path, true, {});
    }
}

} // namespace

void addBareUploads(CLI::App& parent) {
    struct Options {
        std::string stateFolder;
        std::string file;
        std::size_t count = 200;
    };
    auto* const command = parent.add_subcommand("bare-uploads", "The curl runs of uploads");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->stateFolder, "The state folder")->required();
    command->add_option("FILE", options->file, "What is sent each time")->required();
    command->add_option("--count", options->count);
    command->callback([options] {
        const Site site(options->stateFolder);
        printTimeOf([&] { upload(site, options->count, options->file); });
    });
}

void addBareListings(CLI::App& parent) {
    struct Options {
        std::string stateFolder;
        std::size_t files = 0;
        std::size_t most = SIZE_MAX;
    };
    auto* const command = parent.add_subcommand("bare-listings", "The curl runs of a comparison");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->stateFolder, "The state folder")->required();
    command->add_option("--files", options->files, "As many as the server's folder was made with")->required();
    command->add_option("--most", options->most, "End after so many folders");
    command->callback([options] {
        const Site site(options->stateFolder);
        printTimeOf([&] { list(site, TreeShape(options->files), options->most); });
    });
}

} // namespace zembrastel::bench
