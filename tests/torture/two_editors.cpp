// Two people at one site: a colleague changes files in the server's folder, and the user changes the same files here,
// while the program publishes, is paused, suspended, restarted and killed, and the server goes and comes back. What the
// colleague made must not be lost unless the user chose that, and the user must not be asked about own uploads.
//
// Each lane has a server, a state folder and a local folder of its own. A round is repeated by its seed as far as time
// allows. Every content is unique, so its fate can be followed. Half of the rounds use the executable, half the model
// in this process, with shorter pauses.
#include "app/app_model.h"
#include "app/context/main_context.h"
#include "platform/files.h"
#include "torture/hasty_clock.h"
#include "torture/program_run.h"
#include "torture/torture.h"

#include <array>
#include <fcntl.h>
#include <future>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sys/stat.h>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using std::chrono::milliseconds;
using Time = std::chrono::system_clock::time_point;
using Random = std::mt19937_64;
using Paths = std::set<std::string, std::less<>>;

constexpr std::array paths{"index.html", "page.html", "style.css", "sub/news.html", "sub/list.html"};
constexpr const char* name = "site";
constexpr auto seenLong = 1s; // a version that was on the server for longer must not be lost
constexpr auto dateStep = 2s; // a difference of dates that any server and any comparison sees
constexpr auto inStepAfter = 60s;
constexpr std::size_t smallest = 100; // longer than a content's first line

std::size_t below(Random& random, std::size_t end) { return random() % end; }
milliseconds upTo(Random& random, milliseconds most) {
    return milliseconds(below(random, std::size_t(most.count()) + 1));
}
std::string anyPath(Random& random) { return paths[below(random, paths.size())]; }
Time rightNow() { return std::chrono::system_clock::now(); }

// Puts the draft in the file's place at once. What stood there, if anything.
std::optional<std::string> putInPlace(const fs::path& draft, const fs::path& file) {
    while (::renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, file.c_str(), RENAME_EXCHANGE) != 0) {
        if (::renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0) return std::nullopt;
    }
    return readFile(draft);
}

struct Version {
    std::string path;
    bool theirs = false;
    Time appeared{}; // on the server; only of theirs
    Time lastSeen{}; // there
    bool wasLive = false;
    bool touched = false; // by the colleague, after the program uploaded it
    bool settled = false; // replaced by its author, seen by the user, or chosen to be replaced
};

// Both folders, the two who change them, and what became of every version. Any thread.
class Site {
public:
    Site(fs::path localFolder, fs::path remoteFolder, fs::path draftFolder)
        : local(std::move(localFolder)), remote(std::move(remoteFolder)), drafts(std::move(draftFolder)) {
        for (const auto& folder : {local, remote}) fs::create_directories(folder / "sub");
        fs::create_directory(drafts);
    }

    void colleagueActs(Random& random) {
        const std::scoped_lock lock(mutex);
        const std::string path = anyPath(random);
        const fs::path file = remote / path;
        const bool isOld = below(random, 4) == 0;
        const Time date = rightNow() - (isOld ? std::chrono::hours(1 + below(random, 500)) : 0h);
        look();
        const auto isThere = live.find(path);
        if (isThere != live.end() && below(random, 5) == 0) {
            if (looksLikeEarlier(path, isThere->second.size(), date)) return;
            touch(file, date);
            if (isThere->second.version != nullptr) isThere->second.version->touched = true;
            look();
            return;
        }
        std::size_t size = anySize(random);
        if (isThere != live.end() && below(random, 3) == 0) size = isThere->second.size();
        while (looksLikeEarlier(path, size, date)) ++size;
        auto& version = write(drafts / "theirs", path, true, size, random);
        touch(drafts / "theirs", date);
        settle(putInPlace(drafts / "theirs", file));
        version.appeared = rightNow();
        look();
    }

