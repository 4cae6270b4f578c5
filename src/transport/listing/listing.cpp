#include "model/error.h"
#include "platform/text.h"
#include "transport/ftp_transport.h"
#include "transport/listing/listing_parsers.h"
#include "transport/listing/remote_queries.h"

#include <utility>

namespace zembrastel {
namespace {

// The result of `ask`; nullopt if it fails with this code of curl, which means that there is no such item.
template <class Ask>
auto unlessAbsent(CurlCode absent, Ask ask) -> std::optional<decltype(ask())> {
    try {
        return ask();
    } catch (const TransferError& error) {
        if (error.code == absent) return std::nullopt;
        throw;
    }
}

// The path in a reply to PWD: 257 "/home/web" is the current directory. Nullopt for another line.
std::optional<std::string> reportedFolder(std::string_view reply) {
    constexpr std::string_view beginning = "257 \"";
    if (!reply.starts_with(beginning)) return std::nullopt;
    std::string path;
    for (reply.remove_prefix(beginning.size()); !reply.empty(); reply.remove_prefix(1)) {
        if (reply.front() == '"') {
            reply.remove_prefix(1);
            if (!reply.starts_with('"')) return path; // a doubled quote belongs to the path
        }
        path += reply.front();
    }
    return std::nullopt;
}

} // namespace

std::string childPath(std::string_view path, std::string_view name) {
    std::string child(path);
    if (!child.empty()) child += '/';
    return child.append(name);
}

void checkFolderDepth(int depth) {
    if (depth >= maxFolderLevels) throw SyncError("The remote folder is nested more than 128 levels deep.");
}

std::vector<RemoteEntry> FTPTransport::list(std::string_view path) const {
    std::vector<RemoteEntry> entries;
    FolderLister(*this).list(
        {std::string(path)}, [&](std::size_t, ListedEntries listed) { entries = resultOf(std::move(listed)); });
    return entries;
}

void FTPTransport::nameAsLocal(
    std::string_view path, std::vector<RemoteEntry>& entries, const std::vector<LocalItem>& local) const {
    for (const auto& [index, name] : alikeItems(entries, local)) {
        const auto localPath = childPath(path, name);
        const bool isSame = entries[index].directory ? listIfThere(localPath).has_value() : hasFile(localPath);
        if (isSame) entries[index].name = name;
    }
}

FTPTransport::FileFacts FTPTransport::facts(std::string_view path) const {
    return readFacts(resultOf(askAboutFiles(*this, {std::string(path)}).front()), path);
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
    return findContentLength(resultOf(askAboutFiles(*this, {std::string(path)}).front()));
}

std::optional<std::vector<RemoteEntry>> FTPTransport::listIfThere(std::string_view path) const {
    return unlessAbsent(CurlCode::noSuchFolder, [&] { return list(path); });
}

bool FTPTransport::hasFile(std::string_view path) const {
    return unlessAbsent(CurlCode::noSuchFile, [&] { return size(path); }).has_value();
}

void FTPTransport::createFolder() const { run("", true, {{"head"}, {"ftp-create-dirs"}}); }

std::string FTPTransport::loginFolder() const {
    FTPTransport atLogin = *this;
    atLogin.profile.remoteFolder.clear();
    const auto replies = atLogin.run("", true, {{"head"}, {"dump-header", "-"}});
    for (const auto line : split(replies, '\n')) {
        const auto path = reportedFolder(line);
        if (path && path->starts_with('/') && isValidUtf8(*path)) return *path;
    }
    return "/";
}

std::size_t FTPTransport::test() const { return list("").size(); }

} // namespace zembrastel
