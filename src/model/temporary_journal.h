// The temporary files that uploads of one profile may have on the server: what a program that is killed leaves there is
// removed by the next one, by exact name.
//
// One small file a profile, beside profiles.json, for the owner alone; absent while there is nothing to remove. Any
// thread, one at a time. It is not flushed to the disk: it has to outlive the program and not the machine. Errors are
// ignored, at the price of a file that stays on the server.
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
        std::string place; // user, server and remote folder; without line breaks
        File file;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    TemporaryJournal(std::filesystem::path stateFolder, const Uuid& profile);

    void add(const std::vector<Entry>& entries);
    void replace(const std::vector<Entry>& entries);

    // Only names that this program gives to temporary files; other lines are passed over.
    [[nodiscard]] std::vector<Entry> read() const;

    void remove() const noexcept;

private:
    std::filesystem::path file;
    bool exists = true; // perhaps
};

} // namespace zembrastel
