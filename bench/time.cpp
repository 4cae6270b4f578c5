// How long any other program takes, from before it is started until after it has ended.
#include "measure.h"
#include "platform/files.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

namespace zembrastel::bench {
namespace {

void run(std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int failed = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throwFileError("posix_spawn", words.front(), failed);
    int status = 0;
    waitpid(process, &status, 0);
    if (status != 0) throw std::runtime_error(words.front() + " failed");
}

} // namespace

void addTime(CLI::App& parent) {
    auto* const command = parent.add_subcommand("time", "Another program's run, its output thrown away");
    const auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("COMMAND", *words, "After --")->required();
    command->callback([words] {
        const Moment begin = now();
        run(*words);
        Figures().since(begin).print();
    });
}

} // namespace zembrastel::bench
