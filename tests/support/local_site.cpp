#include "support/local_site.h"

namespace zembrastel::testing {
namespace {

constexpr std::string_view backupFolder = ".zembrastel-backups/";

} // namespace

LocalSite::LocalSite(const FtpServer& server, const FileTree& files, const std::string& remote)
    : password(server.password()), local(folder / "site") {
    std::filesystem::create_directories(local);
    writeTree(local, files);
    profile = profileFor(server, local, server.remoteFolder(remote));
}

FTPTransport LocalSite::transport() const {
    return {.profile = profile, .password = password, .control = std::make_shared<TransferControl>()};
}

FileTree LocalSite::files() const { return withoutBackups(readTree(local)); }

FileTree LocalSite::backups() const {
    FileTree kept;
    for (auto& [path, content] : readTree(local)) {
        if (!path.starts_with(backupFolder)) continue;
        const auto afterId = path.find('/', backupFolder.size());
        kept.emplace(path.substr(afterId + 1), content);
    }
    return kept;
}

} // namespace zembrastel::testing
