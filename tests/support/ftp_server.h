// An FTP server of a test's own on a loopback port: a real one, or a scripted one that is odd on request.
//
// The object owns the server and the folder it serves; both end with it, and the server also when this process dies.
// One thread at a time. Failures are thrown as std::runtime_error; what a launcher says of them is on stderr.
//
// The odd server is pyftpdlib, and stands for it where nothing odd is asked of it.
//
// Only proftpd as root, pureftpd and the odd server present the served folder as "/". The others show the machine's own
// root there, so every folder that a client is given must come from remoteFolder().
#pragma once

#include "model/profile.h"
#include "platform/descriptor.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel::testing {

// Both are in the range.
struct PassivePorts {
    std::uint16_t first;
    std::uint16_t last;
};

class FtpServer {
public:
    enum class Kind { proftpd, vsftpd, pureftpd, odd };
    enum class Tls { none, explicitTls, implicitTls };
    enum class TlsVersion { any, tls12, tls13 };

    struct Options {
        Tls tls = Tls::none;
        TlsVersion version = TlsVersion::any;  // a client that insists on another is refused
        std::filesystem::path certificate{};   // with its key; certificates().server when empty
        int rateKiB = 0;                       // KiB a second for one transfer; 0 is no limit
        std::optional<PassivePorts> passive{}; // for data connections; any when empty
        bool showHidden = true;                // LIST shows names with a leading dot; MLSD always does

        // For a real server configuration lines (pureftpd: switches), each in place of the default of its name; for the
        // odd one its arguments, which odd_ftp_server.py --help lists.
        std::vector<std::string> extra{};
        std::vector<std::string> environment{}; // "NAME=value"
    };

    // Returns once the server can be reached.
    explicit FtpServer(Kind which);
    FtpServer(Kind which, Options how);
    ~FtpServer();

    // The software, as part of a test's name.
    [[nodiscard]] static std::string name(Kind kind);

    // Why such a server cannot run here, for GTEST_SKIP; nothing when it can.
    [[nodiscard]] static std::optional<std::string> unavailable(Kind kind, Tls tls);

    // It stays the same from start to start, and is not given to others while the server is stopped.
    [[nodiscard]] std::uint16_t port() const { return portNumber; }

    // The served folder on disk. What is made here by other means than put() may need handOver().
    [[nodiscard]] const std::filesystem::path& root() const { return served; }

    [[nodiscard]] std::string username() const { return kind == Kind::vsftpd ? "anonymous" : "web"; }
    [[nodiscard]] std::string password() const { return "s3cret"; }
    [[nodiscard]] Tls tls() const { return options.tls; }

    // The absolute path, as the client sees it, of a folder below root(); "" is root() itself.
    [[nodiscard]] std::string remoteFolder(std::string_view below = "") const;

    // Puts a file below root(), with its missing folders, that the server may change.
    void put(const std::string& path, std::string_view bytes);

    // Lets the server change all that is below root().
    void handOver() const;

    // Ends the server and every session, transfers included. When it returns, none is left and connections are refused.
    void stop();

    // Stops the server when it runs, and starts it on the same port.
    void restart();

    // The process that holds all the server's processes below it, to be killed like a crashed one. Nothing when
    // stopped.
    [[nodiscard]] std::optional<pid_t> launcher() const;

private:
    [[nodiscard]] std::vector<std::string> command() const;
    void start();

    Kind kind;
    Options options;
    TemporaryFolder folder;
    std::filesystem::path served = folder / "root";
    Descriptor reservation; // holds the port between starts
    std::uint16_t portNumber;
    std::optional<Program> program;
    std::string loginFolder;
};

// A profile for this server: its host, port, protocol and user, with these folders. Nothing is switched on in it.
[[nodiscard]] Profile profileFor(
    const FtpServer& server, const std::filesystem::path& localFolder, const std::string& remoteFolder);

} // namespace zembrastel::testing
