#include "model/import/profile_import.h"

#include "model/error.h"
#include "model/saved_state.h"
#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

namespace zembrastel {
namespace {

ProfilesFound profilesFromExport(std::string_view json) {
    ProfilesFound found;
    for (auto& profile : decodeProfileExport(std::string(json)).profiles) {
        profile.enabled = false;
        profile.trustedKey.reset(); // the user of this machine has not decided on it
        found.candidates.push_back({.profile = std::move(profile), .password = std::nullopt, .notes = {}});
    }
    return found;
}

// The first key of this program's exports.
bool looksLikeExport(std::string_view text) { return text.find("\"zembrastelProfiles\"") != std::string_view::npos; }

bool looksLikeXml(std::string_view bytes) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
    const auto text = trimmed(bytes.substr(0, bytes.find('<') + 1));
    return text == "<" || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"); // these are UTF-16
}

// Tries each name once with each number, however many sites have it.
void makeNamesUnique(std::vector<ProfileCandidate>& candidates) {
    std::unordered_set<std::string> taken;
    std::unordered_map<std::string, int> nextNumbers;
    for (auto& candidate : candidates) {
        std::string& name = candidate.profile.name;
        if (taken.insert(name).second) continue;
        const std::string wanted = name;
        int& number = nextNumbers.try_emplace(wanted, 2).first->second;
        do {
            name = wanted + ' ' + std::to_string(number++);
        } while (!taken.insert(name).second);
    }
}

void refuseLarge(std::uintmax_t size) {
    if (size > largestImport) throw SyncError("it is larger than 4 MB, which no such file is");
}

} // namespace

std::string unusedName(const std::string& wanted, const std::vector<std::string>& taken) {
    std::string name = wanted;
    for (int number = 2; std::ranges::find(taken, name) != taken.end(); ++number) {
        name = wanted + ' ' + std::to_string(number);
    }
    return name;
}

ProfilesFound findProfiles(std::string_view bytes, const std::filesystem::path& file) {
    refuseLarge(bytes.size());
    ProfilesFound found = looksLikeXml(bytes)      ? profilesFromSiteManager(bytes)
                          : looksLikeExport(bytes) ? profilesFromExport(bytes)
                                                   : profilesFromWorkspace(bytes, file);
    makeNamesUnique(found.candidates);
    return found;
}

ProfilesFound readProfiles(const std::filesystem::path& file) {
    if (!std::filesystem::is_regular_file(file)) throw SyncError("it is not a file");
    refuseLarge(std::filesystem::file_size(file));
    const auto bytes = readFile(file);
    if (!bytes) throw SyncError("it is not there any more");
    return findProfiles(*bytes, file);
}

Profile importable(const Profile& found, const std::vector<Profile>& others) {
    if (std::ranges::find(others, found.name, &Profile::name) != others.end()) {
        throw SyncError("There is a profile of this name already.");
    }
    if (found.localFolder.empty()) throw LocalFolderWanted("It has no local folder.");
    std::error_code ignored; // a folder that cannot be read counts as missing
    if (!std::filesystem::is_directory(found.localFolder, ignored)) {
        throw LocalFolderWanted("There is no folder " + found.localFolder + " here.");
    }
    Profile valid = found.validated();
    // A copy of a known profile becomes another profile.
    if (std::ranges::find(others, valid.id, &Profile::id) != others.end()) valid.id = Uuid::random();
    return valid;
}

} // namespace zembrastel
