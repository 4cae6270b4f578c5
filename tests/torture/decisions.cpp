// Decisions at the wrong moment: a user who starts, pauses, decides late or on another review, edits, removes and
// quits, while a colleague changes the server. There is never more than one worker, none beside a check, and no server
// file is replaced that stood in a review without an answer. In the end every profile reaches watching.
//
// The seed repeats what is asked; when threads run it cannot repeat.
#include "app/app_model.h"
#include "app/context/main_context.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/temporary_folder.h"
#include "torture/hasty_clock.h"
#include "torture/torture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <mutex>
#include <random>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::array<const char*, 4> paths{"a", "b", "deep/c", "deep/d"};

// Which checks and workers are at it. One that is to stop may take a moment to end.
class Shifts {
public:
    [[nodiscard]] JobWork counted(const JobWork& work) {
        return {
            .check =
                [this, check = work.check](
                    const FTPTransport& server, const ServerRecord& recorded, const std::stop_token& stop) {
                    const Shift shift(*this, stop);
                    return check(server, recorded, stop);
                },
            .watch =
                [this, watch = work.watch](const SyncWorker& worker, const std::stop_token& stop) {
                    const Shift shift(*this, stop);
                    watch(worker, stop);
                }};
    }

    [[nodiscard]] bool overlapped() const {
        const std::lock_guard lock(mutex);
        return found;
    }

private:
    struct Shift {
        Shift(Shifts& joined, const std::stop_token& stop) : shifts(joined) {
            const std::lock_guard lock(shifts.mutex);
            const auto goesOn = [](const std::stop_token& other) { return !other.stop_requested(); };
            shifts.found = shifts.found || (goesOn(stop) && std::ranges::any_of(shifts.all, goesOn));
            place = shifts.all.insert(shifts.all.end(), stop);
        }
        Shift(const Shift&) = delete;
        Shift& operator=(const Shift&) = delete;
        ~Shift() {
            const std::lock_guard lock(shifts.mutex);
            shifts.all.erase(place);
        }

        Shifts& shifts;
        std::list<std::stop_token>::iterator place;
    };

    mutable std::mutex mutex;
    std::list<std::stop_token> all;
    bool found = false;
};

class Sequence final : private ModelObserver {
public:
    Sequence(FtpServer& used, std::uint64_t seed) : server(used), random(seed) {
        fs::remove_all(server.root() / "site");
        fs::create_directory(server.root() / "site");
        server.handOver();
        for (const auto* path : paths) editLocally(path);
        profile = profileFor(server, folder / "site", server.remoteFolder("site"));
        profile.name = "Site";
        open();
        model->save(profile, std::nullopt);
        model->resume(profile.id);
        settle();
    }

    void play() {
        using Step = void (Sequence::*)();
        constexpr std::array<Step, 20> steps{
            &Sequence::editUnderReview, &Sequence::editUnderReview, &Sequence::await,          &Sequence::await,
            &Sequence::colleagueEdits,  &Sequence::colleagueEdits,  &Sequence::colleagueEdits, &Sequence::editSomething,
            &Sequence::removeSomething, &Sequence::pause,           &Sequence::resume,         &Sequence::resume,
            &Sequence::stayPaused,      &Sequence::stayPaused,      &Sequence::decide,         &Sequence::decideLate,
            &Sequence::decideLate,      &Sequence::retry,           &Sequence::edit,           &Sequence::quitOrRemove};
        for (std::size_t count = 20 + random() % 20; count > 0; --count) {
            (this->*steps.at(random() % steps.size()))();
            pump();
        }
        settle();
    }

    std::size_t accepted = 0;
    std::size_t outdated = 0;

private:
    [[nodiscard]] fs::path local(const std::string& path) const { return folder / "site" / path; }
    [[nodiscard]] fs::path remote(const std::string& path) const { return server.root() / "site" / path; }
    [[nodiscard]] const RemoteReview* review() const {
        const auto found = model->reviews().find(profile.id);
        return found == model->reviews().end() ? nullptr : &found->second;
    }
    [[nodiscard]] std::string somePath() { return paths.at(random() % paths.size()); }

