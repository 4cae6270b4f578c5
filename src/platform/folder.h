// An open folder and operations on its items, never through a symbolic link.
//
// All operations are relative to the held descriptor, so renaming the folder, or swapping it for a link, cannot
// redirect them. Names are single path components. Any thread. Failures are thrown as
// std::filesystem::filesystem_error, with the code ELOOP for a symbolic link.
#pragma once

#include "platform/descriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace zembrastel {

// The identity of a mounted file system. It changes when the file system is unmounted and mounted again; before Linux
// 6.8 the same disk may get the same identity again.
struct Mount {
    std::uint64_t mount = 0;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    friend bool operator==(const Mount&, const Mount&) = default;
};

class Folder {
public:
    // Opens the folder at an absolute path that contains no link.
    [[nodiscard]] static Folder open(const std::filesystem::path& path);

    // Opens the folder at a path and follows links: for a place that the user or the system chose.
    [[nodiscard]] static Folder openThroughLinks(const std::filesystem::path& path);

    // The sub-folder of that name; nullopt if there is none, or if the item is no folder.
    [[nodiscard]] std::optional<Folder> enter(const std::string& name) const;

    // The same, but creates a missing folder with this mode, less the umask. An item of another kind is an error.
    [[nodiscard]] Folder enterOrMake(const std::string& name, mode_t mode = 0777) const;

    // Those of the item itself, not of a link's target; nullopt if there is none.
    [[nodiscard]] std::optional<struct stat> attributes(const std::string& name) const;

    [[nodiscard]] Descriptor openForReading(const std::string& name) const;

    // Creates a file for reading and writing. An existing one is an error.
    [[nodiscard]] Descriptor create(const std::string& name, mode_t mode) const;

    // Gives a file the additional, or only, name `newName`. False, with nothing changed, if an item of that name
    // exists. If the file system has neither hard links nor a rename that refuses to replace, an empty file has the
    // name for a moment. If a kill leaves it there, its date is 1970, so every copy on a server counts as newer.
    [[nodiscard]] bool install(const std::string& name, const std::string& newName) const;

    // Swaps two files in one step. False, with nothing done, if the file system cannot.
    [[nodiscard]] bool exchange(const std::string& name, const std::string& other) const;

    // Renames the file over the item of that name in the target folder.
    void replace(const std::string& name, const Folder& target, const std::string& newName) const;

    // That of the folder itself.
    [[nodiscard]] Mount mount() const;

    // Removes the file if it exists.
    void remove(const std::string& name) const noexcept;

    // Removes the sub-folder if it exists and is empty.
    void removeFolder(const std::string& name) const noexcept;

    [[nodiscard]] int descriptor() const { return opened.get(); }

    // The folder's path when it was opened, for messages.
    [[nodiscard]] const std::filesystem::path& path() const { return place; }

private:
    [[nodiscard]] bool installOverPlaceholder(const std::string& name, const std::string& newName) const;

    Folder(Descriptor held, std::filesystem::path where) : opened(std::move(held)), place(std::move(where)) {}

    Descriptor opened;
    std::filesystem::path place;
};

} // namespace zembrastel
