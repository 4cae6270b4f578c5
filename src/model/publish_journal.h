// The files of one profile that are about to go live, on the disk before they do.
//
// A program that is killed between the server's rename and the save of its state would meet its own upload as a
// stranger's at the next start. The journal holds what the upload will look like there (the server keeps a file's date
// and size over a rename), so the next comparison with the server recognises it. An entry whose file never went live,
// or was replaced since, matches nothing on the server and does no harm.
//
// One small file a profile, beside profiles.json, for the owner alone. Any thread, one at a time. The file may be lost
// or spoilt: the price is one needless question.
#pragma once

#include "model/fingerprint.h"
#include "model/remote_date.h"
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

    // Adds files and returns once they are on the disk. Throws std::filesystem::filesystem_error. The newest thousand
    // or so are kept: what went live before them has long been saved.
    void announce(const AnnouncedFiles& batch);

    // What this or an earlier run announced; empty where there is no file, or none that can be understood.
    [[nodiscard]] AnnouncedFiles read() const;

    // Removes the file, if there is one: for a profile that is removed.
    void remove() const noexcept;

private:
    [[nodiscard]] std::filesystem::path file() const;

    std::filesystem::path folder;
    Uuid id;
    AnnouncedFiles older; // full; dropped when `newer` is full too
    AnnouncedFiles newer;
};

} // namespace zembrastel