    void open() {
        AppModel::Options options{.storeOverride = StateStore(folder / "state"), .clock = clock};
        options.work = shifts.counted(serverWork());
        options.passwordAccess = {
            .save = [](const auto&...) {},
            .read = [password = server.password()](const Uuid&) { return password; },
            .remove = [](const Uuid&) {}};
        model = std::make_unique<AppModel>(queue, std::move(options));
        model->observe(*this);
    }

    void pump() {
        (void)queue.runUntil([] { return false; }, std::chrono::milliseconds(random() % 3 == 0 ? random() % 120 : 1));
        verify();
        if (random() % 4 == 0) choose();
    }

    // What to upload of a site that is on the server already.
    void choose() {
        if (model->firstComparison(profile.id) != nullptr) (void)model->adopt(profile.id, Adoption::alike);
    }

    void verify() const {
        require(!shifts.overlapped(), "two workers, or a worker beside a check");
        for (const auto& [path, version] : unanswered) {
            require(
                readFile(remote(path)) == version,
                path + " was replaced on the server while a review of it was not answered");
        }
    }

    // By retrying and deciding alone, whatever came before.
    void settle() {
        model->resume(profile.id);
        const auto isSettled = [this] {
            verify();
            choose();
            if (review() != nullptr) decide();
            if (model->checkFailures().contains(profile.id)) model->retryCheck(profile.id);
            return model->watching(profile.id) && model->status(profile.id).title() == "Watching";
        };
        if (queue.runUntil(isSettled, 60s)) return;
        std::string lines;
        for (const auto& line : model->status(profile.id).activity) lines += "\n  " + line.text;
        throw std::runtime_error("does not come to watching: " + model->status(profile.id).title() + lines);
    }

    // What a review shows is not to be replaced on the server before it is answered.
    void reviewChanged(const Uuid&) override {
        if (review() == nullptr) return;
        if (past.empty() || past.back().reviewId != review()->reviewId) past.push_back(*review());
        for (const auto& change : review()->changes) {
            if (fs::exists(local(change.path))) unanswered[change.path] = readFile(remote(change.path));
        }
    }

    void activityLogged(const Uuid& id, const Activity& activity) override {
        constexpr std::string_view downloaded = "Downloaded newer server copy: ";
        const std::string& text = activity.text;
        require(!text.starts_with("Uploaded ") || model->watching(id), "an upload outside watching");
        // The decision on a postponed review counts only now.
        if (text.starts_with("The newer files on the server are the same")) answer(postponed.first, postponed.second);
        if (!text.starts_with(downloaded)) return;
        unanswered.erase(text.substr(downloaded.size(), text.find(" (") - downloaded.size()));
    }

    void colleagueEdits() {
        const std::string path = somePath();
        // In one step: a check must not see it with a date of before.
        server.put("incoming", "colleague " + std::to_string(++versions));
        touch(server.root() / "incoming", later += 1h);
        if (fs::create_directories(remote(path).parent_path())) server.handOver();
        fs::rename(server.root() / "incoming", remote(path));
        if (unanswered.contains(path)) unanswered[path] = readFile(remote(path));
    }

    void editLocally(const std::string& path) { writeFile(local(path), "local " + std::to_string(++versions)); }

    // Half of the time with a date after the colleague's.
    void editSomething() {
        const std::string path = somePath();
        editLocally(path);
        if (random() % 2 == 0) touch(local(path), later += 1h);
    }

    // With a date after the server's, so that by the dates alone it would go up.
    void editUnderReview() {
        if (review() == nullptr) return;
        const std::string path = review()->changes[random() % review()->changes.size()].path;
        editLocally(path);
        touch(local(path), later += 1h);
        decideLate();
        if (random() % 2 == 0) pause();
        resume();
        await();
    }

    // What is not here any more is no longer compared. One file stays: an empty folder would wait for its disk.
    void removeSomething() {
        const std::string path = somePath();
        const bool isLast = std::ranges::none_of(
            paths, [&](const std::string& other) { return other != path && fs::exists(local(other)); });
        if (isLast) return;
        fs::remove(local(path));
        unanswered.erase(path);
    }

