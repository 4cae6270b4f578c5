#include "tree.h"

#include "measure.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "subjects.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <sys/stat.h>

namespace zembrastel::bench {
namespace {

constexpr std::size_t filesInFolder = 12;
constexpr int deepest = 5;

std::size_t foldersOfWidth(std::size_t width) {
    std::size_t all = 1;
    std::size_t atLevel = 1;
    for (int level = 1; level <= deepest; ++level) all += atLevel *= width;
    return all;
}

std::string fileName(std::size_t index) { return "page-" + std::to_string(10 + index) + ".html"; }

// Without bytes a file has a size all the same, as a hole.
void makeFile(int folder, const std::string& name, std::size_t size, const std::string& bytes) {
    const Descriptor file(openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!file) throwFileError("open", name);
    const bool made = bytes.empty()
                          ? ftruncate(file.get(), static_cast<off_t>(size)) == 0
                          : write(file.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (!made) throwFileError("write", name);
}

void fillFolder(const std::filesystem::path& folder, std::size_t number, std::size_t files, const std::string& bytes) {
    constexpr std::size_t sizes = 50000;
    const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) throwFileError("open", folder);
    for (std::size_t i = 0; i < files; ++i)
        makeFile(opened.get(), fileName(i), (number * 7919 + i * 104729) % sizes, bytes);
}

void makeTree(const std::filesystem::path& top, std::size_t files, const std::string& bytes) {
    const TreeShape shape(files);
    for (std::size_t number = 0; number < shape.folders(); ++number) {
        std::filesystem::create_directories(top / shape.folder(number));
    }
    const auto fillEveryOther = [&](std::size_t first) {
        for (std::size_t number = first; number < shape.folders(); number += 2) {
            fillFolder(top / shape.folder(number), number, shape.filesIn(number), bytes);
        }
    };
    auto other = std::async(std::launch::async, fillEveryOther, 1);
    fillEveryOther(0);
    other.get();
}

} // namespace

TreeShape::TreeShape(std::size_t files)
    : fileCount(files), folderCount(std::max<std::size_t>(1, (files + filesInFolder - 1) / filesInFolder)) {
    while (foldersOfWidth(width) < folderCount) ++width;
}

std::string TreeShape::folder(std::size_t number) const {
    std::string path;
    for (; number > 0; number = (number - 1) / width) {
        path.insert(0, "folder-" + std::to_string((number - 1) % width) + (path.empty() ? "" : "/"));
    }
    return path;
}

std::size_t TreeShape::filesIn(std::size_t folder) const {
    return std::min(filesInFolder, fileCount - std::min(fileCount, folder * filesInFolder));
}

void addTree(CLI::App& parent) {
    struct Options {
        std::string folder;
        std::size_t files = 0;
        std::size_t bytes = 0;
    };
    auto* const command = parent.add_subcommand("tree", "Makes a folder of files");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folder)->required();
    command->add_option("--files", options->files)->required();
    command->add_option("--bytes", options->bytes, "The contents of each file; holes of various sizes when left out");
    command->callback([options] {
        printTimeOf([&] { makeTree(options->folder, options->files, std::string(options->bytes, 'x')); });
    });
}

} // namespace zembrastel::bench
