#include "transport/compare/first_comparison.h"

namespace zembrastel {

FileMap FirstComparison::uncompared() const {
    FileMap files;
    for (const auto& [path, fingerprint] : alike.files) {
        if (!same.contains(path)) files.set(path, fingerprint);
    }
    return files;
}

std::uint64_t FirstComparison::bytesToCompare() const {
    std::uint64_t bytes = 0;
    for (const auto& [path, fingerprint] : uncompared()) bytes += static_cast<std::uint64_t>(fingerprint.size);
    return bytes;
}

ComparedContents FirstComparison::results() const {
    ComparedContents all{.different = different};
    for (const auto& path : same) {
        all.same.files.set(path, alike.files.at(path));
        all.same.dates.set(path, alike.dates.at(path));
    }
    return all;
}

void FirstComparison::add(const std::string& path, bool equal) {
    const auto* file = alike.files.find(path);
    if (file == nullptr) return;
    if (equal) {
        same.insert(path);
        return;
    }
    different.files.set(path, *file);
    different.dates.set(path, alike.dates.at(path));
    const auto isIt = [&path](std::string_view each, const auto&) { return each == path; };
    alike.files.eraseIf(isIt);
    alike.dates.eraseIf(isIt);
    same.erase(path);
}

} // namespace zembrastel
