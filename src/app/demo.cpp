#include "app/demo.h"

#include "model/error.h"
#include "sync/progress_meter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

struct PastLine {
    std::chrono::seconds ago;
    const char* text; // of an uploaded file: its path
    Activity::Kind kind = Activity::Kind::note;
};

constexpr std::array past{
    PastLine{2843s, "Checking for newer server files before watching resumes."},
    PastLine{2840s, "Watching started."},
    PastLine{2511s, "index.html", Activity::Kind::uploaded},
    PastLine{2509s, "css/site.css", Activity::Kind::uploaded},
    PastLine{2178s, "images/team/autumn-outing-group-photo-wide.webp", Activity::Kind::uploaded},
    PastLine{1604s, "curl: (56) response reading failed (errno: 104)", Activity::Kind::failure},
    PastLine{1598s, "js/menu.js", Activity::Kind::uploaded},
    PastLine{1043s, "blog/2026/new-opening-hours.html", Activity::Kind::uploaded},
    PastLine{1041s, "blog/index.html", Activity::Kind::uploaded},
    PastLine{1040s, "feed.xml", Activity::Kind::uploaded},
    PastLine{95s, "Watching paused."},
};

// One saved file of the script, which begins again when it has come to its end.
struct Edit {
    milliseconds quietBefore; // none for a file that was saved together with the one before
    const char* path;
    milliseconds transfer;
};

constexpr std::array script{
    Edit{5s, "index.html", 800ms},
    Edit{0s, "css/site.css", 600ms},
    Edit{7s, "about.html", 700ms},
    Edit{9s, "images/hero-spring.webp", 2600ms},
    Edit{0s, "images/hero-spring@2x.webp", 3900ms},
    Edit{0s, "index.html", 800ms},
    Edit{11s, "js/menu.js", 600ms},
    Edit{6s, "blog/2026/spring-in-the-garden.html", 900ms},
    Edit{0s, "blog/index.html", 700ms},
    Edit{0s, "feed.xml", 500ms},
    Edit{0s, "sitemap.xml", 500ms},
    Edit{13s, "css/print.css", 600ms},
    Edit{8s, "downloads/price-list-2026.pdf", 3100ms},
    Edit{0s, "prices.html", 800ms},
    Edit{10s, "contact.html", 700ms},
    Edit{6s, "css/site.css", 600ms},
};

const Edit& edit(std::size_t number) { return script.at(number % script.size()); }

class DemoRun {
public:
    DemoRun(const SyncWorker& demonstrated, const std::stop_token& stopToken)
        : worker(demonstrated), stop(stopToken), meter(demonstrated.clock, demonstrated.events.progress),
          next(editsIn(demonstrated.initialBaseline)) {}

    void run() {
        if (worker.profile.needsDownload) {
            downloadInitially();
            return;
        }
        while (true) {
            watch(edit(next).quietBefore);
            publish(savedTogether());
        }
    }

private:
    // Each version in the baseline bears the number of its edit, so the baseline tells how far the script has come, as
    // it tells a real worker what is on the server.
    [[nodiscard]] static std::size_t editsIn(const FileMap& baseline) {
        std::size_t count = 0;
        for (const auto& [path, version] : baseline) count = std::max<std::size_t>(count, version.inode);
        return count;
    }

    void downloadInitially() {
        worker.events.deliver(downloadingStatus());
        sleep(4s);
        worker.events.deliver(event::DownloadFinished{});
    }

    void watch(milliseconds quiet) {
        if (quiet == 0s) return; // in the middle of what a pause interrupted
        worker.events.deliver(watchingStatus());
        sleep(quiet);
    }

    [[nodiscard]] std::vector<std::size_t> savedTogether() {
        std::vector<std::size_t> saved;
        do {
            const char* const path = edit(next).path;
            if (worker.profile.includesInSync(path) && !worker.profile.excludes(path)) saved.push_back(next);
            ++next;
        } while (edit(next).quietBefore == 0s);
        return saved;
    }

    void publish(const std::vector<std::size_t>& saved) {
        if (saved.empty()) return;
        auto pending = static_cast<std::int64_t>(saved.size());
        std::uint64_t done = 0;
        meter.begin(TransferProgress::Work::uploading);
        worker.events.deliver(queuedStatus(pending));
        sleep(pollInterval);
        for (const auto number : saved) {
            const Edit& sent = edit(number);
            worker.events.deliver(uploadingStatus(sent.path, pending--));
            meter.setFiles(done++, saved.size());
            transfer(sent);
            worker.events.deliver(event::Uploaded{.path = sent.path, .fingerprint = {.inode = number + 1}});
        }
    }

    void transfer(const Edit& sent) {
        constexpr std::int64_t bytesInMillisecond = 640; // over a line at home
        const auto bytesIn = [](milliseconds time) {
            return static_cast<std::uint64_t>(time.count() * bytesInMillisecond);
        };
        meter.fileBegins(sent.path, bytesIn(sent.transfer));
        milliseconds passed{0};
        while (sent.transfer - passed > observationInterval) {
            sleep(observationInterval);
            passed += observationInterval;
            meter.fileMoved(bytesIn(passed));
        }
        sleep(sent.transfer - passed);
    }

    void sleep(milliseconds duration) const {
        if (!worker.clock.sleep(stop, duration)) throw Cancelled();
    }

    const SyncWorker& worker;
    const std::stop_token& stop;
    ProgressMeter meter;
    std::size_t next; // number of an edit
};

Profile sampleProfile() {
    Profile sample;
    sample.name = "My website";
    sample.host = "ftp.example.org";
    sample.username = "webmaster";
    sample.localFolder = "/Users/you/Projects/website";
    sample.exclusions = Exclusions(std::string(Exclusions::defaultText) + "\n*.psd\ndrafts");
    sample.enabled = true;
    return sample;
}

ProfileStatus samplePast(std::chrono::system_clock::time_point now) {
    ProfileStatus status;
    status.detail = "Local changes will upload when you resume.";
    for (const auto& [ago, text, kind] : past) {
        const bool uploaded = kind == Activity::Kind::uploaded;
        status.activity.push_front(
            {.date = now - ago,
             .text = uploaded ? "Uploaded " + std::string(text) : text,
             .kind = kind,
             .path = uploaded ? text : ""});
        if (!uploaded) continue;
        ++status.uploaded;
        status.lastUpload = now - ago;
    }
    return status;
}

JobWork demoWork(Clock& clock) {
    return {
        .check = [&clock](const FTPTransport&, const ServerRecord&, const std::stop_token& stop) -> ServerCheck {
            if (!clock.sleep(stop, 1500ms)) throw Cancelled();
            return {};
        },
        .watch =
            [](const SyncWorker& worker, const std::stop_token& stop) {
                try {
                    DemoRun(worker, stop).run();
                } catch (const Cancelled&) {
                    // Paused: nothing is reported.
                }
            }};
}

} // namespace

Profile withExistingFolder(Profile profile) {
    if (!profile.localFolder.empty()) profile.localFolder = "/";
    return profile;
}

Demonstration demonstration(Clock& clock) {
    return {
        .profile = sampleProfile(),
        .past = samplePast(clock.now()),
        .work = demoWork(clock),
        .validated = [](const Profile& profile) {
            Profile valid = withExistingFolder(profile).validated();
            valid.localFolder = profile.localFolder;
            return valid;
        }};
}

} // namespace zembrastel
