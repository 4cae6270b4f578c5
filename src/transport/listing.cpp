#include "model/error.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/listing_parsers.h"

namespace zembrastel {
namespace {

constexpr const char* noSuchFolder = "curl: (9)";
constexpr const char* noSuchFile = "curl: (78)";

// What `ask` returns; nothing when it fails with the words of curl that say that there is no such item.
template <class Ask>
auto unlessAbsent(const char* words, Ask ask) -> std::optional<decltype(ask())> {
    try {
        return ask();
    } catch (const SyncError& error) {
        if (std::string_view(error.what()).starts_with(words)) return std::nullopt;
        throw;
    }
}

// The text of the whole listing. A connection that was lost is not always an error: some servers report success.
std::string wholeListing(
    const FTPTransport& transport, std::string_view path, const std::vector<TransferOption>& options) {
    for (const bool last : {false, true}) {
        std::string text = transport.run(path, true, options);
        if (!isCutShort(text)) return text;
        if (last) break;
    }
    const std::string folder = path.empty() ? "the remote folder" : std::string(path);
    throw SyncError("The server sent only a part of the directory listing of " + folder + ". None of it is used.");
}

// Nothing when the server has no MLSD, or one that cannot be read. Throws Cancelled alone.
std::optional<std::vector<RemoteEntry>> listMLSD(const FTPTransport& transport, std::string_view path) {
    try {
        const std::string text = wholeListing(transport, path, {{"request", "MLSD"}});
        if (isValidUtf8(text)) return parseMLSD(text);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        // LIST is asked next; what it says is the failure to report.
        transport.traits->learnFromFailedMLSD(error.what());
    }
    transport.control->check();
    return std::nullopt;
}

std::vector<RemoteEntry> listLIST(const FTPTransport& transport, std::string_view path) {
    const std::string text = wholeListing(transport, path, {});
    if (!isValidUtf8(text)) throw SyncError("The server's filenames are not UTF-8.");
    return parseLIST(text);
}

} // namespace

std::string childPath(std::string_view path, std::string_view name) {
    std::string child(path);
    if (!child.empty()) child += '/';
    return child.append(name);
}

void checkFolderDepth(int depth) {
    if (depth >= mostFolderLevels) throw SyncError("The remote folder is nested more than 128 levels deep.");
}

std::vector<RemoteEntry> FTPTransport::list(std::string_view path) const {
    auto entries = listMLSD(*this, path);
    if (!entries) {
        entries = listLIST(*this, path);
        keepShown(*entries, *entries);
        return std::move(*entries);
    }
    try {
        keepShown(*entries, listLIST(*this, path));
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        // MLSD alone is enough where LIST cannot confirm it.
        keepShown(*entries, *entries);
    }
    return std::move(*entries);
}

std::vector<RemoteEntry> FTPTransport::list(std::string_view path, const std::vector<LocalItem>& local) const {
    auto entries = list(path);
    for (const auto& [index, name] : alikeItems(entries, local)) {
        const auto localPath = childPath(path, name);
        const bool isSame = entries[index].directory ? listIfThere(localPath).has_value() : hasFile(localPath);
        if (isSame) entries[index].name = name;
    }
    return entries;
}

FTPTransport::FileFacts FTPTransport::facts(std::string_view path) const {
    const std::string text = run(path, false, {{"head"}});
    if (const auto value = isValidUtf8(text) ? findLastModified(text) : std::nullopt) {
        if (const auto date = parseHttpDate(*value)) {
            return {.modified = toRemoteDate(*date), .size = findContentLength(text)};
        }
        throw SyncError("The server returned an unreadable modification date for " + std::string(path) + ".");
    }
    throw SyncError(
        "The server did not provide a modification date for " + std::string(path)
        + ". Uploads remain paused until you choose how to proceed.");
}

std::optional<ServerVersion> FTPTransport::findVersion(std::string_view path) const {
    try {
        const auto [modified, size] = facts(path);
        return ServerVersion{.modified = modified, .size = size};
    } catch (const SyncError&) {
        return std::nullopt;
    }
}

RemoteDate FTPTransport::modificationDate(std::string_view path) const { return facts(path).modified; }

std::optional<std::uint64_t> FTPTransport::size(std::string_view path) const {
    return findContentLength(run(path, false, {{"head"}}));
}

std::optional<std::vector<RemoteEntry>> FTPTransport::listIfThere(std::string_view path) const {
    return unlessAbsent(noSuchFolder, [&] { return list(path); });
}

bool FTPTransport::hasFile(std::string_view path) const {
    return unlessAbsent(noSuchFile, [&] { return run(path, false, {{"head"}}); }).has_value();
}

std::size_t FTPTransport::test() const { return list("").size(); }

} // namespace zembrastel
