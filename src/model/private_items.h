// The private items that there are at one moment, to be compared with what a local folder has.
//
// A value; any thread. What it was made from must outlive it.
#pragma once

#include "model/private_item.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace zembrastel {

class PrivateItems {
public:
    explicit PrivateItems(const std::vector<PrivateItem>& items);

    // The one that a file or folder with these attributes is; nullptr for any other.
    [[nodiscard]] const PrivateItem* find(const struct stat& attributes) const;

    // May a folder of this name be one of them? It saves reading the attributes of the others. Folders have no
    // other names to look out for; their letters may be written in another case where the file system does not care.
    [[nodiscard]] bool mayBeFolder(std::string_view name) const;

    // The one that is to stand at this place, where there is nothing now; nullptr for any other place.
    [[nodiscard]] const PrivateItem* findMissing(const std::filesystem::path& place) const;

private:
    struct Found {
        const PrivateItem* item;
        dev_t device;
        ino_t inode;
        std::string folderName; // in lower case; empty for a file
    };
    struct Missing {
        const PrivateItem* item;
        std::filesystem::path place;
    };

    std::vector<Found> found;
    std::vector<Missing> missing;
};

} // namespace zembrastel
