// What must never be published although it may lie in a local folder: the state folder, a file with a password.
//
// A value; any thread. It is recognised by device and inode, which are looked up anew at each scan: a hard link is left
// out too, and so is the new file after an editor replaced the old one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace zembrastel {

struct PrivateItem {
    std::filesystem::path path; // links are followed
    std::string reason;         // "it holds a password"
};

// What the user reads: "Left out, because it holds a password: notes/ftp.txt"
[[nodiscard]] std::string leftOutText(std::string_view path, const PrivateItem& item);

} // namespace zembrastel
