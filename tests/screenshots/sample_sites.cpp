#include "sample_sites.h"

#include "model/error.h"
#include "ui/screen.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zembrastel::screenshots {
namespace {

using namespace std::chrono_literals;
using std::chrono::system_clock;

system_clock::time_point today(std::chrono::seconds sinceMidnight) {
    return std::chrono::floor<std::chrono::days>(system_clock::now()) + sinceMidnight;
}

system_clock::time_point yesterday(std::chrono::seconds sinceMidnight) { return today(sinceMidnight - 24h); }

event::Uploaded uploaded(const char* path) { return {.path = path, .fingerprint = {}}; }

Profile site(const char* name, const char* host, const char* remoteFolder, const char* localFolder) {
    Profile profile;
    profile.name = name;
    profile.host = host;
    profile.username = "webmaster";
    profile.remoteFolder = remoteFolder;
    profile.localFolder = localFolder;
    return profile;
}

SavedState sites() {
    SavedState state;
    state.profiles = {
        site("My website", "ftp.example.org", "/public_html", "/home/you/Projects/website"),
        site("Client portal", "portal.example.com", "/htdocs/portal", "/home/you/Work/portal/dist"),
        site(
            "Spring campaign", "www.example.org", "/sites/campaigns/spring-2026",
            "/home/you/Projects/spring-launch/website/build"),
        site("Documentation", "docs.example.net", "/var/www/docs", "/home/you/Projects/handbook/public"),
        site("Photo archive", "ftp.example.org", "/photos", "/home/you/Pictures/Archive")};
    Profile& campaign = state.profiles.at(2);
    Profile& documentation = state.profiles.at(3);
    for (Profile* const encrypted : {&campaign, &documentation}) {
        encrypted->transport = TransferProtocol::implicitTLS;
        encrypted->port = 990;
    }
    campaign.syncSelection = DownloadSelection{.rules = {{"landing", true}, {"robots.txt", true}}};
    documentation.username = "handbook";
    return state;
}

RemoteChange change(
    const char* path, std::chrono::sys_seconds local, std::chrono::sys_seconds remote, bool bothChanged) {
    return {
        .path = path,
        .local = {.modified = static_cast<double>(local.time_since_epoch().count())},
        .remoteDate = toRemoteDate(remote),
        .bothChanged = bothChanged};
}

} // namespace

void PictureClock::set(system_clock::time_point instant) {
    const std::lock_guard lock(mutex);
    shown = instant;
}

void PictureClock::wake() {
    const std::lock_guard lock(mutex);
    ++wakes;
    woken.notify_all();
}

system_clock::time_point PictureClock::now() const {
    const std::lock_guard lock(mutex);
    return shown;
}

bool PictureClock::sleep(const std::stop_token& stop, std::chrono::nanoseconds) {
    std::unique_lock lock(mutex);
    if (!woken.wait(lock, stop, [this] { return wakes > 0; })) return false;
    --wakes;
    return true;
}

SampleSites::SampleSites(MainContext& context) {
    const SavedState state = sites();
    const StateStore store(folder.path());
    store.save(state);
    std::map<Uuid, std::string> passwords;
    for (const auto& profile : state.profiles) passwords[profile.id] = "ten dots..";
    app = std::make_unique<AppModel>(
        context, AppModel::Options{
                     .storeOverride = store,
                     .sessionPasswords = passwords,
                     .passwordAccess = {.save = nullptr, .read = nullptr, .remove = nullptr},
                     .work = work(),
                     .clock = clock});
    playWebsite();
    playPortal();
    playCampaign();
    playDocumentation();
}

Uuid SampleSites::id(const std::string& name) const {
    const auto& all = app->profiles();
    const auto found = std::ranges::find(all, name, &Profile::name);
    if (found == all.end()) throw std::runtime_error("there is no site " + name);
    return found->id;
}

JobWork SampleSites::work() {
    return {
        .check =
            [this](const FTPTransport&, const ServerRecord&, const std::stop_token&) {
                const auto played = current;
                if (played->failure) throw SyncError(*played->failure);
                clock.set(played->checked);
                return ServerCheck{.changes = played->changes, .missing = played->missing};
            },
        .watch =
            [this](const SyncWorker& worker, const std::stop_token&) {
                const auto played = current; // the next site may play before this thread has ended
                try {
                    worker.events.deliver(watchingStatus()); // after which all lines of the start are in the log
                    for (const Moment& moment : played->moments) {
                        clock.set(moment.when);
                        worker.events.deliver(moment.event);
                        if (moment.progress) worker.events.progress(*moment.progress);
                    }
                } catch (const Cancelled&) {
                    // The program ends early.
                }
            }};
}

