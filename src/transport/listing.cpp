#include "model/error.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/listing_parsers.h"

namespace zembrastel {
namespace {

// Nothing when the server has no MLSD, or one that cannot be read. Throws Cancelled alone.
std::optional<std::vector<RemoteEntry>> listMLSD(const FTPTransport& transport, std::string_view path) {
    try {
        const std::string text = transport.run(path, true, {{"request", "MLSD"}});
        if (isValidUtf8(text)) return parseMLSD(text);
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        // LIST is asked next; what it says is the failure to report.
    }
    transport.control->check();
    return std::nullopt;
}

std::vector<RemoteEntry> listLIST(const FTPTransport& transport, std::string_view path) {
    const std::string text = transport.run(path, true, {});
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
    if (!entries) return listLIST(*this, path);
    try {
        keepShown(*entries, listLIST(*this, path));
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        // MLSD alone is enough where LIST cannot confirm it.
    }
    return std::move(*entries);
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

std::size_t FTPTransport::test() const { return list("").size(); }

} // namespace zembrastel
