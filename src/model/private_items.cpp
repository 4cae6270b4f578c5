#include "model/private_items.h"

#include "platform/text.h"

#include <algorithm>
#include <system_error>

namespace zembrastel {
namespace {

// The path with its links resolved as far as it exists; unchanged if that fails.
std::filesystem::path realPlace(const std::filesystem::path& path) {
    std::error_code failed;
    auto place = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : place;
}

} // namespace

std::string leftOutText(std::string_view path, const PrivateItem& item) {
    return "Left out, because " + item.reason + ": " + printable(path);
}

PrivateItems::PrivateItems(const std::vector<PrivateItem>& items) {
    for (const auto& item : items) {
        struct stat attributes {};
        std::error_code gone;
        const auto real = std::filesystem::canonical(item.path, gone);
        if (gone || ::stat(real.c_str(), &attributes) != 0) {
            missing.push_back({.item = &item, .place = realPlace(item.path)});
            continue;
        }
        found.push_back(
            {.item = &item,
             .device = attributes.st_dev,
             .inode = attributes.st_ino,
             .folderName = S_ISDIR(attributes.st_mode) ? asciiLowercase(real.filename().string()) : ""});
    }
}

const PrivateItem* PrivateItems::find(const struct stat& attributes) const {
    const auto match = std::ranges::find_if(found, [&attributes](const Found& one) {
        return one.inode == attributes.st_ino && one.device == attributes.st_dev;
    });
    return match == found.end() ? nullptr : match->item;
}

bool PrivateItems::mayBeFolder(std::string_view name) const {
    return std::ranges::any_of(found, [name](const Found& one) {
        return one.folderName.size() == name.size() && one.folderName == asciiLowercase(name);
    });
}

const PrivateItem* PrivateItems::findMissing(const std::filesystem::path& place) const {
    if (missing.empty()) return nullptr;
    const auto match = std::ranges::find(missing, realPlace(place), &Missing::place);
    return match == missing.end() ? nullptr : match->item;
}

} // namespace zembrastel
