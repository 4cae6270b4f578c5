// The real program left running: many profiles under constant edits, servers that come and go. It must not need more
// and more of the machine, and in the end every server has what the local folder has.
//
// The seed repeats the edits and the servers' moments; the processes' own timing it cannot repeat.
#include "../cli/cli_run.h"
#include "model/state_store.h"
#include "platform/clock.h"
#include "support/process_figures.h"
#include "support/unsteady_servers.h"
#include "support/wait_for.h"
#include "torture/program_run.h"
#include "torture/seeded_run.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

constexpr const char* uploaded = "  Uploaded ";
constexpr std::size_t pathsInUse = 12;
constexpr auto editEvery = 80ms;
constexpr auto sampleEvery = 1s;
constexpr std::size_t warmedUp = 4; // tenths of the time: the logs, which are bounded, are full by then
constexpr double mostGrowth = 1.05;
constexpr auto shortestToJudge = 600s;
constexpr auto catchUpWithin = 180s; // longer than the longest pause between two tries

struct Sample {
    std::size_t resident = 0; // KiB
    std::size_t descriptors = 0;
    std::size_t threads = 0;
};

class Endurance {
public:
    Endurance(std::uint64_t seed, std::size_t profiles)
        : random(seed),
          servers(
              {FtpServer::Kind::proftpd, FtpServer::Kind::vsftpd, FtpServer::Kind::proftpd, FtpServer::Kind::vsftpd},
              profiles, seed) {
        SavedState state;
        for (std::size_t place = 0; place < profiles; ++place) {
            fs::create_directory(local(place));
            state.profiles.push_back(servers.profile(place, local(place)));
            state.profiles.back().enabled = true;
            writePaths(place);
        }
        StateStore(stand.state()).save(state);
        stand.savePassword(servers.password());
    }

    void run(std::chrono::seconds duration) {
        ProgramRun program(stand, {"watch", "--password-file", stand.passwordFile().string()});
        require(program.waitForLines(1, uploaded, {}), "nothing is uploaded");
        servers.unsteady(8s, 8s);
        work(program.pid(), duration);
        servers.steady();
        finish();
        // A file is live a moment before the program knows it; a stop in between leaves it to be compared again.
        if (!eventually([this] { return !forgotten(); })) requireRemembered();
        require(program.stop() == 0, "the program did not end well");
        require(entriesIn(stand.temporary()) == 0, "temporary folders were left behind");
        requireRemembered();
        const auto told = program.told();
        report(duration, std::ranges::count_if(told, [](const std::string& line) {
                   return line.find(uploaded) != line.npos;
               }));
    }

private:
    [[nodiscard]] fs::path local(std::size_t place) const { return stand.path("local " + std::to_string(place)); }

    [[nodiscard]] std::size_t places() const { return StateStore(stand.state()).load().profiles.size(); }

    static std::string pathOf(std::size_t number) {
        return (number % 3 == 0 ? "deep/er/" : "") + ("page " + std::to_string(number));
    }

    void edit(std::size_t place, const std::string& path) {
        writeFile(local(place) / path, randomBytes(1 + random() % 20'000, random()));
        ++edits;
    }

    void writePaths(std::size_t place) {
        for (std::size_t number = 0; number < pathsInUse; ++number) {
            if (const auto path = pathOf(number); !fs::exists(local(place) / path)) edit(place, path);
        }
    }

    void work(pid_t process, std::chrono::seconds duration) {
        const auto count = places();
        const auto end = Steady::now() + duration;
        auto nextSample = Steady::now();
        while (Steady::now() < end) {
            const auto place = random() % count;
            const auto path = pathOf(random() % pathsInUse);
            random() % 8 == 0 ? void(fs::remove(local(place) / path)) : edit(place, path);
            if (Steady::now() >= nextSample) {
                samples.push_back(
                    {.resident = kibibytesOf(process, "VmRSS"),
                     .descriptors = descriptorsOf(process),
                     .threads = threadsOf(process)});
                nextSample += sampleEvery;
            }
            std::this_thread::sleep_for(editEvery); // the pace of the editors
        }
    }

    // Nothing may be different once the servers have had time.
    void finish() {
        for (std::size_t place = 0; place < places(); ++place) {
            writePaths(place);
            const auto same = [&] {
                try {
                    return readTree(local(place)) == readPublished(servers.folder(place));
                } catch (const std::system_error&) { // a transfer went on meanwhile
                    return false;
                }
            };
            require(eventually(same, catchUpWithin), "profile " + std::to_string(place) + " differs from its server");
        }
    }

    // The first local file of which the saved state does not know the version that is on the server; nothing if none.
    [[nodiscard]] std::optional<fs::path> forgotten() const {
        const auto state = StateStore(stand.state()).load();
        for (const auto& profile : state.profiles) {
            const auto& known = state.baselines.at(profile.id);
            for (std::size_t number = 0; number < pathsInUse; ++number) {
                const auto file = fs::path(profile.localFolder) / pathOf(number);
                const auto* version = known.find(pathOf(number));
                if (version == nullptr || *version != Fingerprint::read(file)) return file;
            }
        }
        return std::nullopt;
    }

    void requireRemembered() const {
        const auto file = forgotten();
        require(!file, "an upload is forgotten: " + file.value_or("").string());
    }

    // Without the transfers of the moment, which come and go.
    [[nodiscard]] std::size_t atRest(std::size_t Sample::*figure, std::size_t tenth) const {
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * tenth / 10);
        const auto last = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * (tenth + 1) / 10);
        require(first != last, "too short a time");
        return std::ranges::min(std::ranges::subrange(first, last), {}, figure).*figure;
    }

    void report(std::chrono::seconds duration, std::ptrdiff_t uploads) const {
        std::string figures;
        std::string grown;
        const auto compare = [&](const char* name, std::size_t Sample::*figure) {
            const auto before = atRest(figure, warmedUp);
            const auto after = atRest(figure, 9);
            figures += ", " + std::string(name) + " " + std::to_string(before) + " to " + std::to_string(after);
            const bool grows = static_cast<double>(after) > static_cast<double>(before) * mostGrowth;
            if (grows && duration >= shortestToJudge) grown += std::string(" ") + name;
        };
        compare("resident KiB", &Sample::resident);
        compare("descriptors", &Sample::descriptors);
        compare("threads", &Sample::threads);
        std::printf(
            "%zu profiles for %lld s: %zu edits, %td uploads, a server stopped %zu times%s; all equal in the end\n",
            places(), static_cast<long long>(duration.count()), edits, uploads, servers.stops(), figures.c_str());
        require(grown.empty(), "grown by more than a twentieth:" + grown);
    }

    std::mt19937_64 random;
    CliPlace stand;
    UnsteadyServers servers;
    std::size_t edits = 0;
    std::vector<Sample> samples;
};

int tortured(int count, char** arguments) {
    SeededRun torture("Leaves the program running under constant edits, with servers that come and go.");
    int seconds = 1200;
    std::size_t profiles = 20;
    torture.options.add_option("--seconds", seconds, "how long; from 600 on what it needs is judged too");
    torture.options.add_option("--profiles", profiles, "watched at a time")->check(CLI::PositiveNumber);
    return torture.run(
        count, arguments, [&](std::uint64_t seed) { Endurance(seed, profiles).run(std::chrono::seconds(seconds)); });
}

} // namespace
} // namespace zembrastel::testing

int main(int count, char** arguments) { return zembrastel::testing::tortured(count, arguments); }
