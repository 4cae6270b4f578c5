// A working folder in the system's temporary folder, for its owner alone, gone with the object.
//
// What is made in it through folder() is in the folder that was made, whatever another program puts in its place.
#pragma once

#include "platform/folder.h"

#include <filesystem>

namespace zembrastel {

class PrivateFolder {
public:
    // Makes "zembrastel-" and a fresh id with mode 0700. Throws std::filesystem::filesystem_error.
    PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    // Removes the folder with all it holds; what cannot be removed stays.
    ~PrivateFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return opened.path(); }
    [[nodiscard]] const Folder& folder() const { return opened; }

private:
    Folder opened;
};

// Removes the folders that runs of this user left behind when they were killed: those over an hour old, which is
// longer than any transfer may take. What cannot be read or removed stays, without an error.
void removeStalePrivateFolders();

} // namespace zembrastel
