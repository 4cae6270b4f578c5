// The model under a user in a hurry: everything that it can be asked, in any order and at any moment, while servers
// come and go and files change on both sides. It must never hang, nothing of an ended job may be heard again, and when
// it has gone, nothing of it may be left.
//
// The seed repeats what is asked; when threads run it cannot repeat.
#include "app/app_model.h"
#include "app/context/main_context.h"
#include "model/error.h"
#include "support/file_tree.h"
#include "support/process_figures.h"
#include "support/unsteady_servers.h"
#include "support/wait_for.h"
#include "torture/hasty_clock.h"
#include "torture/torture.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;
using Random = std::mt19937_64;

constexpr std::size_t places = 6;
constexpr std::size_t pathsInUse = 8;
constexpr unsigned hangsAfter = 60; // seconds

std::string pathOf(std::size_t number) { return (number % 3 == 0 ? "deep/" : "") + ("page " + std::to_string(number)); }

// A secret store that takes its time and fails now and then.
class SlowKeyring {
public:
    explicit SlowKeyring(std::string theOne) : password(std::move(theOne)) {}

    [[nodiscard]] AppModel::PasswordAccess access() {
        return {
            .save = [this](const std::string&, const Uuid&) { answer(); },
            .read =
                [this](const Uuid&) {
                    answer();
                    return password;
                },
            .remove = [this](const Uuid&) { answer(); }};
    }

private:
    void answer() {
        const auto call = ++calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(call % 3 == 0 ? 60 : 1));
        if (call % 9 == 0) throw SyncError("Keychain: no answer.");
    }

    const std::string password;
    std::atomic<unsigned> calls = 0;
};

// Ends the whole program if one call takes too long: prints the call.
class Watchdog {
public:
    Watchdog() {
        std::signal(SIGALRM, [](int) {
            (void)!::write(STDOUT_FILENO, "FAILED: hangs in ", 17);
            (void)!::write(STDOUT_FILENO, doing.load(), std::strlen(doing.load()));
            ::_exit(1);
        });
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog() { ::alarm(0); }

    static void begin(const char* call) {
        doing = call;
        ::alarm(hangsAfter);
    }

private:
    static inline std::atomic<const char*> doing = "start";
};

// All that is published of a profile. Without a request it does not change, unless there is a job.
struct Published {
    Published(const AppModel& model, const Uuid& id)
        : there(model.profile(id) != nullptr), running(model.running(id)), status(model.status(id)),
          review(model.reviews().contains(id)), failure(model.checkFailures().contains(id)),
          baseline(model.baseline(id)), dates(model.remoteDates(id)) {}

    [[nodiscard]] bool isNothing() const {
        const bool shown = status.title() != ProfileStatus().title() || !status.activity.empty();
        return !there && !running && !shown && !review && !failure && baseline.empty() && dates.empty();
    }

    // The newest line of the log stands for all of it.
    [[nodiscard]] auto values() const {
        const auto newest = status.activity.empty() ? Uuid() : status.activity.front().id;
        return std::tuple(
            there, running, status.title(), status.detail, status.active(), status.failed(), status.uploaded,
            status.pending, status.lastUpload, newest, review, failure, baseline, dates);
    }

    bool there;
    bool running;
    ProfileStatus status;
    bool review;
    bool failure;
    FileMap baseline;
    RemoteDates dates;
};

class Storm final : public ModelObserver {
public:
    explicit Storm(std::uint64_t seed)
        : random(seed), servers({FtpServer::Kind::proftpd, FtpServer::Kind::vsftpd}, places, seed),
          keyring(servers.password()) {
        for (std::size_t place = 0; place < places; ++place) {
            for (std::size_t number = 0; number < pathsInUse; ++number) {
                writeFile((number % 2 == 0 ? local(place) : servers.folder(place)) / pathOf(number), "the first");
            }
            profiles.push_back(servers.profile(place, local(place)));
        }
        // Two that cannot run at a time.
        profiles.push_back(servers.profile(0, local(0)));
    }

    void rage(Steady::duration duration) {
        std::jthread([] {}).join(); // the thread sanitizer's own comes with the first
        const auto before = held();
        {
            const Watchdog watchdog;
            std::jthread editor([this, own = Random(random())](const std::stop_token& stop) { edit(stop, own); });
            servers.unsteady(1500ms, 400ms);
            ownThreads = threadsOf(::getpid());
            open();
            for (const auto end = Steady::now() + duration; Steady::now() < end;) step();
            quit();
            servers.steady();
        }
        const bool clean = eventually([&] { return held() == before; });
        const auto [threads, descriptors, children] = held();
        std::printf(
            "%zu calls, %zu times quit and reloaded, servers stopped %zu times, %zu uploads; threads %zu to %zu, "
            "descriptors %zu to %zu, children %zu to %zu\n",
            calls, quits, servers.stops(), uploads, std::get<0>(before), threads, std::get<1>(before), descriptors,
            std::get<2>(before), children);
        require(clean, "something is left of the model");
        for (std::size_t place = 0; place < places; ++place) {
            for (const auto& path : leftoverPartFiles(local(place))) {
                require(path.starts_with(".zembrastel-backups/"), "left in the local folder: " + path);
            }
        }
    }

