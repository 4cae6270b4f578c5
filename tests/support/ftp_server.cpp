#include "support/ftp_server.h"

#include "support/certificates.h"
#include "support/file_tree.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace zembrastel::testing {

namespace {

constexpr uid_t pureFtpdUser = 65534; // pureftpd always serves as this one
constexpr std::chrono::seconds limit{20};

TransferProtocol protocol(FtpServer::Tls tls) {
    switch (tls) {
    case FtpServer::Tls::none:
        return TransferProtocol::ftp;
    case FtpServer::Tls::explicitTls:
        return TransferProtocol::ftps;
    case FtpServer::Tls::implicitTls:
        return TransferProtocol::implicitTLS;
    }
    throw std::invalid_argument("kind of TLS");
}

void check(bool succeeded, const char* what) {
    if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

struct LoopbackAddress {
    sockaddr_in address{};
    socklen_t size = sizeof address;

    LoopbackAddress() {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }

    sockaddr* generic() { return reinterpret_cast<sockaddr*>(&address); }
};

// A socket bound to a free port but not listening: the port refuses connections, the kernel does not give it to a
// program that asks for any, and a server that asks for this very one with SO_REUSEADDR may listen on it.
Descriptor reservePort() {
    Descriptor reservation(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    check(bool(reservation), "socket");
    const int yes = 1;
    check(setsockopt(reservation.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0, "SO_REUSEADDR");
    LoopbackAddress anyPort;
    check(bind(reservation.get(), anyPort.generic(), anyPort.size) == 0, "bind");
    return reservation;
}

std::uint16_t portOf(const Descriptor& socket) {
    LoopbackAddress bound;
    check(getsockname(socket.get(), bound.generic(), &bound.size) == 0, "getsockname");
    return ntohs(bound.address.sin_port);
}

void giveTo(uid_t user, const fs::path& path) { check(lchown(path.c_str(), user, user) == 0, "lchown"); }

// Whatever the server's own settings are, OpenSSL then offers no other version: vsftpd and pure-ftpd have no setting.
void writeOpenSslSettings(const fs::path& file, FtpServer::TlsVersion version) {
    const std::string name = version == FtpServer::TlsVersion::tls12 ? "TLSv1.2" : "TLSv1.3";
    writeFile(
        file, "openssl_conf = all\n[all]\nssl_conf = ssl\n[ssl]\nsystem_default = default\n[default]\nMinProtocol = "
                  + name + "\nMaxProtocol = " + name + "\n");
}

} // namespace

FtpServer::FtpServer(Kind which) : FtpServer(which, Options{}) {}

FtpServer::FtpServer(Kind which, Options how)
    : kind(which), options(std::move(how)), reservation(reservePort()), portNumber(portOf(reservation)) {
    fs::create_directory(served);
    if (options.version != TlsVersion::any) {
        writeOpenSslSettings(folder / "openssl", options.version);
        options.environment.push_back("OPENSSL_CONF=" + (folder / "openssl").string());
    }
    if (kind == Kind::pureftpd) fs::permissions(folder.path(), fs::perms(0711)); // another user serves it
    start();
}

FtpServer::~FtpServer() { stop(); }

std::string FtpServer::name(Kind kind) {
    switch (kind) {
    case Kind::proftpd:
        return "proftpd";
    case Kind::vsftpd:
        return "vsftpd";
    case Kind::pureftpd:
        return "pureftpd";
    case Kind::odd:
        return "pyftpdlib";
    }
    throw std::invalid_argument("kind of server");
}

std::optional<std::string> FtpServer::unavailable(Kind kind, Tls tls) {
    if (kind == Kind::pureftpd && geteuid() != 0) return "pureftpd can be started by root only";
    if (kind == Kind::pureftpd && tls == Tls::implicitTls) return "pureftpd has no implicit TLS";
    return std::nullopt;
}

std::string FtpServer::remoteFolder(std::string_view below) const {
    if (below.empty()) return loginFolder;
    return loginFolder + (loginFolder.ends_with('/') ? "" : "/") + std::string(below);
}

void FtpServer::put(const std::string& path, std::string_view bytes) {
    writeFile(served / path, bytes);
    handOver();
}

void FtpServer::handOver() const {
    if (kind != Kind::pureftpd) return;
    giveTo(pureFtpdUser, served);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(served))
        giveTo(pureFtpdUser, entry.path());
}

std::vector<std::string> FtpServer::command() const {
    const bool odd = kind == Kind::odd;
    std::vector<std::string> words{"/usr/bin/python3"};
    const auto add = [&](auto... more) { (words.emplace_back(more), ...); };
    add(std::string(ZEMBRASTEL_SOURCE_DIR "/tests/support/") + (odd ? "odd_ftp_server.py" : "ftp_server.py"));
    if (!odd) add(name(kind), "--servers", ZEMBRASTEL_SERVERS_DIR);
    add(served.string(), "--port", std::to_string(portNumber));
    if (options.tls != Tls::none) {
        const fs::path& certificate = options.certificate.empty() ? certificates().server : options.certificate;
        add("--tls", options.tls == Tls::explicitTls ? "explicit" : "implicit", "--cert", certificate.string());
    }
    if (options.passive)
        add("--passive", std::to_string(options.passive->first), std::to_string(options.passive->last));
    if (options.rateKiB > 0) add("--rate", std::to_string(odd ? options.rateKiB * 1024 : options.rateKiB));
    if (odd && !options.showHidden) add("--hide=.*");
    if (!odd && options.showHidden) add("--show-hidden");
    for (const std::string& extra : options.extra) add(odd ? extra : "--set=" + extra);
    return words;
}

void FtpServer::start() {
    program.emplace(command(), options.environment);
    if (program->readLine(limit) != std::to_string(portNumber))
        throw std::runtime_error("the launcher took another port");
    loginFolder = program->readLine(limit);
}

void FtpServer::stop() {
    if (!program) return;
    std::string rest;
    program->closeInput();
    if (program->readToEnd(rest, limit)) program->wait();
    program.reset(); // killed if it did not end by itself
}

void FtpServer::restart() {
    stop();
    start();
}

std::optional<pid_t> FtpServer::launcher() const {
    if (!program) return std::nullopt;
    return program->pid();
}

Profile profileFor(const FtpServer& server, const fs::path& localFolder, const std::string& remoteFolder) {
    Profile profile;
    profile.name = "Test";
    profile.host = "localhost";
    profile.port = server.port();
    profile.transport = protocol(server.tls());
    profile.username = server.username();
    profile.remoteFolder = remoteFolder;
    profile.localFolder = localFolder;
    return profile;
}

} // namespace zembrastel::testing
