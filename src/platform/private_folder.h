// A working folder of mode 0700 in the system's temporary folder, removed by the destructor.
//
// Items that are created through folder() are in this folder, even if another program replaces its path.
#pragma once

#include "platform/folder.h"

#include <filesystem>

namespace zembrastel {

class PrivateFolder {
public:
    // Creates "zembrastel-" and a new id. Throws std::filesystem::filesystem_error.
    PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    // Removes the folder with its contents. Items that cannot be removed stay.
    ~PrivateFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return opened.path(); }
    [[nodiscard]] const Folder& folder() const { return opened; }

private:
    Folder opened;
};

// Removes folders of killed runs of this user that are over an hour old, which is longer than any transfer may take.
// Folders that cannot be read or removed stay, without an error.
void removeStalePrivateFolders();

} // namespace zembrastel
