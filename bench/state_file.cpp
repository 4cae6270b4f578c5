// Saving and loading a state, each beside the least that such a thing takes.
#include "measure.h"
#include "model/state_store.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace zembrastel::bench {
namespace {

void check(bool succeeded, const char* operation, const std::filesystem::path& file) {
    if (!succeeded) throwFileError(operation, file);
}

void writeFlushRename(const std::filesystem::path& folder, std::string_view bytes) {
    const auto fresh = folder / "reference.new";
    const auto file = folder / "reference";
    const Descriptor written(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
    check(bool(written), "open", fresh);
    while (!bytes.empty()) {
        const auto count = write(written.get(), bytes.data(), bytes.size());
        check(count > 0, "write", fresh);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    check(fsync(written.get()) == 0, "fsync", fresh);
    check(rename(fresh.c_str(), file.c_str()) == 0, "rename", file);
    const Descriptor parent(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    check(fsync(parent.get()) == 0, "fsync", folder);
}

template <class Work>
void time(const Work& work, std::vector<double>& wall, std::vector<double>& own) {
    const Moment begin = now();
    work();
    const Moment end = now();
    wall.push_back(end.wall - begin.wall);
    own.push_back(end.own - begin.own);
}

void measureSave(const std::string& folder, std::size_t rounds) {
    const StateStore store(folder);
    const SavedState state = store.load();
    store.save(state);
    const auto bytes = readFile(std::filesystem::path(folder) / "profiles.json").value();
    writeFlushRename(folder, bytes);
    std::vector<double> wall, own, referenceWall, referenceOwn;
    for (std::size_t i = 0; i < rounds; ++i) {
        time([&] { store.save(state); }, wall, own);
        time([&] { writeFlushRename(folder, bytes); }, referenceWall, referenceOwn);
    }
    std::filesystem::remove(std::filesystem::path(folder) / "reference");
    Figures()
        .set("wall", wall)
        .set("own", own)
        .set("referenceWall", referenceWall)
        .set("referenceOwn", referenceOwn)
        .set("bytes", static_cast<double>(bytes.size()))
        .print();
}

void measureLoad(const std::string& folder, bool withNlohmann) {
    const Moment begin = now();
    if (withNlohmann) {
        const auto json = nlohmann::json::parse(readFile(std::filesystem::path(folder) / "profiles.json").value());
        Figures().since(begin).set("profiles", static_cast<double>(json.at("profiles").size())).print();
    } else {
        const SavedState state = StateStore(folder).load();
        Figures().since(begin).set("profiles", static_cast<double>(state.profiles.size())).print();
    }
}

} // namespace

void addSave(CLI::App& parent) {
    struct Options {
        std::string folder;
        std::size_t rounds = 1;
    };
    auto* const command = parent.add_subcommand("save", "Saves of a state, and writes of the same bytes, in turn");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_option("--rounds", options->rounds);
    command->callback([options] { measureSave(options->folder, options->rounds); });
}

void addLoad(CLI::App& parent) {
    struct Options {
        std::string folder;
        bool withNlohmann = false;
    };
    auto* const command = parent.add_subcommand("load", "One load of a state");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_flag("--nlohmann", options->withNlohmann, "The same file, by nlohmann::json::parse");
    command->callback([options] { measureLoad(options->folder, options->withNlohmann); });
}

} // namespace zembrastel::bench
