// The real program while the machine fails under it: disks full, read-only or taken away, permissions lost. Each time
// the program must say in words what is wrong, go on by itself once it is not, and lose nothing.
//
// Every case has a thread with mounts of its own, a server, a state folder and a local folder. Where this process may
// not mount, a line says which cases that left out.
#include "../cli/cli_run.h"
#include "model/saved_state.h"
#include "model/scan.h"
#include "model/state_store.h"
#include "support/ftp_server.h"
#include "support/process_figures.h"
#include "support/wait_for.h"
#include "torture/torture.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <memory>
#include <optional>
#include <sched.h>
#include <stdexcept>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto limit = 60s;
constexpr int rateKiB = 300; // 3 MB take ten seconds, in which much can happen to them
constexpr const char* name = "site";
constexpr std::string_view backupFolder = ".zembrastel-backups/";
const std::string watching = "Watching: Local changes";
const std::string fill = ".zembrastel-fill";

void succeed(bool succeeded, const std::string& what) {
    if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

// What is mounted in this thread from now on, others do not see.
void keepMountsApart() {
    succeed(::unshare(CLONE_NEWNS) == 0, "unshare");
    succeed(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount privately");
}

// A user who is not root may mount in a user namespace, where the system has those.
bool mayMount() {
    const auto user = std::to_string(::geteuid());
    const auto group = std::to_string(::getegid());
    try {
        if (::geteuid() != 0) {
            succeed(::unshare(CLONE_NEWUSER) == 0, "unshare");
            std::ofstream("/proc/self/setgroups") << "deny";
            std::ofstream("/proc/self/uid_map") << user + " " + user + " 1";
            std::ofstream("/proc/self/gid_map") << group + " " + group + " 1";
        }
        std::async(std::launch::async, keepMountsApart).get();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

class Mounted {
public:
    Mounted(fs::path folder, const fs::path& source, const char* type, unsigned long flags, const char* options)
        : place(std::move(folder)) {
        succeed(::mount(source.c_str(), place.c_str(), type, flags, options) == 0, "mount");
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;
    ~Mounted() { ::umount2(place.c_str(), MNT_DETACH); }

    const fs::path place;
};

class Site {
public:
    Site() {
        for (const auto& folder : {local, disk, remote}) fs::create_directory(folder);
        server.handOver();
        place.savePassword(server.password());
        profile = profileFor(server, local, server.remoteFolder("site"));
        profile.name = name;
    }

    void mountSmall(const fs::path& folder) {
        mounts.push_back(std::make_unique<Mounted>(folder, "tmpfs", "tmpfs", 0, "size=1m,mode=0755"));
    }
    void mountOver(const fs::path& folder, const fs::path& source) {
        mounts.push_back(std::make_unique<Mounted>(folder, source, nullptr, MS_BIND, nullptr));
    }
    void unmount(const fs::path& folder) {
        require(eventually([&] { return ::umount(folder.c_str()) == 0; }), "cannot unmount"); // while it is scanned
        std::erase_if(mounts, [&](const auto& mounted) { return mounted->place == folder; });
    }
    static void remount(const fs::path& folder, unsigned long flags) {
        const auto done = [&] {
            return ::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_BIND | flags, nullptr) == 0;
        };
        require(eventually(done), "cannot remount"); // while something is written
    }

    // A little less than all that there is room for.
    static void fillUp(const fs::path& folder, std::size_t left = 0) {
        const Descriptor file(::open((folder / fill).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        const std::string block(4096, 'x');
        while (::write(file.get(), block.data(), block.size()) > 0) {
        }
        require(errno == ENOSPC, "the disk does not get full");
        succeed(::ftruncate(file.get(), ::lseek(file.get(), 0, SEEK_END) - static_cast<off_t>(left)) == 0, "truncate");
    }
    static void makeRoom(const fs::path& folder) { fs::remove(folder / fill); }

    // Permissions are nothing to root, unless it lets go of these.
    void obeyPermissions() {
        if (::geteuid() == 0) place.wrapper = {"/usr/bin/setpriv", "--bounding-set=-dac_override,-dac_read_search"};
    }

    void write(const std::string& path, const std::string& content) {
        writeFile(local / path, content);
        expected[path] = content;
    }

    void colleagueWrites(const std::string& path, const std::string& content) {
        server.put("site/" + path, content);
        touch(remote / path, std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now()) + 60s);
    }

    void start() {
        if (!fs::exists(place.stateFile())) {
            StateStore(place.state()).save({.profiles = {profile}, .baselines = {}, .remoteDates = {}});
        }
        const Texts watch{"watch", name};
        running.reset(new Program(place.start(watch))); // it cannot be moved
        running->closeInput();
    }

    [[nodiscard]] pid_t pid() const { return running->pid(); }

    // What is done until resume() falls between two of the program's steps, however slow this machine is.
    void suspend() const { require(running->suspend(), "the program ended: " + place.errors()); }
    void resume() const { running->resume(); }

    std::string waitFor(const std::string& words) {
        while (true) {
            std::string line;
            try {
                line = running->readLine(limit);
            } catch (const std::runtime_error& error) {
                throw std::runtime_error(
                    "\"" + words + "\" was not printed: " + error.what() + ", after:\n" + output + place.errors());
            }
            output += line + "\n";
            if (line.find(words) != std::string::npos) return line;
        }
    }

    void stop() {
        ::kill(pid(), SIGTERM);
        require(running->wait() == 0, "the program did not end well: " + place.errors());
        running.reset();
    }

    // What the fault kept from being done is done, both sides are the same, nothing is lost, and all that is known.
    void verify() {
        write("last", "after all");
        waitFor("Uploaded last");
        waitFor(watching); // its date is recorded then
        const auto recorded = [this] { return savedBaseline() == scan(profile); };
        require(eventually(recorded), "the state on the disk is not that of the folder");
        stop();
        require(fs::is_empty(place.temporary()), "left in the temporary folder");
        require(withoutBackups(readTree(local)) == expected, "a local file is lost, or changed, or left behind");
        require(readPublished(remote) == expected, "the two sides differ in the end");
        const auto known = place.run(Texts{"review", name, "--list"});
        require(known.status == 0, "what it uploaded itself is offered for review: " + known.output + known.errors);
    }

    [[nodiscard]] SavedState saved() const { return decodeSavedState(readFile(place.stateFile())); }
    [[nodiscard]] FileMap savedBaseline() const { return saved().baselines[profile.id]; }
    [[nodiscard]] bool hasSavedDate(const std::string& path) const {
        auto dates = saved().remoteDates;
        return dates && (*dates)[profile.id].contains(path);
    }

    [[nodiscard]] bool hasBackup(const std::string& content) const {
        return std::ranges::any_of(readTree(local), [&](const auto& file) {
            return file.first.starts_with(backupFolder) && file.second == content;
        });
    }

    FtpServer server{FtpServer::Kind::proftpd, {.rateKiB = rateKiB}};
    CliPlace place;
    fs::path local = place.path("site");
    const fs::path disk = place.path("disk"); // of which the local folder may be a view
    const fs::path remote = server.root() / "site";
    Profile profile;
    FileTree expected; // in the end, on both sides
    std::string output;

private:
    std::unique_ptr<Program> running;
    std::vector<std::unique_ptr<Mounted>> mounts; // undone before the folders are removed
};

// What goes wrong with a folder or file, and the end of it.
struct Fault {
    enum class Kind { full, readOnly, closed };

    std::string name;
    Kind kind;
    fs::path (*place)(const Site&);
    std::string message;  // what the user reads of it
    bool saved = false;   // the change was sent, and only its record is missing
    std::size_t left = 0; // bytes free on the full disk
};

void begin(const Fault& fault, const fs::path& place) {
    switch (fault.kind) {
    case Fault::Kind::full:
        return Site::fillUp(place, fault.left);
    case Fault::Kind::readOnly:
        return Site::remount(place, MS_RDONLY);
    case Fault::Kind::closed:
        // Still readable where only saving is to fail.
        fs::permissions(place, fault.saved ? fs::perms::owner_read | fs::perms::owner_exec : fs::perms::none);
    }
}

void end(const Fault& fault, const fs::path& place) {
    switch (fault.kind) {
    case Fault::Kind::full:
        return Site::makeRoom(place);
    case Fault::Kind::readOnly:
        return Site::remount(place, 0);
    case Fault::Kind::closed:
        fs::permissions(place, fs::perms::owner_all);
    }
}

// The work is to send a change meanwhile.
void meet(Site& site, const Fault& fault) {
    const auto place = fault.place(site);
    fault.kind == Fault::Kind::closed ? site.obeyPermissions() : site.mountSmall(place);
    site.write("page", "old");
    site.write("folder/other", "other");
    site.start();
    site.waitFor(watching);
    // The last of it: from then on the program has none of its files open but what it keeps open.
    const auto isSaved = [&site] { return site.hasSavedDate("page") && site.hasSavedDate("folder/other"); };
    require(eventually(isSaved, limit), "the first files were not recorded");
    site.suspend();
    site.write("page", randomBytes(100'000));
    begin(fault, place);
    site.resume();
    site.waitFor(fault.message);
    if (!fault.saved) require(readFile(site.remote / "page") == "old", "something was sent in spite of the fault");
    require(site.output.find("page: No space") == std::string::npos, "the wrong disk is said to be full");
    end(fault, place);
    if (!fault.saved) site.waitFor("Uploaded page");
    const auto recorded = [&site] { return site.savedBaseline() == scan(site.profile); };
    require(eventually(recorded, limit), "the state was not saved once it could be");
    site.verify();
}

// The work is the initial download: of a new file, and of a newer one in place of a larger local file.
void meetDownloading(Site& site, const Fault& fault) {
    site.mountSmall(site.local);
    const auto local = randomBytes(300'000);
    site.write("page", local);
    for (const std::string path : {"page", "sub/new"}) {
        site.expected[path] = randomBytes(100'000);
        site.colleagueWrites(path, site.expected[path]);
    }
    site.profile.needsDownload = true;
    site.profile.initialDownloadSelection = DownloadSelection::everything();
    begin(fault, site.local);
    site.start();
    site.waitFor(fault.message);
    site.waitFor("Retrying");
    require(readFile(site.local / "page") == local, "the local file is gone before it was replaced");
    end(fault, site.local);
    site.waitFor("Downloading sub/new");
    site.waitFor(watching);
    require(site.hasBackup(local), "the replaced file has no backup");
    site.verify();
}

// The local folder goes, others change the server, the user edits the files on the disk elsewhere, and it comes back.
void unmountAndBack(Site& site, const fs::path& mountPoint, const std::string& message) {
    const fs::path inside = site.local.lexically_relative(mountPoint);
    const auto reappear = [&] { site.mountOver(mountPoint, site.disk); };
    site.mountSmall(site.disk);
    reappear();
    site.write("page", "old");
    site.write("folder/other", "other");
    site.start();
    site.waitFor(watching);
    site.unmount(mountPoint);
    site.waitFor(message);
    writeFile(site.disk / inside / "page", "edited elsewhere");
    site.colleagueWrites("page", "by a colleague");
    site.waitFor(message); // at the next attempt
    require(readTree(site.remote) == FileTree{{"page", "by a colleague"}, {"folder/other", "other"}}, "server changed");
    require(site.savedBaseline().size() == 2, "what is not there was taken for deleted");
    reappear();
    site.waitFor("1 file newer on the server:");
    require(site.output.find("Uploaded", site.output.find(message)) == std::string::npos, "something was sent unasked");
    site.stop();
    require(readFile(site.remote / "page") == "by a colleague", "a colleague's edit was overwritten");
    const auto taken = site.place.run(Texts{"review", name, "--download-all"});
    require(taken.status == 0, taken.errors);
    require(site.hasBackup("edited elsewhere"), "the local edit is lost");
    site.expected["page"] = "by a colleague";
    site.start();
    site.waitFor(watching);
    site.verify();
}

fs::path stateFolder(const Site& site) { return site.place.state(); }
fs::path temporaryFolder(const Site& site) { return site.place.temporary(); }
fs::path localFolder(const Site& site) { return site.local; }
fs::path page(const Site& site) { return site.local / "page"; }

const std::string noSpace = "No space left on device";
const std::string isReadOnly = "Read-only file system";
const std::string notSaved = "Could not save sync state: ";
const std::string missing = "The local folder is unavailable or unreadable.";
using enum Fault::Kind;

const std::vector<Fault> faultsWithoutMounts{
    {"local folder closed", closed, localFolder, missing},
    {"file closed", closed, page, "site/page: Permission denied"},
    {"state folder closed to writing", closed, stateFolder, notSaved, true}};
const std::vector<Fault> faults{
    {"disk full at a save", full, stateFolder, notSaved, true},
    {"disk full at staging", full, temporaryFolder, noSpace},
#ifndef __SANITIZE_THREAD__ // which keeps a file open for writing there
    {"temporary folder read-only", readOnly, temporaryFolder, isReadOnly},
#endif
};
const std::vector<Fault> faultsOfDownloads{
    {"disk full at a download", full, localFolder, "Failure writing output to destination"},
    {"disk full at a backup", full, localFolder, "/page: " + noSpace, false, 250'000},
    {"local folder read-only at a download", readOnly, localFolder, isReadOnly}};

void run(const Effort&) {
    const bool mounts = mayMount();
    std::map<std::string, std::function<void(Site&)>> cases;
    for (const auto& fault : faultsWithoutMounts) cases[fault.name] = [&](Site& site) { meet(site, fault); };
    if (mounts) {
        for (const auto& fault : faults) cases[fault.name] = [&](Site& site) { meet(site, fault); };
        for (const auto& fault : faultsOfDownloads)
            cases[fault.name] = [&](Site& site) { meetDownloading(site, fault); };
        cases["unmounted"] = [](Site& site) {
            unmountAndBack(site, site.local, "Another disk, or none, is mounted at the local folder");
        };
        cases["folder above unmounted"] = [](Site& site) {
            site.profile.localFolder = site.local / "below";
            site.local /= "below";
            unmountAndBack(site, site.local.parent_path(), missing);
        };
    } else {
        std::puts("left out, since this process may not mount: full and read-only disks, unmounted folders");
    }
    std::map<std::string, std::function<void()>> works;
    for (const auto& [title, meets] : cases) {
        works[title] = [meets, mounts] {
            if (mounts) keepMountsApart();
            Site site;
            meets(site);
        };
    }
    doAtOnce(works);
    std::printf("%zu faults of the machine: reported, recovered from, with nothing lost\n", works.size());
}

} // namespace

const Torture machineFaults{"machine_faults", "Fails under the program as machines do.", {}, run};

} // namespace zembrastel::testing
