// The backups of a profile as the commands see them.
#pragma once

#include "cli/command.h"
#include "model/profile.h"
#include "transport/download/backups.h"

#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::cli {

// Those of one file, of all in one folder, or with "" all, as listBackups() orders them. An interrupt is thrown as
// Cancelled, a failure as CommandError.
[[nodiscard]] std::vector<Backup> keptVersions(
    const Profile& profile, std::string_view path, const Surroundings& around);

// The beginning of its id, which is enough for people.
[[nodiscard]] std::string shortId(const Backup& backup);

// Is it the version that the user means by a time as this program prints it, local or in UTC, by an id, or by the
// beginning of one of them?
[[nodiscard]] bool isMeant(const Backup& backup, std::string_view when);

} // namespace zembrastel::cli
