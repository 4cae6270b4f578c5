// Finds the changed files whose content is the one that was published: they have a new date, as after a fresh checkout
// or a build, and need not be sent.
//
// Uploads record their contents as they go live. Files that were published or downloaded before the profile compared
// contents are read once.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/records/published_contents.h"
#include "model/server_version.h"
#include "transport/transfer_control.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// True if the published content is known, is still on the server as far as the program has seen, and may be that of
// the file now, which has the same size. `baseline`, `content` and `onServer` are null if they are not known.
[[nodiscard]] bool mayHavePublishedContent(
    const Fingerprint& now, const Fingerprint* baseline, const PublishedContent* content,
    const ServerVersion* onServer);

// What the comparison is based on; all borrowed.
struct PublishedFiles {
    const FileMap& baseline;
    const ServerVersions& onServer; // the versions last seen there
    const PublishedContents& contents;
};

// Those of these changed files that have the published content, with their entries for the version of now. Reads the
// files on this thread, piece by piece; throws Cancelled. A file that changes meanwhile, or cannot be read, is not
// among them.
[[nodiscard]] PublishedContentMap findUnchangedContents(
    const Profile& profile, const std::vector<std::string>& changed, const FileMap& current,
    const PublishedFiles& published, const TransferControl& control);

// The published files without an entry, in descending order of paths. Not those whose entry is about another version on
// the server than the one last seen: what is there may not have the content of the local file.
[[nodiscard]] std::vector<std::string> filesWithoutContent(const PublishedFiles& published);

// The entry for a published file that has none, from its local content. Nullopt if the file is no longer the version of
// the baseline, or cannot be read. Reads the file as above.
[[nodiscard]] std::optional<PublishedContent> readPublishedContent(
    const Profile& profile, const std::string& path, const PublishedFiles& published, const TransferControl& control);

// The line for the log: "12 files have a new date but the same content and are not sent."
[[nodiscard]] std::string unchangedContentsLine(std::uint64_t files);

} // namespace zembrastel
