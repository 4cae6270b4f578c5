// Awkward and hostile names, users, passwords and folders against the real curl: what it sends to a server and what it
// takes from its configuration is what was given, and nothing that was given becomes a command or an option.
#include "platform/text.h"
#include "support/file_tree.h"
#include "support/local_site.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "torture/seeded_run.h"
#include "transport/ftp_transport.h"
#include "transport/remote_url.h"

#include <arpa/inet.h>
#include <array>
#include <condition_variable>
#include <cstdio>
#include <poll.h>
#include <random>
#include <set>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace zembrastel::testing {
namespace {

// A listening socket on a free loopback port.
struct Listener {
    Descriptor socket{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::uint16_t port = 0;

    Listener() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        require(
            ::bind(socket.get(), any, size) == 0 && ::listen(socket.get(), 8) == 0
                && ::getsockname(socket.get(), any, &size) == 0,
            "cannot listen");
        port = ntohs(address.sin_port);
    }

    [[nodiscard]] Descriptor accept() const {
        return Descriptor(::accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }
};

// An FTP server that takes everything and keeps nothing but the lines that it was sent, byte for byte.
class RecordingServer {
public:
    RecordingServer() = default;
    RecordingServer(const RecordingServer&) = delete;
    RecordingServer& operator=(const RecordingServer&) = delete;
    ~RecordingServer() {
        ::shutdown(control.socket.get(), SHUT_RDWR); // ends accept()
        thread.join();
    }

    [[nodiscard]] std::uint16_t port() const { return control.port; }

    // The lines of all sessions since the last call. Waits for a session that is not yet over.
    std::vector<std::string> take() {
        std::unique_lock held(lock);
        ended.wait(held, [this] { return !inSession; });
        return std::exchange(lines, {});
    }

private:
    void serve() {
        while (const Descriptor session = control.accept()) {
            setInSession(true);
            converse(session);
            setInSession(false);
        }
    }

    void setInSession(bool value) {
        const std::lock_guard held(lock);
        inSession = value;
        ended.notify_all();
    }

    void converse(const Descriptor& session) {
        const auto say = [&](const std::string& reply) {
            const std::string text = reply + "\r\n";
            return ::send(session.get(), text.data(), text.size(), MSG_NOSIGNAL) > 0;
        };
        say("220 at your service");
        std::string pending;
        std::array<char, 4096> buffer{};
        for (ssize_t size = 0; (size = ::recv(session.get(), buffer.data(), buffer.size(), 0)) > 0;) {
            pending.append(buffer.data(), static_cast<std::size_t>(size));
            for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
                std::string line = pending.substr(0, end);
                pending.erase(0, end + 1);
                if (line.ends_with('\r')) line.pop_back();
                record(line);
                if (line.starts_with("STOR ")) {
                    say("150 go on");
                    swallowData();
                }
                if (line == "MLSD") (void)data.accept(); // refused below, but curl has connected already
                say(replyTo(line.substr(0, line.find(' '))));
            }
        }
        if (!pending.empty()) record(pending);
    }

    void record(const std::string& line) {
        const std::lock_guard held(lock);
        lines.push_back(line);
    }

    [[nodiscard]] std::string replyTo(const std::string& command) const {
        if (command == "USER") return "331 and the password";
        if (command == "PWD") return "257 \"/\"";
        if (command == "EPSV") return "229 there (|||" + std::to_string(data.port) + "|)";
        if (command == "RNFR") return "350 and then";
        if (command == "MLSD") return "502 not here";
        return command == "STOR" ? "226 stored" : "250 done";
    }

    void swallowData() const {
        const Descriptor connection = data.accept();
        std::array<char, 4096> buffer{};
        while (::recv(connection.get(), buffer.data(), buffer.size(), 0) > 0) {
        }
    }

    Listener control;
    Listener data;
    std::mutex lock;
    std::condition_variable ended;
    bool inSession = false;
    std::vector<std::string> lines;
    std::thread thread{[this] { serve(); }};
};

class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine(seed) {}

    // From 0 to one below `end`.
    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine); }

    // A text of these pieces.
    std::string text(const std::vector<std::string>& pieces, std::size_t most) {
        std::string made;
        for (std::size_t count = 1 + below(most); count != 0; --count) made += pieces[below(pieces.size())];
        return made;
    }

private:
    std::mt19937_64 engine;
};

