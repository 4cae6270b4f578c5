// Why an item of a site cannot be transferred because of its name or its place, and how the user reads that.
//
// Pure functions; any thread. Such an item is left out with all it holds, on whichever side it is: a name that was
// passed on would make every transfer or comparison fail that comes to it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zembrastel {

// Folders are this deep at most: no real site has deeper ones, and a link that a server follows can go on for ever.
inline constexpr int mostFolderLevels = 128;

enum class NameFault {
    notUtf8,
    control, // curl takes no control characters, and a line break ends a command of FTP
    tooLong, // for a file system of this machine
    tooDeep,
};

// Of one path component; of its characters and its length alone.
[[nodiscard]] std::optional<NameFault> nameFault(std::string_view name);

// Is the folder of this path, "/" between its components, too deep?
[[nodiscard]] bool isTooDeep(std::string_view folder);

// A sentence: "Its name is not valid UTF-8."
[[nodiscard]] std::string leftOutReason(NameFault fault);

// "Left out, because …: " and the path.
[[nodiscard]] std::string leftOutLine(NameFault fault, std::string_view path);

} // namespace zembrastel
