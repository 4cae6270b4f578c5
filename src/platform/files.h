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

// Throws the filesystem_error for errno: what the system said of `file` when `operation` failed.
[[noreturn]] void throwFileError(const char* operation, const std::filesystem::path& file);
[[noreturn]] void throwFileError(const char* operation, const std::filesystem::path& file, int errorNumber);

// Makes the folder and its missing parents for the owner alone (0700), whatever the umask. What exists is left as it
// is.
void makePrivateFolders(const std::filesystem::path& folder);

// Replaces the file in one step, for the owner alone (0600). The bytes go to a new file beside it, are flushed to the
// disk and renamed into place: after a crash at any moment the old or the new file is there, entire.
void writeAtomically(const std::filesystem::path& file, std::string_view bytes);

// The same for the file of that name in an open folder, which nobody can swap for another meanwhile.
void writeAtomically(const Folder& folder, const std::string& name, std::string_view bytes);

// Removes what writeAtomically left beside `file` in a run that was killed, once it is over an hour old. What cannot be
// read or removed stays, without an error.
void removeStaleWrites(const std::filesystem::path& file);

// The file's bytes, with room for 64 more, which parsers that read by blocks ask for. Nothing when there is no such
// file.
[[nodiscard]] std::optional<std::string> readFile(const std::filesystem::path& file);

// The bytes of an open file, from its beginning, wherever it was read or written last; of a pipe what is still to come.
// `name` is for messages.
[[nodiscard]] std::string readContents(int file, const std::filesystem::path& name);

// Copies all that is in the open file `from` to the open, empty file `to`, sharing the blocks where the file system
// can. Calls `checkpoint` between pieces of at most 64 MiB; what it throws ends the copy. `name` is for messages.
void copyContents(int from, int to, const std::filesystem::path& name, const std::function<void()>& checkpoint);

} // namespace zembrastel