// What has a meaning to curl, to a server, in a URL or in a shell, and plain text between.
const std::vector<std::string> awkward{
    "a",    "B",      "7",   " ",       "  ",     "\"",         "\\",     "\\\\",   "\\n",
    "\\\"", "'",      "`",   "$(x)",    "#",      "# ",         "?",      "%",      "%0d%0a",
    "%00",  "%2F",    ";",   ";type=a", "@",      "&",          "=",      " = ",    "*",
    "-",    "--next", "-k ", "+",       "{a,b}",  "[1-3]",      "|",      ">",      "~",
    "..",   "...",    "é",   "\u65e5",  "\u202e", "\U0001F600", "DELE x", "url = ", "\"upload-file = \"",
    "!",    "^"};
const std::vector<std::string> controls{"\t", "\x01", "\x1b[0m", "\x7f", "a", "\""};
const std::vector<std::string> lineBreaks{"\r\n", "\n", "\r", "\v", "\f", "\u0085", "\u2028", std::string(1, '\0')};

struct Counts {
    int sent = 0;
    int refusedByCurl = 0;
    int refusedBefore = 0;
    int filenames = 0;
};

// One upload: everything that was chosen by somebody else.
struct Case {
    std::string user, password, remoteFolder, folder, name;

    [[nodiscard]] std::string shown() const {
        return printable(
            "user <" + user + "> password <" + password + "> remote folder <" + remoteFolder + "> file <" + folder + "/"
            + name + ">");
    }
};

Case randomCase(Dice& dice) {
    constexpr std::size_t longest = 8;
    auto pieces = awkward;
    pieces.insert(pieces.end(), controls.begin(), controls.end());
    // curl itself takes no control character in a folder: that is tried in some of the rounds.
    const auto& inFolders = dice.below(8) == 0 ? pieces : awkward;
    const auto component = [&](const std::vector<std::string>& from) {
        std::string made;
        while (!validName(made)) made = dice.text(from, longest);
        return made;
    };
    const std::string root = dice.below(2) == 0 ? "/" : "";
    return {
        dice.text(pieces, longest), dice.text(pieces, longest),
        root + component(inFolders) + "/" + component(inFolders), component(inFolders), component(pieces)};
}

// What the server is sent for one case, each line once, without the commands that no choice goes into.
std::set<std::string> expectedLines(const Case& about, const std::string& temporary) {
    std::set<std::string> lines{"USER " + about.user, "PASS " + about.password};
    if (about.remoteFolder.starts_with('/')) lines.emplace("CWD /");
    const std::string folders = about.remoteFolder + "/" + about.folder;
    for (const auto piece : splitNonEmpty(folders, '/')) {
        lines.insert("CWD " + std::string(piece));
    }
    for (const auto& file : {temporary, about.name}) lines.insert({"MDTM " + file, "SIZE " + file});
    lines.insert({"STOR " + temporary, "RNFR " + temporary, "RNTO " + about.name});
    return lines;
}

std::string shown(const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& line : lines) text += "\n  " + printable(line) + "$";
    return text;
}

