// Files for tests: made, changed, and read back for comparison. Any thread.
//
// Failures are thrown as std::filesystem::filesystem_error or std::system_error.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::testing {

// Relative path, "/" between components, to content.
using FileTree = std::map<std::string, std::string, std::less<>>;

// Makes or replaces the content of a file, and its missing parent folders.
void writeFile(const std::filesystem::path& file, std::string_view bytes);

void writeTree(const std::filesystem::path& folder, const FileTree& files);

[[nodiscard]] std::string readFile(const std::filesystem::path& file);

// Every regular file below the folder, hidden ones included; links are left out and not followed. Two folders hold the
// same when their trees are equal.
[[nodiscard]] FileTree readTree(const std::filesystem::path& folder);

// The same without the temporary transfer files, which a transfer that broke may leave on a server.
[[nodiscard]] FileTree readPublished(const std::filesystem::path& folder);

// The files but the backups that lie in a local folder.
[[nodiscard]] FileTree withoutBackups(FileTree files);

// Sets the modification time, which must be given to the nanosecond that is wanted.
void touch(const std::filesystem::path& file, std::chrono::system_clock::time_point modified);

// The same bytes for the same seed, on every machine.
[[nodiscard]] std::string randomBytes(std::size_t size, std::uint64_t seed = 1);

// The relative paths of temporary transfer files that were left behind below the folder.
[[nodiscard]] std::vector<std::string> leftoverPartFiles(const std::filesystem::path& folder);

} // namespace zembrastel::testing
