// An open folder, and what can be done with the items in it, never through a symbolic link.
//
// Everything is relative to the held descriptor, so a folder that is renamed or swapped for a link meanwhile cannot
// lead an operation astray. Names are single components. Any thread. Failures are thrown as
// std::filesystem::filesystem_error; one that met a symbolic link has the code ELOOP.
#pragma once

#include "platform/descriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace zembrastel {

// What the system calls the mounted file system that something is on: no longer the same once that was unmounted and
// mounted again. On a kernel before 6.8 it may be the same again for the same disk.
struct Mount {
    std::uint64_t mount = 0;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;

    friend bool operator==(const Mount&, const Mount&) = default;
};

class Folder {
public:
    // Opens the folder at an absolute path of which no component is a link.
    [[nodiscard]] static Folder open(const std::filesystem::path& path);

    // Opens the folder that the path leads to, links followed: for a place that the user or the system chose, once.
    [[nodiscard]] static Folder openThroughLinks(const std::filesystem::path& path);

    // The folder of that name in this one; nothing when there is no item of that name, or one that is no folder.
    [[nodiscard]] std::optional<Folder> enter(const std::string& name) const;

    // The same, made first with this mode, less the umask, when it is missing; an item of another kind is an error.
    [[nodiscard]] Folder enterOrMake(const std::string& name, mode_t mode = 0777) const;

    // Of the item itself; nothing when there is none.
    [[nodiscard]] std::optional<struct stat> attributes(const std::string& name) const;

    [[nodiscard]] Descriptor openForReading(const std::string& name) const;

    // Makes a new file, for reading and writing; one that exists is an error.
    [[nodiscard]] Descriptor create(const std::string& name, mode_t mode) const;

    // Gives a file the further, or only, name `newName`. False, with nothing changed, when an item of that name exists.
    // Where the file system has neither hard links nor a rename that refuses to replace, an empty file takes the name
    // for a moment. One that a kill leaves there is dated 1970, so that every copy on a server counts as newer.
    [[nodiscard]] bool install(const std::string& name, const std::string& newName) const;

    // Swaps two files in one step. False, with nothing done, where the file system cannot.
    [[nodiscard]] bool exchange(const std::string& name, const std::string& other) const;

    // Moves the file over what the name in the target folder stands for.
    void replace(const std::string& name, const Folder& target, const std::string& newName) const;

    // Of the folder itself.
    [[nodiscard]] Mount mount() const;

    // Removes the file if it is there.
    void remove(const std::string& name) const noexcept;

    // Removes the folder of that name if it is there and empty.
    void removeFolder(const std::string& name) const noexcept;

    [[nodiscard]] int descriptor() const { return opened.get(); }

    // Where the folder was when it was opened, for messages.
    [[nodiscard]] const std::filesystem::path& path() const { return place; }

private:
    [[nodiscard]] bool installOverPlaceholder(const std::string& name, const std::string& newName) const;

    Folder(Descriptor held, std::filesystem::path where) : opened(std::move(held)), place(std::move(where)) {}

    Descriptor opened;
    std::filesystem::path place;
};

} // namespace zembrastel