    void userSaves(const std::string& path, Random& random) {
        const std::scoped_lock lock(mutex);
        const fs::path file = local / path;
        const bool hasSameSize = fs::exists(file) && below(random, 3) == 0;
        write(drafts / "ours", path, false, hasSameSize ? fs::file_size(file) : anySize(random), random);
        settle(putInPlace(drafts / "ours", file));
    }

    // Keeps an eye on the server's folder.
    void observe() {
        const std::scoped_lock lock(mutex);
        look();
    }

    void reviewAppeared(const Paths& offered) {
        const std::scoped_lock lock(mutex);
        look();
        for (const auto& path : offered) {
            const auto seen = live.find(path);
            if (seen == live.end() || seen->second.version == nullptr) continue;
            const auto& version = *seen->second.version;
            if (!version.theirs && !version.touched) broken += "own upload offered in a review: " + path + "\n";
        }
    }

    // The user chose to replace what a review of that time listed.
    void allow(const Paths& kept, Time listed) {
        const std::scoped_lock lock(mutex);
        for (auto& [content, version] : versions) {
            if (version.theirs && version.appeared <= listed && kept.contains(version.path)) version.settled = true;
        }
    }

    // A local file that the server does not have as it is.
    [[nodiscard]] std::optional<std::string> difference() {
        const std::scoped_lock lock(mutex);
        for (const std::string path : paths) {
            if (!fs::exists(local / path)) continue;
            if (!fs::exists(remote / path) || readFile(local / path) != readFile(remote / path)) return path;
        }
        return std::nullopt;
    }

    // What was broken since the last time.
    [[nodiscard]] std::string takeBroken() {
        const std::scoped_lock lock(mutex);
        look();
        for (const auto& [path, content] : readTree(local)) settle(content); // backups too
        for (auto& [content, version] : versions) {
            const auto now = live.find(version.path);
            if (!version.theirs || version.settled || (now != live.end() && now->second.version == &version)) continue;
            version.settled = true;
            const auto age = std::chrono::duration_cast<milliseconds>(version.lastSeen - version.appeared);
            if (age <= seenLong) continue;
            broken += "replaced unseen: the colleague's " + version.path + ", on the server for "
                      + std::to_string(age.count()) + " ms\n";
        }
        return std::exchange(broken, {});
    }

    [[nodiscard]] std::size_t liveVersions(bool theirs) {
        const std::scoped_lock lock(mutex);
        return static_cast<std::size_t>(std::ranges::count_if(
            versions, [&](const auto& entry) { return entry.second.wasLive && entry.second.theirs == theirs; }));
    }

private:
    using Signature = std::array<std::int64_t, 6>;
    struct Live {
        Signature signature{};
        Version* version = nullptr; // nothing for a torn one

        [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(signature[1]); }
    };

    static std::size_t anySize(Random& random) {
        return smallest + below(random, below(random, 10) == 0 ? 400'000 : 20'000);
    }

    Version& write(const fs::path& draft, const std::string& path, bool theirs, std::size_t size, Random& random) {
        std::string content = (theirs ? "colleague " : "user ") + std::to_string(random()) + "\n";
        content.resize(size, '.');
        writeFile(draft, content);
        return versions.emplace(content, Version{.path = path, .theirs = theirs}).first->second;
    }

    // A version of the same size was there with nearly the same date: no program could distinguish the two.
    [[nodiscard]] bool looksLikeEarlier(const std::string& path, std::size_t size, Time date) const {
        const auto known = history.find(path);
        return known != history.end() && std::ranges::any_of(known->second, [&](const auto& earlier) {
                   return earlier.first == size && std::chrono::abs(earlier.second - date) <= dateStep;
               });
    }

    void settle(const std::optional<std::string>& content) {
        if (!content) return;
        if (const auto found = versions.find(*content); found != versions.end()) found->second.settled = true;
    }

