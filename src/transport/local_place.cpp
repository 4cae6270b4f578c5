#include "transport/local_place.h"

#include "model/error.h"
#include "platform/files.h"
#include "platform/text.h"
#include "platform/uuid.h"
#include "transport/curl/curl_configuration.h"

#include <algorithm>
#include <cerrno>

namespace zembrastel {
namespace {

bool metLink(const std::filesystem::filesystem_error& error) { return error.code().value() == ELOOP; }

[[noreturn]] void refuseLink(std::string_view path) {
    throw SyncError("Refusing to follow a local symbolic link: " + std::string(path));
}

std::filesystem::path standardised(const std::string& localFolder) {
    auto folder = std::filesystem::path(localFolder).lexically_normal();
    return folder.has_filename() ? folder : folder.parent_path();
}

// The local folder itself; nullopt if it is missing.
std::optional<Folder> openRoot(const std::filesystem::path& root) {
    try {
        return Folder::open(root);
    } catch (const std::filesystem::filesystem_error& error) {
        if (metLink(error)) throw SyncError("The local folder has been replaced by a symbolic link.");
        if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
        throw;
    }
}

template <class Step>
LocalPlace resolveBy(const Step& step, const std::string& localFolder, std::string_view path) {
    const auto pieces = split(path, '/');
    if (!path.empty() && !std::all_of(pieces.begin(), pieces.end(), validName)) throw SyncError("Unsafe local path.");
    const auto root = standardised(localFolder);
    LocalPlace place{
        .url = path.empty() ? root : root / path,
        .path = std::string(path),
        .parent = openRoot(root),
        .name = path.empty() ? "." : std::string(pieces.back())};
    try {
        for (std::size_t i = 0; i + 1 < pieces.size() && place.parent; ++i) {
            place.parent = step(*place.parent, std::string(pieces[i]));
        }
    } catch (const std::filesystem::filesystem_error& error) {
        if (metLink(error)) refuseLink(path);
        throw;
    }
    (void)place.attributes(); // refuses a link at the end
    return place;
}

} // namespace

LocalPlace LocalPlace::resolve(const std::string& localFolder, std::string_view path) {
    return resolveBy(
        [](const Folder& folder, const std::string& piece) { return folder.enter(piece); }, localFolder, path);
}

LocalPlace LocalPlace::resolveMakingFolders(const std::string& localFolder, std::string_view path, mode_t mode) {
    auto place = resolveBy(
        [mode](const Folder& folder, const std::string& piece) {
            return std::optional(folder.enterOrMake(piece, mode));
        },
        localFolder, path);
    if (!place.parent) throwFileError("open", localFolder, ENOENT);
    return place;
}

std::optional<struct stat> LocalPlace::attributes() const {
    if (!parent) return std::nullopt;
    const auto item = parent->attributes(name);
    if (item && S_ISLNK(item->st_mode)) refuseLink(path);
    return item;
}

Fingerprint LocalPlace::fingerprint() const {
    const auto item = attributes();
    if (!item) throwFileError("stat", url, ENOENT);
    return Fingerprint::of(*parent, *item);
}

std::string temporaryName(std::string_view suffix) {
    return ".zembrastel-" + Uuid::random().text() + std::string(suffix);
}

} // namespace zembrastel
