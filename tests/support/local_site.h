// A local folder with a profile and a transport for one server: what most tests of transfers begin with.
#pragma once

#include "model/error.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/temporary_folder.h"
#include "transport/ftp_transport.h"
#include "transport/publish/publishing.h"

#include <filesystem>
#include <memory>
#include <string>

namespace zembrastel::testing {

class LocalSite {
public:
    // The local folder `site` is there, with these files. The remote folder is `remote` below the served one.
    explicit LocalSite(const FtpServer& server, const FileTree& files = {}, const std::string& remote = "site");

    [[nodiscard]] const std::filesystem::path& root() const { return local; }
    [[nodiscard]] std::filesystem::path operator/(const std::string& path) const { return local / path; }
    [[nodiscard]] Fingerprint fingerprint(const std::string& path) const { return Fingerprint::read(local / path); }

    // A transport with the profile as it is now, and a fresh control.
    [[nodiscard]] FTPTransport transport() const;

    // The file in its present version, to be published whatever is on the server.
    [[nodiscard]] FileToPublish toPublish(const std::string& path) const {
        return {.path = path, .fingerprint = fingerprint(path)};
    }

    // The files below the local folder, without the backups; the backups alone, by path below their own folder.
    [[nodiscard]] FileTree files() const;
    [[nodiscard]] FileTree backups() const;

    Profile profile;
    std::string password;

private:
    TemporaryFolder folder;
    std::filesystem::path local;
};

// The message of the SyncError that `attempt` ends with; what else it throws is passed on. "" when it ends well.
template <class Attempt>
[[nodiscard]] std::string failureOf(Attempt attempt) {
    try {
        (void)attempt();
    } catch (const SyncError& error) {
        return error.what();
    }
    return "";
}

} // namespace zembrastel::testing