void SampleSites::await(const std::function<bool()>& condition) const {
    if (!testing::waitFor(condition)) throw std::runtime_error("a site did not come to its state");
}

void SampleSites::play(const std::string& name, Play chosen) {
    clock.set(chosen.start);
    current = std::make_shared<const Play>(std::move(chosen));
    app->toggle(id(name));
}

void SampleSites::playWebsite() {
    play(
        "My website",
        {.start = today(9h + 38min + 9s),
         .checked = today(9h + 38min + 11s),
         .moments = {
             {today(9h + 39min + 30s),
              event::Activity{.text = "curl: (56) response reading failed (errno: 104)", .error = true}},
             {today(9h + 40min + 49s), uploaded("index.html")},
             {today(9h + 40min + 52s),
              uploaded("assets/img/team/2026/autumn-retreat/photographs/group-photo-wide-version-final.webp")},
             {today(9h + 41min + 7s), uploaded("css/site.css")}}});
    await([this] { return lines("My website") == 6; });
}

void SampleSites::playPortal() {
    play(
        "Client portal",
        {.start = today(9h + 38min + 9s),
         .checked = today(9h + 38min + 11s),
         .moments = {
             {today(9h + 40min + 49s), uploaded("portal/login.html")},
             {today(9h + 40min + 52s),
              uploaded("assets/img/team/2026/autumn-retreat/photographs/group-photo-wide-version-final.webp")},
             {today(9h + 41min + 7s), uploaded("css/site.css")},
             {today(9h + 41min + 12s), uploaded("assets/img/logo.svg")},
             {today(9h + 41min + 13s), uploadingStatus("assets/img/hero-banner-2026.webp", 3),
              TransferProgress{
                  .file =
                      TransferProgress::File{
                          .path = "assets/img/hero-banner-2026.webp",
                          .bytes = 5'214'208,
                          .size = 8'912'896,
                          .rate = 612'000,
                          .left = 7s},
                  .filesDone = 4,
                  .filesQueued = 7}}}});
    await([this] { return app->status(id("Client portal")).progress.has_value(); });
}

void SampleSites::playCampaign() {
    const std::string name = "Spring campaign";
    play(
        name, {.start = yesterday(17h + 40min),
               .checked = yesterday(17h + 40min + 2s),
               .moments = {
                   {yesterday(17h + 48min), uploaded("landing/assets/spring-hero.avif")},
                   {yesterday(17h + 48min), uploaded("landing/index.html")}}});
    await([&] { return lines(name) == 4; });
    clock.set(yesterday(18h + 2min));
    app->toggle(id(name));
    using namespace std::chrono;
    play(
        name,
        {.start = today(9h + 38min + 9s),
         .checked = today(9h + 38min + 14s),
         .changes = {
             change(
                 "landing/index.html", sys_days{2026y / November / 14} + 17h + 48min,
                 sys_days{2026y / November / 20} + 22h + 15min, false),
             change(
                 "landing/assets/translations/2026/spring-launch/long-form/en-GB/strings.json",
                 sys_days{2026y / November / 20} + 16h + 2min, sys_days{2026y / November / 20} + 22h + 17min, true),
             change(
                 "robots.txt", sys_days{2026y / October / 3} + 10h + 20min,
                 sys_days{2026y / November / 21} + 7h + 55min, false)}});
    await([this] { return app->presentedReview().has_value(); });
}

void SampleSites::loseFiles() {
    const std::string name = "Photo archive";
    play(
        name, {.missing = {"assets/img/banner-old.webp", "blog/2025/summer-sale.html", "news.html", "robots.txt"},
               .start = today(9h + 41min + 13s),
               .checked = today(9h + 41min + 15s)});
    await([&] { return !app->missingOnServer(id(name)).empty() && app->watching(id(name)); });
    await([&] { return app->status(id(name)).title == watchingStatus().title; });
}

void SampleSites::playDocumentation() {
    const std::string name = "Documentation";
    play(
        name, {.start = today(9h + 40min + 20s),
               .failure = "curl: (28) Failed to connect to docs.example.net port 990 after 15000 ms: Timeout was "
                          "reached"});
    await([&] { return lines(name) == 2; });
    for (const auto again : {9h + 40min + 40s, 9h + 41min + 20s}) {
        const std::size_t before = lines(name);
        clock.set(today(again));
        clock.wake();
        await([&] { return lines(name) == before + 1; });
    }
}

} // namespace zembrastel::screenshots
