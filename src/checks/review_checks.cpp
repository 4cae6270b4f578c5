#include "checks/check.h"
#include "checks/server_fixture.h"

#include <algorithm>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Choice = std::set<std::string, std::less<>>;
using Paths = std::vector<std::string>;

// The program uploads three files and is closed. Meanwhile the colleague changes two of them on the server, and two are
// edited locally: one of hers, and the third.
class Restart : public ServerFixture {
public:
    using ServerFixture::ServerFixture;

    void firstRun() {
        for (const auto* path : {"both", "mine", "theirs"}) write(path, "1", 1h);
        profile.enabled = true;
        open().save(profile, TestServer::password);
        const bool uploaded =
            waitUntil([this] { return status().failed() || program().remoteDates(profile.id).size() == 3; });
        require(uploaded && !status().failed(), "the first uploads fail: " + status().title() + ", " + status().detail);
        close();
    }

    void changeBothSides() const {
        write("both", "local edit", 30min);
        write("mine", "local edit", 30min);
        colleagueEdits("both", "server edit");
        colleagueEdits("theirs", "server edit");
    }

    void reopen(Phase expected) {
        open().startEnabled();
        requirePhase(expected);
    }

    void resolve(const Choice& downloads) {
        const auto reviewId = program().reviews().at(profile.id).reviewId;
        require(
            program().resolveReview(profile.id, reviewId, downloads) == Decision::accepted,
            "the review stays: " + program().alert().value_or("no reason is given"));
        requirePhase(Phase::watching);
    }

    [[nodiscard]] Paths offered() const {
        Paths paths;
        const auto found = program().reviews().find(profile.id);
        if (found == program().reviews().end()) return paths;
        for (const auto& change : found->second.changes) {
            paths.push_back(change.path + (change.bothChanged ? ", edited locally too" : ""));
        }
        return paths;
    }

    // Waits as long as many polls take.
    void requireNoUpload() {
        const bool uploaded = waitUntil([this] { return status().uploaded > 0; }, 500ms);
        require(!uploaded && onServer("mine") == "1", "the local edit was uploaded");
    }

    // The place of a line in the activity log, 0 for the newest.
    [[nodiscard]] long logged(const std::string& text) const {
        const auto& log = status().activity;
        const auto line = std::find_if(log.begin(), log.end(), [&](const auto& each) { return each.text == text; });
        require(line != log.end(), "the activity log lacks \"" + text + '"');
        return line - log.begin();
    }
};

void presentedOnRestart(Restart& site) {
    site.reopen(Phase::awaitingReview);
    const auto& presented = site.program().presentedReview();
    require(presented && presented->id == site.profile.id, "the review is not presented");
    require(site.status().uploaded == 0 && site.onServer("mine") == "1", "a local edit was uploaded before it");
    require(site.onServer("both") == "server edit", "the colleague's edit was overwritten");
}

void localEditsIdentified(Restart& site) {
    site.reopen(Phase::awaitingReview);
    requireEqual("the review", site.offered(), {"both, edited locally too", "theirs"});
}

void uploadsPaused(Restart& site) {
    site.reopen(Phase::awaitingReview);
    site.write("later", "during the review");
    site.requireNoUpload();
    site.resolve({});
    requireEqual("the server's copy after the review", site.onServer("mine"), "local edit");
    requireEqual("the server's copy of a new file", site.onServer("later"), "during the review");
}

void nothingDownloadedUnasked(Restart& site) {
    site.reopen(Phase::awaitingReview);
    requireEqual("the local file during the review", site.read("theirs"), "1");
    site.resolve({});
    requireEqual("the local file that was kept", site.read("theirs"), "1");
    requireEqual("the local file edited on both sides", site.read("both"), "local edit");
}

void downloadBeforeWatching(Restart& site) {
    site.reopen(Phase::awaitingReview);
    site.resolve({"both", "theirs"});
    for (const auto* path : {"both", "theirs"}) {
        requireEqual(path, site.read(path), "server edit");
        require(
            site.logged("Watching started.") < site.logged(
                "Downloaded newer server copy: " + std::string(path) + " (previous local copy backed up)"),
            "watching started before " + std::string(path) + " was there");
    }
}

void downloadsAcknowledged(Restart& site) {
    site.reopen(Phase::awaitingReview);
    const auto changes = site.program().reviews().at(site.profile.id).changes;
    site.resolve({"both", "theirs"});
    const auto& dates = site.program().remoteDates(site.profile.id);
    for (const auto& change : changes) {
        require(dates.at(change.path) == change.remoteDate, "the server's date of " + change.path + " is not recorded");
    }
    require(site.status().uploaded == 1, std::to_string(site.status().uploaded) + " files went up, not the edited one");
    site.reopen(Phase::watching);
    require(site.status().uploaded == 0, "after a restart files went up again");
}

void keptRevisionNotOffered(Restart& site) {
    site.reopen(Phase::awaitingReview);
    site.resolve({});
    site.reopen(Phase::watching);
    requireEqual("the server's copy", site.onServer("theirs"), "server edit");
}

void laterEditOffered(Restart& site) {
    keptRevisionNotOffered(site);
    site.close();
    site.colleagueEdits("theirs", "a later edit");
    site.reopen(Phase::awaitingReview);
    requireEqual("the review", site.offered(), {"theirs"});
}

void stayingPaused(Restart& site) {
    site.reopen(Phase::awaitingReview);
    site.program().pauseReview(site.profile.id, site.program().reviews().at(site.profile.id).reviewId);
    require(!site.program().running(site.profile.id), "the profile still runs");
    require(!site.offered().empty(), "the review is lost");
    site.requireNoUpload();
    site.reopen(Phase::paused);
    site.requireNoUpload();
}

} // namespace

Checks reviewChecks(const TestServer& server) {
    const std::pair<std::string_view, void (*)(Restart&)> all[]{
        {"app restart presents newer-server review before uploads", presentedOnRestart},
        {"restart review identifies pending local edits too", localEditsIdentified},
        {"uploads remain paused while awaiting review", uploadsPaused},
        {"no server file is downloaded without a review choice", nothingDownloadedUnasked},
        {"approved download completes before watcher starts", downloadBeforeWatching},
        {"downloaded server changes are acknowledged without re-upload", downloadsAcknowledged},
        {"kept-local decision does not prompt for same server revision", keptRevisionNotOffered},
        {"later external FTP edit is offered on next restart", laterEditOffered},
        {"stay-paused review choice stops startup sync", stayingPaused}};
    Checks checks;
    for (const auto& [name, check] : all) {
        // All first runs are before the first check, so that few checks wait for a later date.
        const auto site = std::make_shared<Restart>(server);
        site->firstRun();
        checks.push_back({name, [site, check = check] {
                              site->changeBothSides();
                              check(*site);
                              site->close();
                          }});
    }
    return checks;
}

} // namespace zembrastel