void upload(const Case& about, RecordingServer& server, bool hostile, Counts& counts) {
    const TemporaryFolder folder;
    Profile profile;
    profile.name = "site";
    profile.host = "127.0.0.1";
    profile.port = server.port();
    profile.transport = TransferProtocol::ftp;
    profile.username = about.user;
    profile.remoteFolder = about.remoteFolder;
    profile.localFolder = folder.path();
    const std::string path = about.folder + "/" + about.name;
    Fingerprint fingerprint;
    if (path.find('\0') == std::string::npos) {
        writeFile(folder / path, "content");
        fingerprint = Fingerprint::read(folder / path);
    }
    const FTPTransport transport{profile, about.password, std::make_shared<TransferControl>()};
    const std::string failure = failureOf([&] {
        transport.upload(path, fingerprint);
        return 0;
    });
    auto lines = server.take();
    const auto fixed = std::set<std::string>{"PWD", "OPTS UTF8 ON", "EPSV", "TYPE A", "TYPE I", "MLSD", "QUIT"};
    std::erase_if(lines, [&](const auto& line) { return fixed.contains(line); });
    if (hostile) {
        require(!failure.empty() && lines.empty(), "a line break got through: " + about.shown());
        ++counts.refusedBefore;
    } else if (!failure.empty()) {
        // curl itself takes no control character in a folder, and says so once it has logged in.
        require(failure.starts_with("curl: ("), failure + ": " + about.shown());
        const auto query = std::ranges::find_if(lines, [](const auto& line) { return line.starts_with("MDTM ."); });
        const auto given = expectedLines(about, query == lines.end() ? "" : query->substr(5));
        const auto isHarmless = [&given](const std::string& line) {
            const auto command = line.substr(0, 5);
            return given.contains(line) && command != "STOR " && command != "RNFR " && command != "RNTO ";
        };
        require(std::ranges::all_of(lines, isHarmless), "curl stopped half-way: " + about.shown() + shown(lines));
        ++counts.refusedByCurl;
    } else {
        const auto stored = std::ranges::find_if(lines, [](const auto& line) { return line.starts_with("STOR "); });
        const std::string temporary = stored == lines.end() ? "" : stored->substr(5);
        require(
            temporary.find_first_not_of(".-abcdefghijklmnopqrstuvwxyzABCDEF0123456789") == std::string::npos,
            "odd temporary name");
        const auto expected = expectedLines(about, temporary);
        require(
            std::set<std::string>(lines.begin(), lines.end()) == expected,
            "the server was sent something else: " + about.shown() + "\nsent:" + shown(lines)
                + "\ngiven:" + shown({expected.begin(), expected.end()}));
        ++counts.sent;
    }
}

// curl copies a file to each of many names, all in one run.
void readBack(Dice& dice, Counts& counts) {
    constexpr std::size_t namesEach = 50;
    constexpr std::size_t longest = 24;
    auto pieces = awkward;
    pieces.insert(pieces.end(), controls.begin(), controls.end());
    pieces.insert(pieces.end(), {"\r", "\n", "\r\n", "\v", "\f", "\xFF", "\xC3"});
    const TemporaryFolder folder;
    writeFile(folder / "source", "x");
    std::filesystem::create_directory(folder / "made");
    FileTree expected;
    std::string configuration = "silent\ngloboff\n";
    while (expected.size() < namesEach) {
        const auto name = dice.text(pieces, longest);
        if (name == "." || name == ".." || name.find('/') != std::string::npos || !expected.emplace(name, "x").second)
            continue;
        configuration += "url = " + quote("file://" + (folder / "source").string()) + '\n';
        configuration += "output = " + quote((folder / "made" / name).string()) + '\n';
    }
    writeFile(folder / "configuration", configuration);
    const auto run = runProgram({"/usr/bin/curl", "--disable", "--config", folder / "configuration"});
    require(run.status == 0, "curl failed at a quoted value");
    require(readTree(folder / "made") == expected, "curl read something else than what was quoted");
    counts.filenames += static_cast<int>(namesEach);
}

void round(std::uint64_t seed, RecordingServer& server, Counts& counts) {
    Dice dice(seed);
    auto about = randomCase(dice);
    const bool hostile = dice.below(4) == 0;
    if (hostile) {
        auto& field =
            *std::array{&about.user, &about.password, &about.remoteFolder, &about.folder, &about.name}[dice.below(5)];
        field.insert(dice.below(field.size() + 1), lineBreaks[dice.below(lineBreaks.size())] + "DELE x");
    } else {
        std::erase(about.user, ':');
    }
    upload(about, server, hostile, counts);
    if (seed % 10 == 0) readBack(dice, counts);
}

int run(int count, char** arguments) {
    SeededRun torture("Hostile names against the real curl");
    std::uint64_t rounds = 1000;
    torture.options.add_option("--rounds", rounds, "how many uploads, each with the next seed");
    return torture.run(count, arguments, [&rounds](std::uint64_t seed) {
        RecordingServer server;
        Counts counts;
        for (const std::uint64_t end = seed + rounds; seed != end; ++seed) {
            try {
                round(seed, server, counts);
            } catch (const std::exception& error) {
                throw std::runtime_error("again with --seed " + std::to_string(seed) + " --rounds 1: " + error.what());
            }
        }
        std::printf(
            "command injection: %d uploads sent as given, %d refused by curl and %d before curl, %d names read back\n",
            counts.sent, counts.refusedByCurl, counts.refusedBefore, counts.filenames);
    });
}

} // namespace
} // namespace zembrastel::testing

int main(int count, char** arguments) { return zembrastel::testing::run(count, arguments); }
