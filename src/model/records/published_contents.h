// The hashes of the contents that were published, by which a file with a new date and the same content is recognised.
//
// One file a profile, beside profiles.json, with mode 0600. An entry holds for one local version and the server's date
// of its upload: it is used only if the baseline has that version and the server has that date. So the file may be
// lost, damaged or outdated at any time; then files are sent as without it.
//
// The format is binary, and new entries are added at the end: a batch of uploads among 100,000 files writes a few
// kilobytes and reads nothing. Each entry has a checksum, so that the rest of a torn write is recognised. The file is
// replaced as a whole, in one step, when most of it is outdated. It belongs to this machine and is never transferred.
//
// Any thread, one at a time. The file is not in memory between the calls. No failure is reported: its only effect is
// that files are sent.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/server_version.h"
#include "platform/content_hash.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

struct PublishedContent {
    Fingerprint fingerprint;
    RemoteDate date; // the server's, of the published copy
    ContentHash hash;

    friend bool operator==(const PublishedContent&, const PublishedContent&) = default;
};

using PublishedContentMap = std::map<std::string, PublishedContent, std::less<>>;

class PublishedContents {
public:
    // Entries hold only for the profile's present server, login, remote folder and local folder.
    PublishedContents(const std::filesystem::path& stateFolder, const Profile& profile);

    // The newest entries of these local versions.
    [[nodiscard]] PublishedContentMap find(const std::map<std::string, Fingerprint, std::less<>>& versions) const;

    // Adds entries. Earlier ones that do not match the baseline are dropped when the file is replaced as a whole.
    void add(const PublishedContentMap& entries, const FileMap& baseline);

    // Removes the file of the profile, if there is one.
    static void remove(const std::filesystem::path& stateFolder, const Uuid& profile) noexcept;

private:
    void tidy(const FileMap& baseline);

    std::filesystem::path file;
    std::string header;          // names the format and the place on the server
    std::uint64_t tidyAbove = 0; // size of the file above which it is tidied
};

} // namespace zembrastel
