// What the first comparison of a profile with its server found: files that both sides have with the same name and size.
// The user chooses whether they count as published.
//
// Values and pure functions; any thread.
#pragma once

#include "model/fingerprint.h"
#include "model/records/comparison_record.h"

#include <cstdint>
#include <set>
#include <string>

namespace zembrastel {

struct FirstComparison {
    std::uint64_t localFiles = 0;              // that are to be on the server
    AnnouncedFiles alike{};                    // same name and size, and contents not known to be different
    AnnouncedFiles different{};                // same name and size, other contents
    std::set<std::string, std::less<>> same{}; // files of `alike` with the same contents
    std::uint64_t otherSizes = 0;              // files that the server has with another size

    // The files that need not be uploaded if those alike count as published, and the others.
    [[nodiscard]] std::uint64_t alikeFiles() const { return alike.files.size(); }
    [[nodiscard]] std::uint64_t otherFiles() const { return localFiles - alikeFiles(); }

    // True once the contents of all files of equal size were compared.
    [[nodiscard]] bool isCompared() const { return same.size() == alikeFiles(); }

    // The files whose contents were not compared, and the bytes that a comparison downloads.
    [[nodiscard]] FileMap uncompared() const;
    [[nodiscard]] std::uint64_t bytesToCompare() const;

    // What was compared so far, for exactly these versions.
    [[nodiscard]] ComparedContents results() const;

    // Adds the result of a comparison of a file of `alike`. Another file is ignored.
    void add(const std::string& path, bool equal);
};

// What the user chose at the first comparison.
enum class Adoption {
    alike,  // the files alike count as published
    nothing // all files are uploaded
};

} // namespace zembrastel
