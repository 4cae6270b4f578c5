// What must never be published although it may lie in a local folder: the state folder, a file with a password.
//
// Values; any thread. An item is recognised by device and inode, which are read again at each scan: a hard link is left
// out too, and so is the new file after an editor replaced the old one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace zembrastel {

struct PrivateItem {
    std::filesystem::path path; // links are followed
    std::string reason;         // "it holds a password"
};

// What the user reads: "Left out, because it holds a password: notes/ftp.txt"
[[nodiscard]] std::string leftOutText(std::string_view path, const PrivateItem& item);

// The private items that exist at one moment, to compare a local folder with. The list it was made from must outlive
// it.
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
