// The real program left running: many profiles under constant edits, servers that come and go. It must not need more
// and more of the machine, and in the end every server has what the local folder has.
#include "model/scan.h"
#include "platform/clock.h"
#include "support/process_figures.h"
#include "support/unsteady_servers.h"
#include "torture/program_run.h"
#include "torture/torture.h"

#include <array>
#include <random>

namespace zembrastel::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;
using Sample = std::array<std::size_t, 3>;

constexpr std::size_t pathsInUse = 12;
constexpr auto editEvery = 80ms; // the pace of the editors
constexpr std::array figures{"resident KiB", "descriptors", "threads"};
constexpr std::size_t warmedUp = 4; // tenths of the time: the logs, which are bounded, are full by then
constexpr double mostGrowth = 1.05;
constexpr double shortestToJudge = 600;
constexpr auto catchUpWithin = 180s; // longer than the longest pause between two tries

std::string pathOf(std::size_t number) {
    return (number % 3 == 0 ? "deep/er/" : "") + ("page " + std::to_string(number));
}

class Endurance {
public:
    explicit Endurance(const Effort& wanted)
        : effort(wanted), random(wanted.seed),
          servers(
              {FtpServer::Kind::proftpd, FtpServer::Kind::vsftpd, FtpServer::Kind::proftpd, FtpServer::Kind::vsftpd},
              wanted.lanes, wanted.seed) {
        for (std::size_t place = 0; place < effort.lanes; ++place) {
            const auto local = stand.path("local " + std::to_string(place));
            fs::create_directory(local);
            profiles.push_back(servers.profile(place, local));
            profiles.back().enabled = true;
            for (std::size_t number = 0; number < pathsInUse; ++number) edit(local / pathOf(number));
        }
        StateStore(stand.state()).save({.profiles = profiles, .baselines = {}, .remoteDates = {}});
        stand.savePassword(servers.password());
    }

    void run() {
        ProgramRun program(stand, Texts{"watch"});
        require(program.waitForLines(1, "  Uploaded ", {}), "nothing is uploaded");
        servers.unsteady(8s, 8s);
        work(program.pid());
        servers.steady();
        for (std::size_t place = 0; place < profiles.size(); ++place) {
            require(
                eventually([&] { return isCaughtUp(place); }, catchUpWithin),
                profiles[place].name + " differs from its server, or from the saved state");
        }
        require(program.stop() == 0, "the program did not end well");
        require(entriesIn(stand.temporary()) == 0, "temporary folders were left behind");
        judge();
    }

private:
    void edit(const fs::path& file) {
        random() % 8 == 0 && fs::exists(file) ? void(fs::remove(file))
                                              : writeFile(file, randomBytes(1 + random() % 20'000, random()));
    }

    void work(pid_t process) {
        auto nextSample = Steady::now();
        for (const auto end = nextSample + std::chrono::duration<double>(effort.seconds); Steady::now() < end;) {
            edit(fs::path(profiles[random() % profiles.size()].localFolder) / pathOf(random() % pathsInUse));
            if (Steady::now() >= nextSample) {
                samples.push_back({kibibytesOf(process, "VmRSS"), descriptorsOf(process), threadsOf(process)});
                nextSample += 1s;
            }
            std::this_thread::sleep_for(editEvery);
        }
        // What was deleted here stays on the server: it comes back, so that both sides can be the same.
        for (const auto& profile : profiles) {
            for (std::size_t number = 0; number < pathsInUse; ++number) {
                const auto file = fs::path(profile.localFolder) / pathOf(number);
                if (!fs::exists(file)) writeFile(file, randomBytes(1 + random() % 20'000, random()));
            }
        }
    }

    [[nodiscard]] bool isCaughtUp(std::size_t place) const {
        const auto& profile = profiles[place];
        try {
            return readTree(profile.localFolder) == readPublished(servers.folder(place))
                   && stand.saved().baselines.at(profile.id) == scan(profile);
        } catch (const std::system_error&) { // a transfer went on meanwhile
            return false;
        }
    }

    // Each figure without the transfers of the moment, which come and go.
    [[nodiscard]] Sample atRest(std::size_t tenth) const {
        const auto first = samples.size() * tenth / 10;
        Sample least = samples.at(first);
        for (auto at = first; at < samples.size() * (tenth + 1) / 10; ++at) {
            for (std::size_t figure = 0; figure < least.size(); ++figure)
                least[figure] = std::min(least[figure], samples[at][figure]);
        }
        return least;
    }

    void judge() const {
        const Sample before = atRest(warmedUp);
        const Sample after = atRest(9);
        std::string said;
        bool grows = false;
        for (std::size_t figure = 0; figure < figures.size(); ++figure) {
            said += ", " + std::string(figures[figure]) + " " + std::to_string(before[figure]) + " to "
                    + std::to_string(after[figure]);
            grows = grows || static_cast<double>(after[figure]) > static_cast<double>(before[figure]) * mostGrowth;
        }
        std::printf(
            "%zu profiles for %.0f s: a server stopped %zu times%s; all equal in the end\n", profiles.size(),
            effort.seconds, servers.stops(), said.c_str());
        require(!grows || effort.seconds < shortestToJudge, "grown by more than a twentieth" + said);
    }

    const Effort effort;
    std::mt19937_64 random;
    CliPlace stand;
    UnsteadyServers servers;
    std::vector<Profile> profiles;
    std::vector<Sample> samples;
};

} // namespace

// From 600 seconds on it judges the growth too. A lane is a profile.
const Torture endurance{
    "endurance",
    "Leaves the program running under constant edits, with servers that come and go.",
    {.lanes = 20, .seconds = 1200},
    [](const Effort& effort) { Endurance(effort).run(); }};

} // namespace zembrastel::testing
