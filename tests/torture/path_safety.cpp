// Nothing outside the local folder is ever read for an upload or written by a download, whatever a local attacker puts
// links in place of while the program works.
//
// Outside lie a secret that must never reach the server and a tree that must keep every byte, name, date and mode; the
// attacker's links all lead there, and the same names stand there as inside. The attacker swaps as fast as it can, with
// moments of peace in which the program gets somewhere. A seed that is given again repeats the attacker's choices.
#include "model/scan.h"
#include "model/state_store.h"
#include "platform/process_resources.h"
#include "support/local_site.h"
#include "torture/torture.h"
#include "transport/download/backups.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

const std::string secret = "SECRET-5d1f0b";

std::size_t failures = 0;

// What one attack breaks does not keep the others from being tried.
void check(bool held, const std::string& what) {
    if (held) return;
    ++failures;
    std::printf("FAILED: %s\n", what.c_str());
}

// All attributes and contents of a folder and of what lies below it.
std::map<std::string, std::string> snapshot(const fs::path& folder) {
    std::map<std::string, std::string> items;
    const auto take = [&items](const fs::path& item) {
        struct stat status {};
        if (::lstat(item.c_str(), &status) != 0) throw std::runtime_error("stat");
        auto& text = items[item];
        for (const auto number :
             {static_cast<long>(status.st_ino), static_cast<long>(status.st_mode), static_cast<long>(status.st_nlink),
              status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec}) {
            text += std::to_string(number) + " ";
        }
        if (S_ISREG(status.st_mode)) text += readFile(item);
    };
    take(folder);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) take(entry.path());
    return items;
}

// A local folder beside what must not be touched.
class Place {
public:
    Place() {
        for (const auto* path : {"page", "sub/deep", "sub/canary", "canary", "profiles.json"}) {
            writeFile(outside / path, secret + " " + path);
        }
        for (const auto* path : {"page", "sub/deep"}) writeFile(site / path, "local");
        fs::create_directory(parked);
        fs::create_directory(temporary);
        ::setenv("TMPDIR", temporary.c_str(), 1);
        before = snapshot(outside);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place() { ::setenv("TMPDIR", folder.path().parent_path().c_str(), 1); }

    [[nodiscard]] FTPTransport transport(const FtpServer& server) const {
        return {
            .profile = profileFor(server, site, server.remoteFolder("site")),
            .password = server.password(),
            .control = std::make_shared<TransferControl>()};
    }

    void requireUntouched(const std::string& by) const {
        check(snapshot(outside) == before, by + " changed what lies outside the local folder");
    }

private:
    TemporaryFolder folder;

public:
    const fs::path site = folder / "site";
    const fs::path state = folder / "state";
    const fs::path outside = folder / "outside";
    const fs::path parked = folder / "parked"; // what a link stands in place of
    const fs::path temporary = folder / "temporary";

private:
    std::map<std::string, std::string> before;
};

class Attacker {
public:
    Attacker(const Place& attacked, bool rootToo, std::uint64_t seed)
        : place(attacked), attacksRoot(rootToo), random(seed),
          thread([this](const std::stop_token& stop) { work(stop); }) {}

    std::atomic<std::size_t> swaps = 0;

private:
    struct Target {
        fs::path place, leadsTo, link;
    };

    void work(const std::stop_token& stop) {
        std::vector<Target> targets;
        for (const auto& [path, leadsTo] : std::vector<std::pair<fs::path, fs::path>>{
                 {place.site / "sub", place.outside / "sub"},
                 {place.site / "page", place.outside / "page"},
                 {place.site / ".zembrastel-backups", place.outside},
                 {place.state, place.outside}}) {
            targets.push_back({path, leadsTo, newLink(leadsTo)});
        }
        if (attacksRoot) targets.push_back({place.site, place.outside, newLink(place.outside)});
        while (!stop.stop_requested()) {
            auto& target = targets[random() % targets.size()];
            // The program may have moved the last one out of its way.
            if (!fs::is_symlink(target.link)) target.link = newLink(target.leadsTo);
            const auto burst = Steady::now() + std::chrono::milliseconds(random() % 30);
            while (Steady::now() < burst && !stop.stop_requested()) {
                swap(target.place, target.link);
                swap(target.place, target.link);
            }
            // In every fourth round the program's own temporary files are the aim; in the others it has some peace.
            const bool intrusive = random() % 4 == 0;
            const auto peace = Steady::now() + std::chrono::milliseconds(random() % 6 == 0 ? random() % 500 : 0);
            do {
                if (!intrusive) {
                    std::this_thread::yield();
                } else if (random() % 2 == 0) {
                    attackWorkingFolders();
                } else {
                    for (const auto& in : {place.site, place.site / "sub"})
                        replaceFiles(in, random() % 2 == 0 ? ".part" : ".displaced");
                }
            } while (Steady::now() < peace && !stop.stop_requested());
            // A folder may have been made anew where one had been taken away.
            for (const auto& each : targets) {
                if (fs::is_symlink(each.place)) swap(each.place, each.link);
                // One that was put in place of a temporary file may have been installed.
                std::error_code ignored; // or it has been replaced meanwhile, by a folder
                if (fs::is_symlink(each.place)) fs::remove(each.place, ignored);
            }
        }
    }

    void swap(const fs::path& a, const fs::path& b) {
        if (::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0) ++swaps;
    }

    fs::path newLink(const fs::path& leadsTo) {
        const auto link = place.parked / std::to_string(++links);
        fs::create_symlink(leadsTo, link);
        return link;
    }