    void look() {
        for (const std::string path : paths) {
            const Descriptor file(::open((remote / path).c_str(), O_RDONLY | O_CLOEXEC));
            struct stat status {};
            if (!file || ::fstat(file.get(), &status) != 0) {
                if (live.erase(path) > 0) broken += "live file is gone: " + path + "\n";
                continue;
            }
            Live& known = live[path];
            const Signature signature{std::int64_t(status.st_ino), status.st_size,        status.st_mtim.tv_sec,
                                      status.st_mtim.tv_nsec,      status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
            if (known.signature != signature) {
                const auto found = versions.find(readContents(file.get(), remote / path));
                if (found == versions.end()) broken += "live file is torn: " + path + "\n";
                known.signature = signature;
                const Time date(std::chrono::seconds(status.st_mtim.tv_sec));
                history[path].emplace_back(known.size(), date);
                known.version = found == versions.end() ? nullptr : &found->second;
            }
            if (known.version == nullptr) continue;
            known.version->lastSeen = rightNow();
            known.version->wasLive = true;
        }
    }

    const fs::path local;
    const fs::path remote;
    const fs::path drafts;
    std::mutex mutex;
    std::map<std::string, Version> versions; // by content
    std::map<std::string, Live> live;
    std::map<std::string, std::vector<std::pair<std::size_t, Time>>> history; // sizes and dates on the server, by path
    std::string broken;
};

struct Review {
    Time seen; // when it listed the files, at the latest
    Paths paths;
    std::string list{}; // its ID; only of the executable
};

// The program, as those see it who start, disturb and answer it.
class Publisher {
public:
    virtual ~Publisher() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void workFor(milliseconds time) = 0;
    virtual void disturb(Random& random) = 0; // it works on in the end
    virtual std::optional<Review> review() = 0;
    virtual void decide(const Review& review, const Paths& downloaded) = 0;
};

class Executable final : public Publisher {
public:
    Executable(const CliPlace& where, const FtpServer& used) : place(where), server(used) {}

    void start() override { program.emplace(place, Texts{"--json", "watch", name}); }

    // The first comparison: what is on the server before it may be replaced.
    void compareFirst() {
        start();
        (void)program->waitForLines(1, "\"title\":\"Watching\"", {});
        stop();
    }

    void stop() override {
        const int status = program->stop();
        const bool hadBegun = !program->output().empty(); // before that, a signal just ends it
        require(status == 0 || !hadBegun, "the program did not end well: " + place.errors());
        program.reset();
    }

    void workFor(milliseconds time) override { std::this_thread::sleep_for(time); }

    void disturb(Random& random) override {
        switch (below(random, 4)) {
        case 0:
            (void)place.run(Texts{"pause", name});
            workFor(upTo(random, 1500ms));
            (void)place.run(Texts{"resume", name});
            return;
        case 1:
            return program->suspendFor(upTo(random, 2000ms));
        case 2:
            stop();
            workFor(upTo(random, 1500ms));
            return start();
        default:
            const auto children = program->kill(below(random, 2) == 0);
            program->wait();
            if (children) requireTransfersEnded(*children, server);
            program.reset();
            workFor(upTo(random, 1500ms));
            start();
        }
    }

    std::optional<Review> review() override {
        const auto line = program->newest("\"event\":\"review\"");
        if (!line || line->first <= decided) return std::nullopt;
        Review review{.seen = line->first, .paths = {}};
        for (const std::string path : paths) {
            if (line->second.find("\"path\":\"" + path + "\"") != std::string::npos) review.paths.insert(path);
        }
        constexpr std::string_view key = "\"list\":\"";
        const auto id = line->second.find(key) + key.size();
        review.list = line->second.substr(id, line->second.find('"', id) - id);
        return review;
    }

    void decide(const Review& review, const Paths& downloaded) override {
        Texts options{"review", name, "--listed", review.list};
        if (downloaded.empty())
            options.emplace_back("--keep-all");
        else
            for (const auto& path : downloaded) options.insert(options.end(), {"--download", path});
        decided = review.seen;
        (void)place.run(options);
    }

private:
    const CliPlace& place;
    const FtpServer& server;
    std::optional<ProgramRun> program;
    Time decided{};
};

class Model final : public Publisher, private ModelObserver {
public:
    Model(const CliPlace& where, Uuid profile, std::string login)
        : place(where), id(std::move(profile)), password(std::move(login)) {}
    ~Model() override { stop(); }