    void pause() { model->pause(profile.id); }
    void resume() { model->resume(profile.id); }
    void await() {
        (void)queue.runUntil(
            [this] { return review() != nullptr || model->watching(profile.id) || !model->running(profile.id); }, 2s);
    }
    void retry() {
        if (random() % 4 == 0) {
            server.stop();
            pump();
            server.restart();
        }
        if (model->running(profile.id)) model->retryCheck(profile.id);
    }
    void stayPaused() {
        if (review() != nullptr) model->pauseReview(profile.id, review()->reviewId);
    }

    // What is kept is answered; what is downloaded, when it is here.
    void answer(const RemoteReview& decided, const PathSet& downloads) {
        for (const auto& change : decided.changes) {
            if (!downloads.contains(change.path)) unanswered.erase(change.path);
        }
    }

    void decideOn(const RemoteReview& decided) {
        PathSet downloads;
        for (const auto& change : decided.changes) {
            if (random() % 2 == 0) downloads.insert(change.path);
        }
        const bool isCurrent = review() != nullptr && review()->reviewId == decided.reviewId;
        const bool isWaiting = isCurrent && model->running(profile.id);
        const auto before = unanswered;
        if (isWaiting) { // uploads may begin before the call returns
            answer(decided, downloads);
        }
        switch (model->resolveReview(decided.id, decided.reviewId, downloads)) {
        case Decision::accepted:
            require(isCurrent, "a decision on another review was accepted");
            ++accepted;
            // A postponed decision is carried out only if the server is as it was.
            if (!isWaiting) postponed = {decided, downloads};
            break;
        case Decision::outdated:
            require(!isCurrent, "a decision on the review that waits was refused");
            ++outdated;
            [[fallthrough]];
        case Decision::refused:
            unanswered = before;
        }
    }

    void decide() {
        if (review() != nullptr) decideOn(RemoteReview(*review()));
    }
    void decideLate() {
        if (!past.empty()) decideOn(RemoteReview(past[random() % past.size()]));
    }

    void edit() {
        pump();
        Profile changed = *model->profile(profile.id);
        changed.name = "Site " + std::to_string(random() % 100);
        model->save(changed, std::nullopt);
    }

    // A new program still asks. For another profile nothing is recorded, so the newer side is the right one.
    void quitOrRemove() {
        if (random() % 2 == 0) {
            model.reset();
            open();
            model->startEnabled();
        } else {
            const Uuid removed = profile.id;
            model->remove(removed);
            require(queue.runUntil([&] { return model->profile(removed) == nullptr; }, 30s), "is not removed");
            profile.id = Uuid::random();
            model->save(profile, std::nullopt);
            unanswered.clear();
        }
    }

    FtpServer& server;
    std::mt19937_64 random;
    TemporaryFolder folder;
    HastyClock clock{200}; // polls and retries come at once, and do not keep the machine busy
    MainQueue queue;
    Shifts shifts;
    Profile profile;
    std::map<std::string, std::string, std::less<>> unanswered; // path to the server's version
    std::vector<RemoteReview> past;
    std::pair<RemoteReview, PathSet> postponed; // the last decision on such a review
    std::chrono::system_clock::time_point later =
        std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now());
    std::size_t versions = 0;
    std::unique_ptr<AppModel> model;
};

// Plays sequences, each with the next seed, for so many seconds at most.
void playAll(const Effort& effort) {
    FtpServer server(FtpServer::Kind::proftpd);
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(effort.seconds);
    std::size_t accepted = 0;
    std::size_t outdated = 0;
    std::size_t done = 0;
    for (; done < effort.rounds && std::chrono::steady_clock::now() < end; ++done) {
        try {
            Sequence sequence(server, effort.seed + done);
            sequence.play();
            accepted += sequence.accepted;
            outdated += sequence.outdated;
        } catch (const std::exception& error) {
            throw std::runtime_error("sequence of seed " + std::to_string(effort.seed + done) + ": " + error.what());
        }
    }
    std::printf(
        "%zu sequences: %zu decisions accepted, %zu too late; nothing replaced unanswered\n", done, accepted, outdated);
}

} // namespace

const Torture decisions{
    "decisions", "Decides on reviews at the wrong moment.", {.rounds = 1000, .seconds = 3600}, playAll};

} // namespace zembrastel::testing
