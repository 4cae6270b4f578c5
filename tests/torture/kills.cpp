// The real program, killed at random moments at its real work: uploads, initial downloads, replacements after a review,
// new profiles and the saves of all of these. Whatever the moment, what the program leaves is entire, and the next run
// catches up.
//
// Each lane has a server, a state folder and a local folder of its own. A seed that is given again repeats every edit,
// task and delay; the processes' own timing it cannot repeat. The kill takes the program alone or its children with it,
// by turns.
#include "../cli/cli_run.h"
#include "model/error.h"
#include "model/saved_state.h"
#include "model/state_store.h"
#include "support/ftp_server.h"
#include "support/wait_for.h"
#include "torture/program_run.h"
#include "torture/torture.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::size_t pathsInUse = 12;
constexpr int killsBetweenRests = 5;
constexpr int rateKiB = 1000; // so that there is something to meet in mid transfer
constexpr const char* name = "site";
constexpr std::string_view backupFolder = ".zembrastel-backups/";

const std::string watching = "Watching: Local changes";
const std::string reviewWaits = "newer on the server:";
const std::string uploadedWords = "  Uploaded ";

class Lane {
public:
    Lane(std::uint64_t seed, FtpServer::Kind kind)
        : random(seed), server(kind, {.rateKiB = rateKiB}), local(place.path("site")), remote(server.root() / "site") {
        for (const auto& folder : {local, remote, place.path("more")}) fs::create_directory(folder);
        server.handOver();
        place.savePassword(server.password());
        Profile profile = profileFor(server, local, server.remoteFolder("site"));
        profile.name = name;
        id = profile.id;
        StateStore(place.state()).save({.profiles = {profile}, .baselines = {}, .remoteDates = {}});
        state = load();
    }

