// Whole files and their contents: private folders, atomic owner-only writes, copies.
//
// Any thread. Failures are thrown as std::filesystem::filesystem_error, naming the file.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

class Folder;

// Throws the filesystem_error for errno (or `errorNumber`) after `operation` on `file` failed.
[[noreturn]] void throwFileError(const char* operation, const std::filesystem::path& file);
[[noreturn]] void throwFileError(const char* operation, const std::filesystem::path& file, int errorNumber);

// Creates the folder and its missing parents with mode 0700, whatever the umask. Existing folders stay unchanged.
void makePrivateFolders(const std::filesystem::path& folder);

// Replaces the file in one step, with mode 0600. The bytes are written to a new file beside it, flushed to the disk and
// renamed into place: after a crash at any moment the old or the new file is complete.
void writeAtomically(const std::filesystem::path& file, std::string_view bytes);

// The same for a file in an open folder, which another process cannot swap meanwhile.
void writeAtomically(const Folder& folder, const std::string& name, std::string_view bytes);

// Removes files that killed runs of writeAtomically left beside `file`, if they are over an hour old. Files that cannot
// be read or removed stay, without an error.
void removeStaleWrites(const std::filesystem::path& file);

// The file's bytes, with a capacity for 64 more, which block-reading parsers need. nullopt if the file does not exist.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file);

// The bytes of an open file from its beginning, whatever its position; of a pipe, the bytes still to come. `name` is
// for messages.
[[nodiscard]] std::string readContents(int file, const std::filesystem::path& name);

// Copies the open file `from` to the open, empty file `to`, sharing blocks if the file system can. Calls `checkpoint`
// between pieces of at most 64 MiB; an exception from it ends the copy. `name` is for messages.
void copyContents(int from, int to, const std::filesystem::path& name, const std::function<void()>& checkpoint);

// Why the system refuses to write more of an open file, in the system's words; empty if it accepts more.
[[nodiscard]] std::string whyNotWritten(int file);

} // namespace zembrastel
