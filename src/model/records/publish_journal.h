// A profile's files that are about to go live, written to the disk before they do.
//
// If the program is killed between the server's rename and the save of its state, its own upload would look like a
// colleague's at the next start. The journal has the date and size of each upload (a rename on the server keeps both),
// so the next check recognises it. An entry whose file never went live, or was replaced since, matches no file on the
// server and does no harm.
//
// One small file per profile, beside profiles.json, with mode 0600. Any thread, one at a time. If the file is lost or
// damaged, the user is asked a needless question once.
#pragma once

#include "model/fingerprint.h"
#include "model/server_version.h"
#include "platform/uuid.h"

#include <filesystem>

namespace zembrastel {

// Local versions, and the dates that the server reported for their complete copies.
struct AnnouncedFiles {
    FileMap files;
    RemoteDates dates;
};

class PublishJournal {
public:
    PublishJournal(std::filesystem::path stateFolder, const Uuid& profile);

    // Adds files and returns when they are on the disk. Throws std::filesystem::filesystem_error. Keeps about the
    // newest thousand: earlier ones were saved long ago.
    void announce(const AnnouncedFiles& batch);

    // Announces those of these files that are in the journal. Their contents are live already, but their earlier
    // versions must not count as the latest. Errors as above.
    void update(const AnnouncedFiles& batch);

    // The files that this or an earlier run announced. Empty if there is no file, or a damaged one.
    [[nodiscard]] AnnouncedFiles read() const;

    // Removes the file, if there is one. For a profile that is removed.
    void remove() const noexcept;

private:
    [[nodiscard]] std::filesystem::path file() const;

    std::filesystem::path folder;
    Uuid id;
    AnnouncedFiles older; // full; dropped when `newer` is full too
    AnnouncedFiles newer;
};

} // namespace zembrastel
