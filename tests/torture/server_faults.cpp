// A server that breaks at each step of an upload in turn: whatever the step and the way, the live file is the old or
// the new one, nothing but temporary files is left beside it, and the next upload mends it.
//
// A stalled server is left by the user's stop: curl's own patience of 15 to 240 seconds ends the same way, later.
#include "model/error.h"
#include "support/certificates.h"
#include "support/fake_clock.h"
#include "support/local_site.h"
#include "support/wait_for.h"
#include "sync/sync_worker.h"
#include "torture/seeded_run.h"

#include <cstdio>
#include <future>
#include <map>
#include <stdexcept>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, std::string> waysToBreak{{"closed", "close"},        {"reset", "reset"},
                                                     {"stalled", "stall"},       {"4xx", "450 Not just now"},
                                                     {"5xx", "553 Not allowed"}, {"421", "421 Going away"}};

constexpr std::chrono::seconds limit{60};   // for a step to be reached on a busy machine
constexpr std::size_t contentSize = 90'000; // some blocks, and more than one TLS record
constexpr std::size_t mostSteps = 200;      // far more than an upload has
constexpr std::size_t mostWaits = 20;       // of a worker that should be done after a few

struct Case {
    std::string name;
    std::string path;  // of the uploaded file
    FileTree onServer; // before the upload
};

struct Counts {
    std::map<std::string, std::size_t> faults; // by way
    std::size_t leftovers = 0;
    std::size_t mended = 0;
    std::size_t retried = 0; // by a worker, of the mended ones
};

enum class Outcome { live, failed, stopped };

// One case against one server.
class Sweep {
public:
    Sweep(FtpServer::Tls tls, Case about, bool throughWorker, std::uint64_t seed)
        : scenario(std::move(about)), usesWorker(throughWorker),
          server(FtpServer::Kind::odd, {.tls = tls, .extra = {"--break", breaking.string()}}),
          site(server, {{scenario.path, randomBytes(contentSize, seed)}}), before(scenario.onServer), after(before) {
        after["site/" + scenario.path] = readFile(site / scenario.path);
    }

    void breakEveryStep(const std::string& kind, Counts& counts) {
        const bool stalls = waysToBreak.at(kind) == "stall";
        for (step = 1; step < mostSteps; ++step) {
            what =
                scenario.name + (usesWorker ? ", by a worker" : "") + ", " + kind + " at step " + std::to_string(step);
            reset();
            writeFile(folder / "next", std::to_string(step) + " " + waysToBreak.at(kind));
            fs::rename(folder / "next", breaking);
            const Outcome outcome = attempt(stalls);
            if (fs::exists(breaking)) {
                fs::remove(breaking);
                require(outcome == Outcome::live && serverTree() == after, "sound upload failed");
                return;
            }
            ++counts.faults[kind];
            requireEntire();
            require(outcome != Outcome::live || serverTree() == after, "told as uploaded, and is not");
            counts.leftovers += leftoverPartFiles(server.root()).size();
            if (usesWorker && outcome == Outcome::live) ++counts.retried;
            require(outcome == Outcome::live || attempt(false) == Outcome::live, "not mended by the next upload");
            require(serverTree() == after, "live file is not the new one after the next upload");
            ++counts.mended;
        }
        require(false, "no upload came through");
    }

private:
    void require(bool held, const std::string& broken) const {
        if (!held) throw std::runtime_error(what + ": " + broken);
    }

    void reset() const {
        fs::remove_all(server.root());
        fs::create_directories(server.root() / "site");
        writeTree(server.root(), before);
    }

    [[nodiscard]] FileTree serverTree() const { return readPublished(server.root()); }

    void requireEntire() const {
        const FileTree tree = serverTree();
        require(tree == before || tree == after, "the server's files are neither the old nor the new ones");
    }

    Outcome attempt(bool stopWhenBroken) {
        const auto transport = site.transport();
        auto running = std::async(std::launch::async, [&] { return usesWorker ? work(transport) : upload(transport); });
        const auto ended = [&] { return running.wait_for(std::chrono::seconds(0)) == std::future_status::ready; };
        if (stopWhenBroken) {
            const bool happened = eventually([&] { return ended() || !fs::exists(breaking); }, limit);
            transport.control->cancel();
            require(happened, "neither broken nor ended");
        }
        return running.get();
    }

