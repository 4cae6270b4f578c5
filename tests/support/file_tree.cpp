#include "support/file_tree.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace zembrastel::testing {

void writeFile(const fs::path& file, std::string_view bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw std::system_error(errno, std::generic_category(), "cannot write " + file.string());
}

void writeTree(const fs::path& folder, const FileTree& files) {
    for (const auto& [path, bytes] : files) writeFile(folder / path, bytes);
}

std::string readFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::system_error(errno, std::generic_category(), "cannot read " + file.string());
    std::string bytes(fs::file_size(file), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount())); // it may have shrunk meanwhile
    return bytes;
}

FileTree readTree(const fs::path& folder) {
    FileTree files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.symlink_status().type() != fs::file_type::regular) continue;
        files[entry.path().lexically_relative(folder).generic_string()] = readFile(entry.path());
    }
    return files;
}

FileTree readPublished(const fs::path& folder) {
    FileTree files = readTree(folder);
    for (const auto& leftover : leftoverPartFiles(folder)) files.erase(leftover);
    return files;
}

FileTree withoutBackups(FileTree files) {
    std::erase_if(files, [](const auto& file) { return file.first.starts_with(".zembrastel-backups/"); });
    return files;
}

void touch(const fs::path& file, std::chrono::system_clock::time_point modified) {
    const auto whole = std::chrono::floor<std::chrono::seconds>(modified);
    const std::chrono::nanoseconds rest = modified - whole;
    const timespec time{.tv_sec = whole.time_since_epoch().count(), .tv_nsec = rest.count()};
    const std::array<timespec, 2> times{timespec{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, time};
    if (utimensat(AT_FDCWD, file.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot touch " + file.string());
}

std::string randomBytes(std::size_t size, std::uint64_t seed) {
    std::mt19937_64 source(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(source() & 0xff);
    return bytes;
}

std::vector<std::string> leftoverPartFiles(const fs::path& folder) {
    std::vector<std::string> paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name.starts_with(".zembrastel-") && (name.ends_with(".part") || name.ends_with(".displaced")))
            paths.push_back(entry.path().lexically_relative(folder).generic_string());
    }
    return paths;
}

} // namespace zembrastel::testing