    void activityLogged(const Uuid&, const Activity& activity) override {
        uploads += activity.text.starts_with("Uploaded ") ? 1 : 0;
    }

private:
    using Call = void (Storm::*)(Profile&);

    [[nodiscard]] fs::path local(std::size_t place) const { return folder / ("local " + std::to_string(place)); }
    [[nodiscard]] StateStore store() const { return StateStore(folder / "state"); }

    // Threads, descriptors and children of this process.
    static std::tuple<std::size_t, std::size_t, std::size_t> held() {
        return {threadsOf(::getpid()), descriptorsOf(::getpid()), childrenOf(::getpid()).size()};
    }

    std::size_t upTo(std::size_t most) { return random() % (most + 1); }

    // A user at work on both sides; on the server later than anything before, so that it counts as newer.
    void edit(const std::stop_token& stop, Random own) const {
        auto later = std::chrono::ceil<std::chrono::seconds>(std::chrono::system_clock::now());
        while (systemClock().sleep(stop, std::chrono::milliseconds(own() % 30))) {
            const auto place = own() % places;
            const auto path = pathOf(own() % pathsInUse);
            const auto kind = own() % 8;
            const auto file = (kind == 0 ? servers.folder(place) : local(place)) / path;
            kind == 1 ? void(fs::remove(file)) : writeFile(file, randomBytes(own() % 50'000, own()));
            if (kind == 0) touch(file, later += 1h);
        }
    }

    void open() {
        Watchdog::begin("load");
        AppModel::Options options{.storeOverride = store(), .passwordAccess = keyring.access(), .clock = clock};
        model = std::make_unique<AppModel>(queue, std::move(options));
        require(!model->alert(), "the state does not load");
        model->observe(*this);
        model->startEnabled();
    }

    // What was shown last is what the next start finds, and no thread or folder outlives the model.
    void quit() {
        Watchdog::begin("quit");
        if (upTo(1) == 0) model->shutdown();
        std::map<Uuid, Published> shown;
        std::vector<Profile> known = model->profiles();
        for (const auto& profile : known) shown.emplace(profile.id, Published(*model, profile.id));
        model.reset();
        auto saved = store().load();
        if (!saved.remoteDates) saved.remoteDates.emplace();
        for (const auto& [id, last] : shown) {
            require(saved.baselines[id] == last.baseline, "a baseline was not saved");
            require((*saved.remoteDates)[id] == last.dates, "a date was not saved");
        }
        require(saved.profiles == known, "a profile was not saved");
        require(eventually([&] { return threadsOf(::getpid()) == ownThreads; }), "a thread outlives the model");
        for (const auto& entry : fs::directory_iterator(fs::temp_directory_path())) {
            const std::string name = entry.path().filename();
            const bool isOurs = Uuid::parse(name.substr(std::min(name.size(), name.find('-') + 1))).has_value();
            require(!isOurs, "a temporary folder was left behind: " + name);
        }
        pump(5ms); // what was posted to the model that has gone
        gone.clear();
        removing.clear();
        ++quits;
    }

    void step() {
        static constexpr std::array<std::tuple<const char*, Call, std::size_t>, 13> all{
            {{"start", &Storm::start, 4},
             {"stop", &Storm::stop, 2},
             {"toggle", &Storm::toggle, 4},
             {"save", &Storm::save, 3},
             {"remove", &Storm::remove, 1},
             {"select", &Storm::select, 2},
             {"open review", &Storm::openReview, 1},
             {"close review", &Storm::closeReview, 1},
             {"pause review", &Storm::pauseReview, 1},
             {"resolve review", &Storm::resolveReview, 3},
             {"retry check", &Storm::retryCheck, 2},
             {"start without check", &Storm::startWithoutCheck, 2},
             {"start enabled", &Storm::startEnabled, 1}}};
        if (upTo(40) == 0) {
            quit();
            open();
        }
        auto choice = upTo(26);
        const auto chosen = std::ranges::find_if(all, [&choice](const auto& call) {
            const bool hit = choice < std::get<2>(call);
            choice -= hit ? 0 : std::get<2>(call);
            return hit;
        });
        call(std::get<0>(*chosen), std::get<1>(*chosen), profiles[upTo(profiles.size() - 1)]);
        pumpAndCompare(std::get<0>(*chosen));
    }

    void call(const char* name, Call chosen, Profile& profile) {
        Watchdog::begin(name);
        ++calls;
        try {
            // A removed one comes back as another, now and then.
            (this->*(model->profile(profile.id) == nullptr && upTo(4) == 0 ? &Storm::save : chosen))(profile);
        } catch (const SyncError&) {
            // Refused.
        }
    }

    void pump(std::chrono::milliseconds time) {
        (void)queue.runUntil([] { return false; }, time);
    }

    // Nothing of a job that was ended may be heard again.
    void pumpAndCompare(const char* after) {
        std::map<Uuid, Published> still;
        for (const auto& profile : model->profiles()) {
            if (!model->running(profile.id)) still.emplace(profile.id, Published(*model, profile.id));
        }
        Watchdog::begin("events");
        pump(std::chrono::milliseconds(upTo(60) == 0 ? 600 : upTo(9) == 0 ? upTo(250) : upTo(8)));
        for (const auto& [id, before] : still) {
            const Published now(*model, id);
            if (!now.there && removing.contains(id)) continue;
            require(
                now.values() == before.values(), std::string("after \"") + after + "\" a profile at rest went from \""
                                                     + before.status.title() + "\" to \"" + now.status.title()
                                                     + "\": " + now.status.detail);
        }
        for (const auto& id : removing) {
            if (model->profile(id) == nullptr) gone.insert(id);
        }
        for (const auto& id : gone)
            require(Published(*model, id).isNothing(), "something is left of a removed profile");
        require(!model->selection() || !gone.contains(*model->selection()), "a removed one selected");
        if (model->alert()) model->dismissAlert();
    }

    void start(Profile& profile) { model->start(profile.id); }
    void stop(Profile& profile) { model->stopJob(profile.id); }
    void toggle(Profile& profile) { model->toggle(profile.id); }
    void select(Profile& profile) {
        if (model->profile(profile.id) != nullptr) model->select(profile.id);
    }
    void openReview(Profile& profile) { model->openReview(profile.id); }
    void closeReview(Profile&) { model->closeReview(); }
    void pauseReview(Profile& profile) {
        const auto review = model->reviews().find(profile.id);
        if (review != model->reviews().end()) model->pauseReview(profile.id, review->second.reviewId);
    }
    void retryCheck(Profile& profile) { model->retryCheck(profile.id); }
    void startEnabled(Profile&) { model->startEnabled(); }

    void startWithoutCheck(Profile& profile) {
        if (model->running(profile.id)) model->startWithoutCheck(profile.id);
    }

    void remove(Profile& profile) {
        if (model->profile(profile.id) == nullptr) return;
        model->remove(profile.id);
        removing.insert(profile.id);
    }

    void save(Profile& profile) {
        if (gone.contains(profile.id)) profile.id = Uuid::random();
        if (const Profile* stored = model->profile(profile.id)) profile = *stored;
        Profile changed = profile;
        changed.name = "name " + std::to_string(upTo(999));
        changed.enabled = upTo(3) != 0;
        changed.exclusions = Exclusions(upTo(1) == 0 ? "page 2\n.zembrastel-*" : "*.tmp");
        changed.syncSelection.reset();
        if (const auto kind = upTo(5); kind < 2) changed.syncSelection = DownloadSelection{};
        if (changed.syncSelection && upTo(2) != 0) changed.syncSelection->rules = {{"", true}, {"deep", upTo(1) == 0}};
        changed.needsDownload = upTo(3) == 0;
        if (upTo(2) != 0) changed.initialDownloadSelection = DownloadSelection::everything();
        model->save(changed, upTo(3) == 0 ? std::optional(servers.password()) : std::nullopt);
    }

    void resolveReview(Profile& profile) {
        const auto review = model->reviews().find(profile.id);
        if (review == model->reviews().end()) return;
        std::set<std::string, std::less<>> paths;
        for (const auto& change : review->second.changes) {
            if (upTo(1) == 0) paths.insert(change.path);
        }
        (void)model->resolveReview(profile.id, upTo(3) == 0 ? Uuid() : review->second.reviewId, paths);
    }

    Random random;
    TemporaryFolder folder;
    UnsteadyServers servers;
    SlowKeyring keyring;
    HastyClock clock{40};
    MainQueue queue;
    std::vector<Profile> profiles; // as last seen; the model has them or not
    std::unique_ptr<AppModel> model;
    std::size_t ownThreads = 0;
    std::set<Uuid> removing;
    std::set<Uuid> gone;
    std::size_t calls = 0;
    std::size_t quits = 0;
    std::size_t uploads = 0;
};

} // namespace

const Torture threads{
    "threads", "Asks the model for everything at any moment.", {.seconds = 300}, [](const Effort& effort) {
        Storm(effort.seed)
            .rage(std::chrono::duration_cast<Steady::duration>(std::chrono::duration<double>(effort.seconds)));
    }};

} // namespace zembrastel::testing
