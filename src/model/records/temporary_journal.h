// The temporary files that uploads of a profile may have left on the server. After a kill, the next run removes them
// there, by exact name.
//
// One small file per profile, beside profiles.json, with mode 0600; absent while there is nothing to remove. Any
// thread, one at a time. It is not flushed to the disk: it must survive a kill of the program, not a crash of the
// machine. Errors are ignored; a temporary file may then stay on the server.
#pragma once

#include "platform/uuid.h"

#include <filesystem>
#include <string>
#include <vector>

namespace zembrastel {

class TemporaryJournal {
public:
    struct File {
        std::string folder; // relative to the profile's remote folder
        std::string name;

        friend bool operator==(const File&, const File&) = default;
    };
    struct Entry {
        std::string place; // user, server and remote folder, without line breaks
        File file;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    TemporaryJournal(std::filesystem::path stateFolder, const Uuid& profile);

    void add(const std::vector<Entry>& entries);
    void replace(const std::vector<Entry>& entries);

    // Only names that this program gives to temporary files; other lines are ignored.
    [[nodiscard]] std::vector<Entry> read() const;

    void remove() const noexcept;

private:
    std::filesystem::path file;
    bool exists = true; // perhaps
};

} // namespace zembrastel
