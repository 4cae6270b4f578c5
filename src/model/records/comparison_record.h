// The results of a comparison of contents that the user has not yet acted on, kept until then.
//
// A program that is stopped or killed continues the comparison where it ended. One file a profile, beside
// profiles.json, with mode 0600. Any thread, one at a time. If the file is lost or damaged, the contents are compared
// again.
#pragma once

#include "model/records/publish_journal.h"

#include <filesystem>

namespace zembrastel {

// Files whose contents were compared: the local versions, and the server's dates of the versions there. A result holds
// for exactly these versions.
struct ComparedContents {
    AnnouncedFiles same{};
    AnnouncedFiles different{};
};

class ComparisonRecord {
public:
    ComparisonRecord(const std::filesystem::path& stateFolder, const Uuid& profile);

    // Replaces what was kept. Returns once it is on the disk. Throws std::filesystem::filesystem_error.
    void write(const ComparedContents& results) const;

    // Empty if there is no file, or a damaged one.
    [[nodiscard]] ComparedContents read() const;

    void remove() const noexcept;

private:
    std::filesystem::path file;
};

} // namespace zembrastel
