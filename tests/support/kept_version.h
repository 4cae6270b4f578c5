// Versions of local files as replacements by the server's leave them.
#pragma once

#include "support/file_tree.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace zembrastel::testing {

// One below `site`, in the backup of this id: kept on the 4th of March 2026 at this hour in UTC, an hour after it was
// last changed.
inline void keepVersion(
    const std::filesystem::path& site, const std::string& id, const std::string& path, const std::string& text,
    int hour) {
    using namespace std::chrono;
    const auto backup = site / ".zembrastel-backups" / id;
    const auto kept = sys_days(year(2026) / 3 / 4) + hours(hour);
    writeFile(backup / path, text);
    touch(backup / path, kept - hours(1));
    touch(backup, kept);
}

} // namespace zembrastel::testing
