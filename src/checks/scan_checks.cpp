#include "checks/check.h"
#include "checks/check_fixture.h"
#include "model/scan.h"
#include "sync/sync_worker.h"
#include "transport/compare/remote_change.h"

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

// A folder with a file in every place that the checks use.
struct Site : CheckFixture {
    Site() {
        for (const auto* path : {"docs/a.txt", "docs/private/b.txt", "images/logo.png", "index.html"}) write(path, "1");
    }
};

void linksAndIgnoredFolders() {
    Site site;
    const Paths files = site.scanned();
    site.write("node_modules/lib/a.js", "1");
    site.write("docs/.git/config", "1");
    fs::create_directory(site.folder() / "outside");
    fs::rename(site.local("images/logo.png"), site.folder() / "outside/logo.png");
    fs::create_symlink(site.folder() / "outside/logo.png", site.local("link.png"));
    fs::create_directory_symlink(site.folder() / "outside", site.local("linked"));
    requireEqual("the scan", site.scanned(), {"docs/a.txt", "docs/private/b.txt", "index.html"});
    fs::rename(site.folder() / "outside/logo.png", site.local("images/logo.png"));
    requireEqual("the scan after the file came back", site.scanned(), files);
}

void emptySelection() {
    Site site;
    site.profile.initialDownloadSelection = DownloadSelection::everything();
    site.profile.syncSelection = DownloadSelection{.rules = {{"docs", false}}};
    requireEqual("the scan", site.scanned(), Paths{});
}

void selectAll() {
    Site site;
    const Paths files = site.scanned();
    require(files.size() == 4, "without a selection " + std::to_string(files.size()) + " of 4 files are found");
    site.profile.syncSelection = DownloadSelection::everything();
    requireEqual("the scan", site.scanned(), files);
    requireForAll({"", "docs", "z"}, "visited", true, [&](auto path) { return site.profile.visitsForSync(path); });
    requireForAll({"docs/a.txt", "z"}, "included", true, [&](auto path) { return site.profile.includesInSync(path); });
}

void initialSelection() {
    Site site;
    site.profile.initialDownloadSelection = DownloadSelection{.rules = {{"docs", true}, {"docs/private", false}}};
    requireEqual("the scan", site.scanned(), {"docs/a.txt"});
}

void unselectedEdits() {
    Site site;
    site.profile.syncSelection = DownloadSelection{.rules = {{"", true}, {"docs/private", false}}};
    const auto before = scan(site.profile);
    site.write("docs/private/b.txt", "an edit");
    site.write("docs/private/new.txt", "a new file");
    requireEqual("to be uploaded", changedPaths(scan(site.profile), before), {});
    site.write("docs/a.txt", "an edit");
    requireEqual("to be uploaded", changedPaths(scan(site.profile), before), {"docs/a.txt"});
}

void datePrecision() {
    using Seconds = std::chrono::duration<double>;
    const RemoteDate noon(Seconds(800000000));
    const Fingerprint local{.size = 1, .modified = sinceUnixEpoch(noon).count(), .inode = 1};
    const auto offered = [&](double later, std::optional<double> known) {
        return shouldOffer(noon + Seconds(later), local, known ? std::optional(noon + Seconds(*known)) : std::nullopt);
    };
    require(!offered(0, {}) && !offered(1, {}), "a server file at most a second newer than the local one is offered");
    require(offered(1.1, {}), "a server file more than a second newer than the local one is not offered");
    require(!offered(60, 60) && !offered(61, 60), "a server file at most a second past its known date is offered");
    require(offered(61.5, 60), "a server file more than a second past its known date is not offered");
    require(!offered(0.5, -60), "a server file is offered by its known date alone");
}

} // namespace

Checks scanChecks() {
    return {
        {"scan excludes links and ignored folders", linksAndIgnoredFolders},
        {"empty ongoing selection scans nothing", emptySelection},
        {"explicit select-all keeps existing scan behavior", selectAll},
        {"initial selection also limits ongoing local scans", initialSelection},
        {"unselected folder edits never upload", unselectedEdits},
        {"allow FTP timestamp precision tolerance", datePrecision}};
}

} // namespace zembrastel