    void kill(std::size_t times) {
        for (std::size_t killed = 0; killed < times;) {
            if (!killOnce()) continue;
            ++killed;
            if (killed % killsBetweenRests == 0 || killed == times) rest();
        }
    }

private:
    std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); }

    std::string anyPath() {
        const std::string number = std::to_string(upTo(pathsInUse - 1));
        return (number.size() > 1 ? "deep/" + number + "/" : "") + "page " + number;
    }

    std::string anyContent() { return randomBytes(upTo(1) == 0 ? upTo(600'000) : upTo(20'000), random()); }

    // One task, and a kill at a moment in it. False when the task was over first.
    bool killOnce() {
        if (!state.profiles.front().needsDownload) { // which goes on over all kills
            const auto choice = upTo(9);
            if (choice < 2) return run(prepareReview(), 500ms);
            if (choice == 2) return run(prepareProfile(), 40ms);
            choice < 5 ? prepareDownload() : edit();
        }
        return run(Texts{"watch", name}, upTo(4) == 0 ? 2500ms : 150ms);
    }

    void edit() {
        for (std::size_t count = 1 + upTo(4); count > 0; --count) writeFile(local / anyPath(), anyContent());
    }

    // A colleague changes files on the server, later than anything before.
    void changeOnServer(bool newOnesToo) {
        for (std::size_t count = 1 + upTo(4); count > 0; --count) {
            const std::string path = anyPath();
            if (!newOnesToo && !fs::exists(local / path)) continue;
            server.put("site/" + path, anyContent());
            future += 10s;
            touch(remote / path, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) + future);
        }
    }

    Texts prepareReview() {
        changeOnServer(false);
        return Texts{"review", name, "--download-all"};
    }

    Texts prepareProfile() {
        added = "more " + std::to_string(state.profiles.size());
        return {"profile",    "add", "--name",          added,       "--host",         "127.0.0.1",
                "--username", "web", "--remote-folder", "somewhere", "--local-folder", place.path("more").string()};
    }

    void prepareDownload() {
        changeOnServer(true);
        for (std::size_t count = upTo(4); count > 0; --count) {
            const std::string path = anyPath();
            if (fs::exists(remote / path)) fs::remove(local / path);
        }
        state.profiles.front().needsDownload = true;
        state.profiles.front().initialDownloadSelection = DownloadSelection::everything();
        StateStore(place.state()).save(state);
    }

    bool run(const Texts& arguments, std::chrono::milliseconds longest) {
        remember();
        const bool watches = arguments.front() == "watch";
        const bool atTransfer = watches && upTo(1) == 0;
        const std::size_t lines = !watches ? 0 : atTransfer ? 1 + upTo(3) : upTo(14);
        const auto delay =
            std::chrono::microseconds(upTo(static_cast<std::size_t>(std::chrono::microseconds(longest).count())));
        const bool alone = upTo(1) == 0;
        ProgramRun program(place, arguments);
        program.waitForLines(lines, atTransfer ? "loading" : "", {watching, reviewWaits});
        if (watches && program.hasPrinted(reviewWaits)) { // nothing goes on that a kill could meet
            finish(program);
            decide();
            return false;
        }
        std::this_thread::sleep_for(delay);
        const auto children = program.kill(!alone);
        const int status = program.wait();
        if (children) requireTransfersEnded(*children, server);
        verify(program.output(), !children);
        const bool adds = arguments.front() == "profile" && !children;
        require(!adds || (status == 0 && hasProfile(added)), "a new profile is missing: " + place.errors());
        return children.has_value();
    }

    // Ends the program as a user does; all that it printed is on the disk then.
    void finish(ProgramRun& program) {
        require(program.stop() == 0, "the program did not end well");
        verify(program.output(), true);
    }

    // What stands on both sides before the program runs.
    void remember() {
        localBefore = readTree(local);
        remoteBefore = readTree(remote);
    }

    void verify(const std::vector<std::string>& output, bool endedWell) {
        const auto localNow = readTree(local);
        verifyLocal(localNow);
        verifyRemote(readTree(remote), localNow);
        const SavedState before = std::exchange(state, load());
        verifyState(before);
        for (const auto& line : output) {
            const bool downloaded = line.find("Initial download complete") != std::string::npos;
            require(!downloaded || !state.profiles.front().needsDownload, "the end of the download is forgotten");
        }
        if (endedWell) requireKnown(output);
    }

    SavedState load() const {
        try {
            return decodeSavedState(readFile(place.stateFile()));
        } catch (const SyncError& error) {
            throw std::runtime_error(std::string("profiles.json does not load: ") + error.what());
        }
    }

    static bool hasBackup(const FileTree& files, const std::string& path, const std::string& content) {
        return std::ranges::any_of(files, [&](const auto& file) {
            return file.first.starts_with(backupFolder) && file.first.ends_with("/" + path) && file.second == content;
        });
    }

    void verifyLocal(const FileTree& now) {
        for (const auto& [path, content] : localBefore) {
            if (path.starts_with(".zembrastel-") || path.find("/.zembrastel-") != std::string::npos) continue;
            require(now.contains(path), "local file is gone: " + path);
            if (now.at(path) == content) continue;
            const auto theirs = remoteBefore.find(path);
            require(theirs != remoteBefore.end() && now.at(path) == theirs->second, "local file is torn: " + path);
            require(hasBackup(now, path, content), "replaced local file has no backup: " + path);
        }
    }

    static bool isTemporary(const std::string& path) { return path.find(".zembrastel-") != std::string::npos; }

    void verifyRemote(const FileTree& now, const FileTree& localNow) const {
        for (const auto& [path, content] : remoteBefore) {
            require(now.contains(path) || isTemporary(path), "live file is gone: " + path);
        }
        for (const auto& [path, content] : now) {
            if (isTemporary(path)) {
                require(path.ends_with(".part"), "unknown leftover on the server: " + path);
                continue;
            }
            const auto old = remoteBefore.find(path);
            const bool isOld = old != remoteBefore.end() && content == old->second;
            require(isOld || (localNow.contains(path) && content == localNow.at(path)), "live file is torn: " + path);
        }
    }

    bool hasProfile(const std::string& wanted) const {
        return std::ranges::any_of(state.profiles, [&](const Profile& profile) { return profile.name == wanted; });
    }

    // Nothing that was on the disk may go again: no local file was deleted while the program ran.
    void verifyState(const SavedState& before) {
        for (const auto& profile : before.profiles) require(hasProfile(profile.name), "profile is missing");
        for (const auto& [path, fingerprint] : before.baselines.contains(id) ? before.baselines.at(id) : FileMap{}) {
            const bool there = localBefore.contains(path);
            require(!there || state.baselines[id].contains(path), "baseline is missing: " + path);
        }
        if (!before.remoteDates || !before.remoteDates->contains(id)) return;
        for (const auto& [path, date] : before.remoteDates->at(id)) require(hasDate(path), "date is missing: " + path);
    }

    bool hasDate(const std::string& path) const {
        return state.remoteDates && state.remoteDates->contains(id) && state.remoteDates->at(id).contains(path);
    }

    // The first line of the output that the saved state does not know of; nothing if it knows of all. What has no
    // line of its own, the date after an upload and the end of a download, is done once another line comes.
    std::optional<std::string> forgotten(const std::vector<std::string>& output) {
        for (std::size_t at = 0; at < output.size(); ++at) {
            const auto path = [&line = output[at]](const std::string& words) -> std::optional<std::string> {
                const auto found = line.find(words);
                if (found == std::string::npos) return std::nullopt;
                const std::string rest = line.substr(found + words.size());
                return rest.substr(0, rest.find(" (previous"));
            };
            const bool isLast = at + 1 == output.size();
            bool known = true;
            if (const auto uploaded = path(uploadedWords)) {
                known = isBaseline(*uploaded) && (isLast || hasDate(*uploaded));
            } else if (const auto newer = path("  Downloading newer server copy: ")) {
                known = isLast || isBaseline(*newer);
            } else if (const auto downloaded = path("  Downloading ")) {
                known = isLast || isBaseline(*downloaded);
            } else if (const auto chosen = path("Downloaded newer server copy: ")) {
                known = isBaseline(*chosen) && hasDate(*chosen);
            }
            if (!known) return output[at];
        }
        return std::nullopt;
    }

    bool isBaseline(const std::string& path) {
        const auto& files = state.baselines[id];
        return files.contains(path) && files.at(path) == Fingerprint::read(local / path);
    }

    // What is newer on the server: by a colleague, or by an upload that a kill kept from being recorded.
    void decide() {
        remember();
        const bool keeps = upTo(1) == 0;
        const auto decided = place.run(Texts{"review", name, keeps ? "--keep-all" : "--download-all"});
        require(decided.status == 0, "review failed: " + decided.errors);
        verify({}, true);
        for (const auto& [path, content] : remoteBefore) {
            if (decided.output.find("Kept local copy: " + path + "\n") == std::string::npos) continue;
            require(hasDate(path), "decision is forgotten: " + path);
            writeFile(local / path, anyContent()); // to be sent, or the two sides would stay different
        }
    }

    // Of its own accord, as the program goes on: a kill then would lose nothing that it printed.
    void requireSaved(const std::vector<std::string>& output) {
        const auto saved = [&] {
            state = load();
            return !forgotten(output);
        };
        if (!eventually(saved, ProgramRun::limit)) requireKnown(output);
    }

    void requireKnown(const std::vector<std::string>& output) {
        const auto line = forgotten(output);
        require(!line, "forgotten: " + line.value_or(""));
    }

    // The program is left alone until all is done.
    void rest() {
        for (bool reviewed = true; reviewed;) {
            remember();
            ProgramRun program(place, Texts{"watch", name});
            require(program.waitForLines(SIZE_MAX, "", {watching, reviewWaits}), "watching ended: " + place.errors());
            reviewed = !program.hasPrinted(watching);
            requireSaved(program.output());
            finish(program);
            if (reviewed) decide();
        }
        const FileTree ours = withoutBackups(readTree(local));
        const FileTree theirs = readPublished(remote);
        for (const auto& path : leftoverPartFiles(local)) {
            require(path.starts_with(backupFolder), "left in the local folder: " + path);
        }
        require(ours == theirs, "the two sides differ in the end" + difference(ours, theirs));
    }

    static std::string difference(const FileTree& ours, const FileTree& theirs) {
        for (const auto& [path, content] : theirs) {
            if (!ours.contains(path)) return ", only on the server: " + path;
            if (ours.at(path) != content) return ": " + path;
        }
        return ", only in the local folder";
    }

    std::mt19937_64 random;
    FtpServer server;
    CliPlace place;
    fs::path local;
    fs::path remote;
    Uuid id;
    SavedState state;
    std::string added;
    std::chrono::seconds future{60};
    FileTree localBefore;
    FileTree remoteBefore;
};

} // namespace

const Torture kills{
    "kills", "Kills the program at random moments.", {.rounds = 300, .lanes = 6}, [](const Effort& effort) {
        std::map<std::string, std::function<void()>> works;
        for (std::size_t lane = 0; lane < effort.lanes; ++lane) {
            const auto share = effort.rounds / effort.lanes + (lane < effort.rounds % effort.lanes ? 1 : 0);
            const auto kind = lane % 2 == 0 ? FtpServer::Kind::proftpd : FtpServer::Kind::vsftpd;
            works["lane " + std::to_string(lane)] = [=] { Lane(effort.seed + lane, kind).kill(share); };
        }
        doAtOnce(works);
        std::printf("%zu kills: nothing torn or lost, and all caught up\n", effort.rounds);
    }};

} // namespace zembrastel::testing