    void start() override {
        model = std::make_unique<AppModel>(
            queue,
            AppModel::Options{
                .storeOverride = StateStore(place.state()), .sessionPasswords = {{id, password}}, .clock = clock});
        model->observe(*this);
        model->start(id);
    }

    void stop() override { model.reset(); }

    void workFor(milliseconds time) override {
        queue.runUntil([] { return false; }, time);
    }

    void disturb(Random& random) override {
        const bool restarts = below(random, 2) == 0;
        restarts ? stop() : model->pause(id);
        workFor(upTo(random, 1500ms));
        restarts ? start() : model->resume(id);
    }

    std::optional<Review> review() override {
        const auto found = model->reviews().find(id);
        if (found == model->reviews().end()) return std::nullopt;
        Review review{.seen = reviewSeen, .paths = {}};
        for (const auto& change : found->second.changes) review.paths.insert(change.path);
        reviewId = found->second.reviewId;
        return review;
    }

    void decide(const Review&, const Paths& downloaded) override {
        (void)model->resolveReview(id, reviewId, downloaded);
    }

private:
    void reviewChanged(const Uuid&) override { reviewSeen = rightNow(); }

    const CliPlace& place;
    Uuid reviewId = Uuid::random(); // of the one that was looked at last
    const Uuid id;
    const std::string password;
    HastyClock clock{8};
    MainQueue queue;
    std::unique_ptr<AppModel> model;
    Time reviewSeen{};
};

struct Counts {
    std::size_t rounds = 0;
    std::size_t disturbances = 0;
    std::size_t outages = 0;
    std::size_t kept = 0;
    std::size_t downloaded = 0;
    std::size_t theirs = 0;
    std::size_t ours = 0;

    void add(const Counts& other) {
        constexpr std::array figures{&Counts::rounds,     &Counts::disturbances, &Counts::outages, &Counts::kept,
                                     &Counts::downloaded, &Counts::theirs,       &Counts::ours};
        for (const auto figure : figures) this->*figure += other.*figure;
    }
};

class Lane {
public:
    explicit Lane(FtpServer::Kind kind) : server(kind) {
        Profile profile = profileFor(server, place.path("site"), server.remoteFolder("site"));
        profile.name = name;
        profile.enabled = true;
        place.saveProfile(profile);
        place.savePassword(server.password());
        executable = std::make_unique<Executable>(place, server);
        executable->compareFirst();
        model = std::make_unique<Model>(place, profile.id, server.password());
    }

    ~Lane() { observer.request_stop(); }

    // What was broken; nothing when all is well.
    std::string round(std::uint64_t seed) {
        Random random(seed);
        const bool inProcess = below(random, 2) == 0;
        publisher = inProcess ? static_cast<Publisher*>(model.get()) : executable.get();
        publisher->start();
        {
            const auto length = inProcess ? 2500ms : 6000ms;
            const auto colleague = atWork(random(), length, [this](Random& own) { site.colleagueActs(own); });
            const auto user = atWork(random(), length, [this](Random& own) { site.userSaves(anyPath(own), own); });
            for (const Time end = rightNow() + length; rightNow() < end;) happen(random);
        }
        publisher->stop();
        getInStep(random);
        publisher->stop();
        ++counts.rounds;
        return site.takeBroken();
    }

    [[nodiscard]] Counts counted() {
        counts.theirs = site.liveVersions(true);
        counts.ours = site.liveVersions(false);
        return counts;
    }

private:
    static std::jthread atWork(std::uint64_t seed, milliseconds length, std::function<void(Random&)> act) {
        return std::jthread([random = Random(seed), length, act = std::move(act)](const std::stop_token& stop) mutable {
            const std::size_t actions = 1 + below(random, 5);
            while (systemClock().sleep(stop, upTo(random, 2 * length / (actions + 1)))) act(random);
        });
    }

