// The fields of a profile as options of the command line, and the rules for a profile to save.
//
// Any thread.
#pragma once

#include "cli/parser.h"
#include "model/profile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel::cli {

// The options as typed. An option that was not given is empty.
struct ProfileOptions {
    std::optional<std::string> name{};
    std::optional<std::string> host{};
    std::optional<std::int64_t> port{};
    std::optional<std::string> transport{};
    std::optional<std::string> username{};
    std::optional<std::string> remoteFolder{};
    std::optional<std::string> localFolder{};
    std::vector<std::string> exclude{};
    std::optional<std::string> exclusions{};
    std::vector<std::string> sync{};
    std::vector<std::string> noSync{};
    std::vector<std::string> download{};
    std::vector<std::string> noDownload{};
    std::optional<std::string> compareContents{};
    std::string id{};
    bool enabled = false;
    bool disabled = false;
    bool needsDownload = false;
    bool createRemoteFolder = false;

    [[nodiscard]] bool operator==(const ProfileOptions&) const = default;
};

// Adds the options that all commands for profiles share; `options` receives their values. Returns all of them.
std::vector<Option> addProfileFields(Syntax& syntax, ProfileOptions& options);

// The profile that the options describe, not validated. Throws CommandError (usage) for a combination without meaning.
[[nodiscard]] Profile profileFrom(const ProfileOptions& options);

// The profile with the given options in place of its own values. A new transport brings its own usual port, unless the
// profile has an unusual one. Errors as above.
[[nodiscard]] Profile changedProfile(Profile profile, const ProfileOptions& options);

// The profile in the form in which it is saved. Throws CommandError if it is not valid.
[[nodiscard]] Profile validProfile(const Profile& profile);

// Refuses the user's home folder and every folder above it: they hold keys and passwords. Throws CommandError.
void requireSiteFolder(const std::string& localFolder);

// Refuses a profile with the id or the name of another one. `before` is the profile that it replaces, if any. Throws
// CommandError.
void requireUnused(const Profile& profile, const std::vector<Profile>& profiles, const Profile* before = nullptr);

} // namespace zembrastel::cli
