// The choice that a site on the server requires before its first upload, and the comparison of contents before it.
#include "app/jobs/jobs.h"
#include "model/error.h"
#include "model/records/comparison_record.h"
#include "platform/text.h"
#include "sync/progress_meter.h"
#include "transport/ftp_transport.h"

namespace zembrastel {
namespace {

constexpr std::chrono::seconds keepingInterval{2};

// The results of a comparison, kept on the disk every few seconds and at its end.
class KeptResults {
public:
    KeptResults(
        std::optional<ComparisonRecord> keptIn, std::optional<PublishedContents> hashesIn, const FirstComparison& begun,
        Clock& usedClock)
        : record(std::move(keptIn)), contents(std::move(hashesIn)), local(begun.alike.files), dates(begun.alike.dates),
          results(begun.results()), clock(usedClock), written(clock.steadyNow()) {}

    void add(const FTPTransport::FileToCompare& file, const std::optional<ContentHash>& equal) {
        const auto date = dates.at(file.path);
        if (equal) {
            hashes.insert_or_assign(
                file.path, PublishedContent{.fingerprint = file.fingerprint, .date = date, .hash = *equal});
        }
        auto& to = equal ? results.same : results.different;
        to.files.set(file.path, file.fingerprint);
        to.dates.set(file.path, date);
        changed = true;
        writeSoon();
    }

    // Called often.
    void writeSoon() {
        if (changed && clock.steadyNow() - written >= keepingInterval) write();
    }

