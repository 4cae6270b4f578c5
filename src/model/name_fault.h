// Items that cannot be transferred because of their name or depth, and the text that the user reads about them.
//
// Pure functions; any thread. Such an item is left out with its contents, on both sides: its name would make every
// transfer and comparison fail.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

// The deepest folders that are read: no real site has deeper ones, and a link that a server follows can be endless.
inline constexpr int maxFolderLevels = 128;

enum class NameFault {
    notUtf8,
    control, // curl refuses control characters, and a line break ends an FTP command
    tooLong, // for a file system of this machine
    tooDeep,
};

// Checks the characters and the length of one path component.
[[nodiscard]] std::optional<NameFault> nameFault(std::string_view name);

// True if the folder of this path ("/" between components) is too deep.
[[nodiscard]] bool isTooDeep(std::string_view folder);

// A sentence: "Its name is not valid UTF-8."
[[nodiscard]] std::string leftOutReason(NameFault fault);

// "Left out, because …: " and the path.
[[nodiscard]] std::string leftOutLine(NameFault fault, std::string_view path);

} // namespace zembrastel