    // Puts a link in place of every file in the folder whose name ends so.
    void replaceFiles(const fs::path& folder, std::string_view suffix) {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(folder, ignored)) {
            const auto name = entry.path().filename().string();
            if (!name.ends_with(suffix) || entry.is_symlink(ignored)) continue;
            swap(entry.path(), newLink(place.outside / "page"));
        }
    }

    void attackWorkingFolders() {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(place.temporary, ignored)) {
            if (entry.is_symlink(ignored)) continue;
            if (random() % 2 == 0) {
                replaceFiles(entry.path(), "");
            } else {
                swap(entry.path(), newLink(place.outside));
            }
        }
    }

    const Place& place;
    const bool attacksRoot;
    std::mt19937_64 random;
    std::size_t links = 0;
    std::jthread thread;
};

struct Scene {
    FtpServer server{FtpServer::Kind::odd};
    Place place;
    StateStore store{place.state};

    [[nodiscard]] FTPTransport transport() const { return place.transport(server); }
};

void scanFolder(Scene& scene, std::size_t) {
    for (const auto& [path, fingerprint] : scan(scene.transport().profile)) {
        for (const auto& there : {scene.place.outside / path, scene.place.outside / "sub" / path}) {
            if (!fs::exists(there)) continue;
            check(Fingerprint::read(there).inode != fingerprint.inode, "scan took " + path + " from outside");
        }
        check(path.find("canary") == std::string::npos, "scan went outside");
    }
}

void uploadFiles(Scene& scene, std::size_t turn) {
    const std::string path = turn % 2 == 0 ? "page" : "sub/deep";
    const auto transport = scene.transport();
    if (turn % 3 == 0)
        return transport.upload(path, Fingerprint::read(scene.place.outside / path)); // as if it had been seen
    const auto files = scan(transport.profile);
    const auto* file = files.find(path);
    if (file == nullptr) throw SyncError("not there now");
    transport.upload(path, *file);
}

const auto ignore = [](const auto&...) {};

// Every file is newer on the server, and some are missing here.
void offerFiles(FtpServer& server, std::size_t turn) {
    fs::remove_all(server.root() / "site");
    for (const auto& path : {std::string("page"), std::string("sub/deep"), "new" + std::to_string(turn)}) {
        server.put("site/" + path, "server " + std::to_string(turn));
        touch(server.root() / "site" / path, std::chrono::system_clock::now() + 1h);
    }
}

void downloadFiles(Scene& scene, std::size_t turn) {
    offerFiles(scene.server, turn);
    scene.transport().downloadTree("", 0, ignore, ignore);
}

void replaceFiles(Scene& scene, std::size_t turn) {
    offerFiles(scene.server, turn);
    const auto transport = scene.transport();
    const auto files = scan(transport.profile);
    const std::string path = turn % 2 == 0 ? "page" : "sub/deep";
    const auto* file = files.find(path);
    if (file == nullptr) return transport.downloadTree("", 0, ignore, ignore); // an attack has taken it away
    const auto date = transport.modificationDate(path);
    (void)transport.replaceLocal({.path = path, .local = *file, .remoteDate = date});
}

void restoreFiles(Scene& scene, std::size_t turn) {
    const TransferControl control;
    const auto site = scene.place.site.string();
    const auto versions = listBackups(site, control);
    if (versions.empty()) return replaceFiles(scene, turn); // which makes one
    (void)restoreBackup(site, versions[turn % versions.size()], control);
}

using Work = void (*)(Scene& scene, std::size_t turn);

void underAttack(const std::string& name, Work work, bool rootToo, std::uint64_t seed, std::chrono::milliseconds time) {
    Scene scene;
    std::size_t turns = 0;
    std::size_t refused = 0;
    std::size_t swaps = 0;
    std::string refusal;
    {
        const Attacker attacker(scene.place, rootToo, seed);
        const auto end = Steady::now() + time;
        // On a busy machine it takes longer until one turn gets through.
        while (Steady::now() < end || (turns == refused && Steady::now() < end + 30s)) {
            try {
                work(scene, ++turns);
            } catch (const SyncError& error) {
                ++refused;
                refusal = error.what();
            } catch (const fs::filesystem_error& error) {
                ++refused;
                refusal = error.what();
            }
        }
        swaps = attacker.swaps;
    }
    scene.place.requireUntouched(name);
    for (const auto& [path, content] : readTree(scene.server.root())) {
        check(content.find(secret) == std::string::npos, name + " sent the secret as " + path);
    }
    check(turns > refused, name + " never got anywhere: " + refusal);
    std::printf("%s: %zu turns, %zu refused, %zu swaps\n", name.c_str(), turns, refused, swaps);
}

void run(const Effort& effort) {
    forbidCoreDumps();
    const auto seed = effort.seed;
    const std::chrono::milliseconds time(static_cast<long>(effort.seconds * 1000));
    // Without the root: a scan of a folder given through a link is meant to follow it, and what it then finds is
    // refused by every operation that would read or write a file.
    underAttack("scan", scanFolder, false, seed, time);
    underAttack("upload", uploadFiles, true, seed, time);
    underAttack("download", downloadFiles, true, seed, time);
    underAttack("replacement", replaceFiles, true, seed, time);
    underAttack("restoring", restoreFiles, true, seed, time);
    underAttack(
        "save", [](Scene& scene, std::size_t) { scene.store.save({}); }, true, seed, time);
    std::printf("%zu failures\n", failures);
    require(failures == 0, "a way out of the local folder");
}

} // namespace

// The seconds are for each operation under attack.
const Torture pathSafety{"path_safety", "Tries to lead the program out of its local folder.", {.seconds = 60}, run};

} // namespace zembrastel::testing