    void write() {
        written = clock.steadyNow();
        if (contents) contents->add(std::exchange(hashes, {}), local);
        if (!record || !std::exchange(changed, false)) return;
        try {
            record->write(results);
        } catch (const std::filesystem::filesystem_error&) {
            // The price is that a restart compares these files again.
        }
    }

private:
    std::optional<ComparisonRecord> record;
    std::optional<PublishedContents> contents; // the hashes of equal files hold once the user has chosen
    PublishedContentMap hashes;                // not written yet
    FileMap local;
    RemoteDates dates;
    ComparedContents results;
    Clock& clock;
    std::chrono::steady_clock::time_point written;
    bool changed = false;
};

std::vector<FTPTransport::FileToCompare> filesToCompare(const FirstComparison& found) {
    std::vector<FTPTransport::FileToCompare> files;
    for (const auto& [path, fingerprint] : found.uncompared()) files.push_back({path, fingerprint});
    return files;
}

std::string ofFiles(std::uint64_t some, std::uint64_t all) {
    return std::to_string(some) + " of " + std::to_string(all) + (all == 1 ? " file" : " files");
}

} // namespace

const FirstComparison* Jobs::choice(const Uuid& id) const {
    const auto job = jobs.find(id);
    const ServerCheck* check = job == jobs.end() ? nullptr : job->second.firstCheck();
    return check == nullptr ? nullptr : &*check->first;
}

bool Jobs::comparingContents(const Uuid& id) const {
    const auto job = jobs.find(id);
    return job != jobs.end() && job->second.is<Job::ComparingContents>();
}

void Jobs::askForChoice(const ServerCheck& check, const Uuid& id) {
    if (!step(id, [&](Job& job) { return job.awaitChoice(check); })) return;
    const auto& found = *choice(id);
    parts.statuses.log(
        id, "Found " + ofFiles(found.alikeFiles(), found.localFiles) + " on the server. Waiting for your choice.");
    showChoice(id);
}

void Jobs::showChoice(const Uuid& id) {
    parts.statuses.enter(
        id, Phase::awaitingChoice, "Uploads are paused until you choose. Nothing has been changed on the server.");
    publishReview(id);
}

void Jobs::compareContents(const Uuid& id) {
    const auto job = jobs.find(id);
    if (job == jobs.end() || !job->second.is<Job::AwaitingChoice>() || choice(id)->isCompared()) return;
    const auto control = std::make_shared<TransferControl>();
    Assignment work = job->second.work();
    work.control = control;
    const auto onMain = [this, id, control, generation = work.generation](std::function<void()> report) {
        parts.context.post(ifCurrent(id, generation, std::move(report)));
    };
    const auto whileComparing = [this, id, control, onMain](std::function<void()> report) {
        onMain([this, id, control, report = std::move(report)] {
            if (jobs.at(id).comparesWith(control)) report();
        });
    };
    const auto& folder = parts.records.folder();
    const auto record = folder ? std::optional(ComparisonRecord(*folder, id)) : std::nullopt;
    const auto body = [this, id, work = std::move(work), found = *choice(id), record,
                       contents = parts.records.contents(jobs.at(id).work().profile), onMain,
                       whileComparing](const std::stop_token&) {
        KeptResults results(record, contents, found, parts.clock);
        ProgressMeter meter(parts.clock, [&](const TransferProgress& progress) {
            results.writeSoon();
            whileComparing([this, id, progress] { parts.statuses.showProgress(id, progress); });
        });
        const auto files = filesToCompare(found);
        meter.begin(TransferProgress::Work::comparingContents, files.size());
        meter.expectBytes(found.bytesToCompare());
        try {
            const auto compared = [&](const FTPTransport::FileToCompare& file, const std::optional<ContentHash>& hash) {
                results.add(file, hash);
                onMain([this, id, path = file.path, equal = hash.has_value()] { addCompared(id, path, equal); });
                meter.fileDone();
            };
            settings.work.compareContents(transportFor(work, meter), files, compared);
            results.write();
            whileComparing([this, id] { finishComparing(id); });
        } catch (const Cancelled&) {
            results.write(); // stopped: the next comparison goes on from here
        } catch (const std::exception& error) {
            results.write();
            whileComparing([this, id, failure = failureOf(error)] { failComparing(failure, id); });
        }
    };
    if (!step(id, [&](Job& each) { return each.compareContents([&] { return startTask(id, body); }, control); }))
        return;
    parts.statuses.enter(id, Phase::comparingContents, "Nothing is uploaded before you choose.");
    parts.statuses.log(id, "Comparing contents with the server.");
    publishReview(id);
}

void Jobs::addCompared(const Uuid& id, const std::string& path, bool equal) {
    if (choice(id) == nullptr) return;
    jobs.at(id).addCompared(path, equal);
    if (equal) return;
    constexpr std::size_t maxLogged = 50;
    const auto different = choice(id)->different.files.size();
    if (different <= maxLogged) parts.statuses.log(id, "Different: " + path);
    if (different == maxLogged) parts.statuses.log(id, "More files that differ are only counted.");
    publishReview(id);
}

void Jobs::finishComparing(const Uuid& id) {
    if (!step(id, [](Job& job) { return job.endComparison(); })) return;
    const auto& found = *choice(id);
    parts.statuses.log(id, ofFiles(found.alikeFiles(), found.localFiles) + " are the same on the server.");
    showChoice(id);
}

void Jobs::failComparing(const Failure& reported, const Uuid& id) {
    const Failure failure = withNetwork(reported, id);
    if (!step(id, [&](Job& job) { return job.failDownload(failure.message); })) return;
    parts.statuses.enterFailed(
        id, Phase::checkFailed, failure,
        "Uploads remain paused. What was compared is kept: retry the server check to continue.");
    parts.statuses.logFailure(id, failure.message, failure);
    publishReview(id);
}

void Jobs::stopComparing(const Uuid& id) {
    if (!comparingContents(id) || !jobs.at(id).endComparison()) return;
    parts.statuses.log(id, "The comparison was stopped. What was compared is kept.");
    showChoice(id);
}

Decision Jobs::adopt(const Uuid& id, Adoption what) {
    if (choice(id) == nullptr) return Decision::outdated;
    if (comparingContents(id)) stopComparing(id);
    const ServerCheck check = *jobs.at(id).firstCheck();
    const SavedState before = parts.records.saved();
    recordChoice(id, check, what);
    try {
        parts.records.persist();
    } catch (const std::exception& error) {
        parts.records.restore(before);
        parts.alert(describe(error));
        return Decision::refused;
    }
    if (const auto& folder = parts.records.folder()) ComparisonRecord(*folder, id).remove();
    const auto files = what == Adoption::alike ? check.first->alikeFiles() : 0;
    parts.statuses.log(
        id, files == 0 ? "All files are uploaded, by your choice."
                       : ofFiles(files, check.first->localFiles) + " count as published, by your choice.");
    // The server may have changed since the first check.
    startCheck(id, std::nullopt);
    return Decision::accepted;
}

// For a file that is uploaded by choice the server's date is recorded, as after any decision about that version. If the
// server's file is newer than the local one, it is offered for review instead.
void Jobs::recordChoice(const Uuid& id, const ServerCheck& check, Adoption what) {
    PathSet newer = pathsOf(check.changes);
    const auto upload = [&](const AnnouncedFiles& files) {
        for (const auto& [path, fingerprint] : files.files) {
            const auto date = files.dates.at(path);
            if (shouldOffer(date, fingerprint, std::nullopt)) {
                newer.insert(path);
            } else {
                parts.records.recordDate(id, path, date);
            }
        }
    };
    recordRecognised(check.recognised, id);
    upload(check.first->different);
    if (what == Adoption::alike) {
        for (const auto& [path, fingerprint] : check.first->alike.files) {
            parts.records.recordFile(id, path, fingerprint);
            parts.records.recordDate(id, path, check.first->alike.dates.at(path));
        }
    } else {
        upload(check.first->alike);
    }
    parts.records.recordComparison(id);
    parts.reviews.unsettled(id).newerAtFirst = std::move(newer);
}

} // namespace zembrastel