    [[nodiscard]] Outcome upload(const FTPTransport& transport) const {
        try {
            transport.upload(scenario.path, site.fingerprint(scenario.path));
            return Outcome::live;
        } catch (const SyncError&) {
            return Outcome::failed;
        } catch (const Cancelled&) {
            return Outcome::stopped;
        }
    }

    // A worker until the poll after the upload, through all its retries, which wait for no time.
    [[nodiscard]] Outcome work(const FTPTransport& transport) const {
        FakeClock clock;
        std::stop_source stop;
        bool live = false;
        std::size_t waits = 0;
        clock.onSleep = [&](std::chrono::nanoseconds) {
            requireEntire();
            if (live || ++waits == mostWaits) stop.request_stop();
            return !stop.stop_requested();
        };
        const auto take = [&](const WorkerEvent& event) {
            live = live || std::holds_alternative<event::Uploaded>(event);
        };
        const SyncWorker worker{
            .profile = transport.profile,
            .password = transport.password,
            .control = transport.control,
            .initialBaseline = {},
            .events = {.deliver = take, .post = take},
            .clock = clock,
            .mayReplaceUnseen = true};
        worker.run(stop.get_token());
        return live ? Outcome::live : Outcome::stopped;
    }

    Case scenario;
    bool usesWorker;
    TemporaryFolder folder;
    fs::path breaking = folder / "break";
    FtpServer server;
    LocalSite site;
    FileTree before;
    FileTree after;
    std::size_t step = 0;
    std::string what;
};

struct Plan {
    std::vector<FtpServer::Tls> protections{FtpServer::Tls::none, FtpServer::Tls::explicitTls};
    std::vector<Case> cases;
    std::uint64_t seed = 1;
};

Counts carryOut(const Plan& plan, FtpServer::Tls tls) {
    Counts counts;
    for (const Case& about : plan.cases) {
        for (const bool throughWorker : {false, true}) {
            if (throughWorker && about.name != "replacement") continue;
            Sweep sweep(tls, about, throughWorker, plan.seed);
            for (const auto& [kind, way] : waysToBreak) sweep.breakEveryStep(kind, counts);
        }
    }
    return counts;
}

void add(Counts& sum, const Counts& more) {
    for (const auto& [kind, count] : more.faults) sum.faults[kind] += count;
    sum.leftovers += more.leftovers;
    sum.mended += more.mended;
    sum.retried += more.retried;
}

void run(const Plan& plan) {
    const ScopedTrust trust(certificates().ca);
    std::vector<std::future<Counts>> running;
    for (const auto tls : plan.protections) {
        running.push_back(std::async(std::launch::async, [&plan, tls] { return carryOut(plan, tls); }));
    }
    Counts sum;
    for (auto& part : running) add(sum, part.get());
    std::string kinds;
    std::size_t all = 0;
    for (const auto& [kind, count] : sum.faults) {
        kinds += (kinds.empty() ? "" : ", ") + kind + " " + std::to_string(count);
        all += count;
    }
    std::printf(
        "%zu faults (%s): every live file old or new, %zu mended, %zu of them by the worker's own retry; %zu temporary "
        "files left on the server\n",
        all, kinds.c_str(), sum.mended, sum.retried, sum.leftovers);
}

int tortured(int count, char** arguments) {
    const std::string old = "the old page";
    Plan plan{
        .cases = {
            {.name = "replacement", .path = "page", .onServer = {{"site/page", old}, {"site/other", old}}},
            {.name = "new file", .path = "page", .onServer = {{"site/other", old}}},
            {.name = "file in new folders", .path = "a/b/page", .onServer = {{"site/other", old}}}}};
    SeededRun torture("Breaks an upload at every step, in every way.");
    torture.options.add_flag_callback(
        "--short",
        [&plan] {
            plan.protections = {FtpServer::Tls::none};
            plan.cases.resize(1);
        },
        "plain FTP and the replacement of a live file only");
    return torture.run(count, arguments, [&plan](std::uint64_t seed) {
        plan.seed = seed;
        run(plan);
    });
}

} // namespace
} // namespace zembrastel::testing

int main(int count, char** arguments) { return zembrastel::testing::tortured(count, arguments); }
