// An editor writes, renames, deletes and swaps local files while the program installs server files, and backups that
// are restored, in their places. Every content that ever stood in a local file, and that the editor itself has not
// written over or deleted, must be in a file or in a backup afterwards.
//
// Every content is unique, and the editor learns what it supersedes: it reads a file before it writes into it, and
// where an editor would rename over a file it exchanges the two and looks at what came out. It acts at random times, or
// right after one of the program's own steps in the folder, when the races are. A seed that is given again repeats
// every choice and delay, if not the threads' own timing.
#include "platform/files.h"
#include "platform/uuid.h"
#include "support/local_site.h"
#include "torture/torture.h"
#include "transport/download/backups.h"
#include "transport/download/local_replacement.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <random>
#include <set>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

const std::array<std::string, 3> paths{"page", "other", "sub/deep"};

// The program's fourth step is to settle what it fetched; next it puts that in its place.
constexpr std::size_t readyToInstall = 4;

using Random = std::mt19937_64;

std::size_t below(Random& random, std::size_t end) { return random() % end; }

// Differs from all others, and often has the length of others.
std::string uniqueContent(const std::string& what, Random& random) {
    constexpr std::array<std::size_t, 4> sizes{64, 64, 5000, 300'000};
    std::string content = what + " " + std::to_string(random()) + "\n";
    content.resize(std::max(content.size(), sizes[below(random, sizes.size())]), '.');
    return content;
}

// What the program does in the local folder, as it happens.
class Steps {
public:
    explicit Steps(const fs::path& root) : events(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        for (const auto& folder : {root, root / "sub"}) {
            constexpr auto mask = IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
            if (::inotify_add_watch(events.get(), folder.c_str(), mask) < 0) throw std::runtime_error("no inotify");
        }
    }

    // Waits for so many steps of the program. False when it is stopped first.
    bool wait(std::size_t count, const std::stop_token& stop) {
        while (taken() < count) {
            if (stop.stop_requested()) return false;
            pollfd ready{.fd = events.get(), .events = POLLIN, .revents = 0};
            if (seen == 0) ::poll(&ready, 1, 1); // once it has begun there is no time to lose
        }
        return true;
    }

    std::size_t taken() {
        alignas(inotify_event) std::array<char, 4096> bytes{};
        const ssize_t size = ::read(events.get(), bytes.data(), bytes.size());
        for (ssize_t offset = 0; offset < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes.data() + offset);
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if (event->len > 0 && std::string_view(event->name).starts_with(".zembrastel-")) ++seen;
        }
        return seen;
    }

private:
    Descriptor events;
    std::size_t seen = 0;
};

class Editor {
public:
    Editor(const fs::path& site, std::uint64_t seed) : root(site), random(seed), steps(site) {}

