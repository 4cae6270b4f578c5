// What the same conversations with a server take when nothing but curl runs: the same configurations, one curl after
// another, their output thrown away.
#include "measure.h"
#include "model/state_store.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "subjects.h"
#include "transport/curl_configuration.h"
#include "transport/local_place.h"
#include "tree.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

namespace zembrastel::bench {
namespace {

class Curl {
public:
    Curl() {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    }
    Curl(const Curl&) = delete;
    Curl& operator=(const Curl&) = delete;
    ~Curl() { posix_spawn_file_actions_destroy(&actions); }

    void run(const std::string& configuration) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throwFileError("pipe", executable);
        const Descriptor reading(ends[0]);
        Descriptor writing(ends[1]);
        dup2(reading.get(), STDIN_FILENO); // which the child inherits
        pid_t process = -1;
        const int failed = posix_spawn(&process, executable, &actions, nullptr, arguments.data(), environ);
        if (failed != 0) throwFileError("posix_spawn", executable, failed);
        if (write(writing.get(), configuration.data(), configuration.size()) < 0) throwFileError("write", executable);
        writing.close();
        int status = 0;
        waitpid(process, &status, 0);
        if (status != 0) throw std::runtime_error("curl failed");
    }

private:
    static constexpr const char* executable = "/usr/bin/curl";
    posix_spawn_file_actions_t actions{};
    std::array<std::string, 4> words{executable, "--disable", "--config", "-"};
    std::array<char*, 5> arguments{words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
};

struct Site {
    explicit Site(const std::string& stateFolder) : profile(StateStore(stateFolder).load().profiles.at(0)) {}

    void talk(std::string_view path, bool directory, const std::vector<TransferOption>& options) {
        curl.run(curlConfiguration(profile, "s3cret", path, directory, options));
    }

    Profile profile;
    Curl curl;
};

void upload(Site& site, std::size_t count, const std::string& file) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = "new-" + std::to_string(i) + ".html";
        const std::string temporary = temporaryName();
        site.talk(
            "new/" + temporary, false,
            {{"ftp-create-dirs"}, {"upload-file", file}, {"quote", "-RNFR " + temporary}, {"quote", "-RNTO " + name}});
        site.talk("new/" + name, false, {{"head"}});
    }
}

void list(Site& site, const TreeShape& shape) {
    for (std::size_t number = 0; number < shape.folders(); ++number) {
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
        Site site(options->stateFolder);
        const Moment begin = now();
        upload(site, options->count, options->file);
        Figures().since(begin).print();
    });
}

void addBareListings(CLI::App& parent) {
    struct Options {
        std::string stateFolder;
        std::size_t files = 0;
    };
    auto* const command = parent.add_subcommand("bare-listings", "The curl runs of a comparison");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->stateFolder, "The state folder")->required();
    command->add_option("--files", options->files, "As many as the server's folder was made with")->required();
    command->callback([options] {
        Site site(options->stateFolder);
        const Moment begin = now();
        list(site, TreeShape(options->files));
        Figures().since(begin).print();
    });
}

} // namespace zembrastel::bench