    void happen(Random& random) {
        publisher->workFor(upTo(random, 300ms));
        const auto kind = below(random, 24);
        if (kind == 0) {
            server.stop();
            ++counts.outages;
            publisher->workFor(upTo(random, 700ms));
            server.restart();
        } else if (kind < 3) {
            publisher->disturb(random);
            ++counts.disturbances;
        }
        answerReview(random, 3);
    }

    // Notices a review, and decides on it in one of so many cases.
    void answerReview(Random& random, std::size_t cases) {
        const auto review = publisher->review();
        if (!review) return;
        if (std::exchange(noticed, review->seen) != review->seen) site.reviewAppeared(review->paths);
        if (below(random, cases) != 0) return;
        Paths downloaded;
        Paths kept;
        for (const auto& path : review->paths) (below(random, 2) == 0 ? kept : downloaded).insert(path);
        site.allow(kept, review->seen);
        publisher->decide(*review, downloaded);
        counts.kept += kept.size();
        counts.downloaded += downloaded.size();
        toSaveAgain.merge(kept);
    }

    // A local version that was kept goes up once it is saved again.
    void getInStep(Random& random) {
        publisher->start();
        std::optional<std::string> differs;
        for (const Time end = rightNow() + inStepAfter; (differs = site.difference());) {
            for (const auto& path : std::exchange(toSaveAgain, {})) site.userSaves(path, random);
            require(rightNow() < end, "the two sides stay different: " + *differs);
            publisher->workFor(50ms);
            answerReview(random, 1);
        }
        toSaveAgain.clear();
    }

    FtpServer server;
    CliPlace place;
    Site site{place.path("site"), server.root() / "site", place.path("drafts")};
    std::unique_ptr<Executable> executable;
    std::unique_ptr<Model> model;
    Publisher* publisher = nullptr;
    Paths toSaveAgain;
    Time noticed{};
    Counts counts;
    std::jthread observer{[this](const std::stop_token& stop) {
        while (systemClock().sleep(stop, 20ms)) site.observe();
    }};
};

void run(const Effort& effort) {
    const auto seed = effort.seed;
    const auto rounds = effort.rounds;
    const auto lanes = effort.lanes;
    std::mutex mutex;
    Counts sum;
    std::size_t failed = 0;
    const auto work = [&](std::size_t number) {
        std::unique_ptr<Lane> lane;
        for (std::size_t i = number; i < rounds; i += lanes) {
            if (!lane)
                lane = std::make_unique<Lane>(number % 2 == 0 ? FtpServer::Kind::proftpd : FtpServer::Kind::vsftpd);
            std::string broken;
            try {
                broken = lane->round(seed + i);
            } catch (const std::exception& error) {
                broken = std::string(error.what()) + "\n";
            }
            if (broken.empty() && i + lanes < rounds) continue;
            const std::scoped_lock lock(mutex);
            sum.add(lane->counted());
            lane.reset(); // the next round begins with new folders
            if (broken.empty()) continue;
            ++failed;
            std::printf("round %zu: %s", i, broken.c_str());
        }
    };
    {
        std::vector<std::jthread> running;
        for (std::size_t number = 0; number < lanes; ++number) running.emplace_back(work, number);
    }
    std::printf(
        "%zu rounds, %zu failed; on the server %zu versions of the colleague and %zu of the user; reviews: %zu files "
        "kept, %zu downloaded; %zu pauses, suspensions, restarts and kills, %zu outages\n",
        rounds, failed, sum.theirs, sum.ours, sum.kept, sum.downloaded, sum.disturbances, sum.outages);
    require(failed == 0, std::to_string(failed) + " rounds broke a promise");
}

} // namespace

const Torture twoEditors{
    "two_editors", "A colleague and the user change the same files.", {.rounds = 1000, .lanes = 12}, run};

} // namespace zembrastel::testing