    void work(const std::stop_token& stop) {
        for (std::size_t left = 1 + below(random, 4); left > 0 && !stop.stop_requested(); --left) {
            if (below(random, 4) == 0) {
                pause(below(random, 20'000));
            } else if (!steps.wait(below(random, 2) == 0 ? readyToInstall : below(random, 9), stop)) {
                return;
            }
            if (below(random, 2) == 0) pause(below(random, 300));
            act(stop);
        }
    }

    std::set<std::string> put;
    std::set<std::string> superseded;
    std::size_t actions = 0;

private:
    void act(const std::stop_token& stop) {
        ++actions;
        const auto file = root / paths[below(random, 3) == 0 ? below(random, paths.size()) : 0];
        switch (below(random, 7)) {
        case 0:
            return renameOver(file);
        case 1:
        case 2:
            return juggle(file, stop);
        case 3:
            return writeInto(file);
        case 4:
            return remove(file);
        case 5:
            ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, (root / "moved").c_str(), RENAME_NOREPLACE);
            return;
        default:
            (void)exchange(file, root / "other");
        }
    }

    // Saves a version by a temporary file that takes the file's place.
    void renameOver(const fs::path& file) {
        const auto draft = newDraft();
        while (!exchange(draft, file)) {
            // Nothing is there to be superseded.
            if (::renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0) return;
        }
        discard(draft);
    }

    // Goes to and fro between two versions as fast as it can, while the program takes some steps: then one exchange
    // falls between any two of the program's.
    void juggle(const fs::path& file, const std::stop_token& stop) {
        const auto draft = newDraft();
        const auto end = Steady::now() + 50ms;
        for (const auto last = steps.taken() + below(random, 8);
             steps.taken() <= last && !stop.stop_requested() && Steady::now() < end;) {
            (void)exchange(draft, file);
        }
        if (below(random, 2) == 0) (void)exchange(draft, file);
        discard(draft);
    }

    fs::path newDraft() {
        auto draft = root / "draft";
        writeFile(draft, newContent());
        return draft;
    }

    static bool exchange(const fs::path& a, const fs::path& b) {
        return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
    }

    void writeInto(const fs::path& file) {
        const Descriptor opened(::open(file.c_str(), O_RDWR | O_CLOEXEC));
        if (!opened) return;
        superseded.insert(readContents(opened.get(), file));
        const std::string content = newContent();
        if (::ftruncate(opened.get(), 0) != 0) throw std::runtime_error("truncate");
        if (below(random, 2) == 0) pause(below(random, 2000));
        if (::pwrite(opened.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
            throw std::runtime_error("write");
    }

    void remove(const fs::path& file) {
        const auto rubbish = root / "rubbish";
        ::rename(file.c_str(), rubbish.c_str());
        discard(rubbish);
    }

    void discard(const fs::path& file) {
        if (!fs::exists(file)) return;
        superseded.insert(readFile(file));
        fs::remove(file);
    }

    std::string newContent() { return *put.insert(uniqueContent("edited", random)).first; }

    static void pause(std::size_t microseconds) {
        for (const auto end = Steady::now() + std::chrono::microseconds(microseconds); Steady::now() < end;) {
        }
    }

    const fs::path root;
    Random random;
    Steps steps;
};

class Site {
public:
    // The contents that have gone, and files that should have; "" when all is well.
    std::string round(std::uint64_t seed) {
        Random random(seed);
        const bool whole = below(random, 5) == 0;
        const bool restores = !whole && below(random, 3) == 0;
        prepare(random, whole);
        Editor editor(site.root(), random());
        std::jthread editing([&editor](const std::stop_token& stop) { editor.work(stop); });
        try {
            whole ? downloadTree() : restores ? restore() : replace();
        } catch (const SyncError& error) {
            ++outcomes[std::string(error.what()).substr(0, std::string_view("page changed while").size())];
        } catch (const fs::filesystem_error&) {
            ++outcomes["file gone"];
        }
        editing.request_stop();
        editing.join();
        actions += editor.actions;
        return loss(editor);
    }

    std::map<std::string, std::size_t> outcomes;
    std::size_t actions = 0;

private:
    void prepare(Random& random, bool whole) {
        stood.clear();
        installed = {};
        for (const auto& item : fs::directory_iterator(site.root())) {
            if (item.path().filename() != "sub") fs::remove_all(item.path());
        }
        fs::remove(site / "sub/deep");
        for (const auto& path : paths) {
            // Of a size of its own: with the dates equal, two of one size could not be distinguished once they were
            // exchanged, when the second got the inode number that the first had.
            onServer[path] = uniqueContent("server", random) + std::string(path.size(), '.');
            server.put("site/" + path, onServer[path]);
            // Newer than any edit, so that the editor's own versions are replaced as well.
            touch(server.root() / "site" / path, date);
            if (whole && below(random, 2) == 0) continue;
            writeFile(site / path, *stood.insert(uniqueContent("local", random)).first);
        }
        change = {.path = "page", .local = {}, .remoteDate = toRemoteDate(date)};
        if (!whole) change.local = site.fingerprint("page");
    }

    void replace() {
        const auto fingerprint = site.transport().replaceLocal(change);
        ++outcomes["replaced"];
        note("page", fingerprint);
    }

    // A version that was replaced some time ago comes back, as if it were the server's.
    void restore() {
        const Backup version{.path = "page", .id = Uuid::random().text(), .kept = {}, .modified = {}};
        writeFile(site.root() / backupFolder / version.id / version.path, onServer["page"]);
        note("page", restoreBackup(site.root(), version, TransferControl()).now);
        ++outcomes["restored"];
    }

    void downloadTree() {
        site.transport().downloadTree(
            "", 0, [](const std::string&) {},
            [this](const std::string& path, const Fingerprint& fingerprint) { note(path, fingerprint); });
        ++outcomes["downloaded"];
    }

    void note(const std::string& path, const Fingerprint& fingerprint) {
        stood.insert(onServer[path]);
        installed.set(path, fingerprint);
    }

    std::string loss(const Editor& editor) {
        std::set<std::string> kept;
        std::string lost;
        const auto tree = readTree(site.root());
        for (const auto& [path, content] : tree) kept.insert(content);
        stood.insert(editor.put.begin(), editor.put.end());
        for (const auto& content : stood) {
            if (!editor.superseded.contains(content) && !kept.contains(content)) {
                lost += "lost: " + content.substr(0, content.find('\n')) + "\n";
            }
        }
        for (const auto& path : leftoverPartFiles(site.root())) lost += "left behind: " + path + "\n";
        for (const auto& [path, fingerprint] : installed) {
            const auto found = tree.find(path);
            // An edit must look like one to the next scan, or it is never uploaded.
            if (found == tree.end() || found->second == onServer[path]) continue;
            if (site.fingerprint(path) == fingerprint) lost += "edit taken for the server's version: " + path + "\n";
        }
        return lost;
    }

    const std::chrono::sys_seconds date =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) + 1h;
    FtpServer server{FtpServer::Kind::odd};
    LocalSite site{server, {{"sub/deep", ""}}};
    RemoteChange change;
    std::map<std::string, std::string> onServer;
    std::set<std::string> stood; // contents that stood in a local file
    FileMap installed;
};

void run(const Effort& effort) {
    Site torture;
    std::size_t failed = 0;
    for (std::size_t i = 0; i < effort.rounds; ++i) {
        const auto lost = torture.round(effort.seed + i);
        if (lost.empty()) continue;
        ++failed;
        std::printf("round %zu (--rounds 1 --seed %s):\n%s", i, std::to_string(effort.seed + i).c_str(), lost.c_str());
    }
    std::printf("%zu rounds, %zu edits, %zu failed", effort.rounds, torture.actions, failed);
    for (const auto& [outcome, count] : torture.outcomes) std::printf(", %s: %zu", outcome.c_str(), count);
    std::printf("\n");
    require(failed == 0, "contents were lost");
}

} // namespace

const Torture localFiles{
    "local_files", "Edits local files while server files are installed in their places.", {.rounds = 5000}, run};

} // namespace zembrastel::testing
