#include "app/diagnosis/diagnosis.h"

#include "app/diagnosis/certificate_text.h"
#include "platform/text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>

namespace zembrastel {
namespace {

using Outcome = Finding::Outcome;
using Seconds = std::chrono::duration<double>;

constexpr Seconds clockTolerance{120};

// Of what a server that cuts listings off shows of a full folder; "." and ".." may be among them.
constexpr std::size_t cutListing = 10'000;
constexpr std::size_t ownEntries = 2;

class Diagnosing {
public:
    Diagnosing(const Profile& diagnosed, const ServerObservations& observed) : profile(diagnosed), seen(observed) {}

    std::vector<Finding> run() {
        if (!connection() || !folder()) return std::move(findings);
        listing();
        completeness();
        hiddenFiles();
        dateQuery();
        serverClock();
        if (seen.upload) upload(*seen.upload);
        return std::move(findings);
    }

private:
    void add(Finding finding) { findings.push_back(std::move(finding)); }

    [[nodiscard]] bool connection() {
        const Transcript& answer = seen.mlsd.answer;
        if (!seen.hasNetwork) {
            add(wrong(
                Subject::network, "There is no network connection.",
                "Nothing is wrong with the profile. Try again when the network is back."));
            return false;
        }
        if (!answer.connected && !answer.succeeded) {
            const Finding failure = unreached(profile, answer);
            if (failure.subject != Subject::address) address();
            add(failure);
            return false;
        }
        address();
        add(fine(Subject::port, "There is an answer at port " + std::to_string(profile.port) + "."));
        if (seen.certificate) {
            add(certificateFinding(profile, *seen.certificate));
            return false;
        }
        if (auto failure = refusedBeforeLogin(profile, answer)) {
            add(*std::move(failure));
            return false;
        }
        encryption();
        add(fine(Subject::login, "The server takes the user name and the password."));
        return true;
    }

    void address() {
        // A numeric address needs no name lookup.
        if (profile.host.find_first_not_of("0123456789.") == std::string::npos) return;
        add(fine(Subject::address, "The name " + profile.host + " is known."));
    }

    void encryption() {
        if (profile.keyInForce() != nullptr) {
            add(fine(
                Subject::encryption,
                "The connection is encrypted, and the server has the key that the profile trusts."));
            return;
        }
        if (profile.transport != TransferProtocol::ftp) {
            add(fine(Subject::encryption, "The connection is encrypted, and the server's certificate trusted."));
            return;
        }
        add(notice(
            Subject::encryption,
            "Nothing is encrypted: anyone on the network path can read the password and all files.",
            "Ask the hosting provider whether the server has FTPS, and choose it in the profile."));
    }

    [[nodiscard]] bool folder() {
        const bool missing = seen.mlsd.answer.code == CurlCode::noSuchFolder;
        if (missing) {
            add(wrong(
                Subject::folder, headingOf(profile, seen.mlsd.answer) + said(seen.mlsd.answer),
                "Check the remote folder in the profile. Without a slash at its beginning it starts in the login "
                "folder, with one at the server's root. Ask the hosting provider which folder the site is in."));
            return false;
        }
        if (seen.mlsd.answer.succeeded || (seen.list && seen.list->answer.succeeded)) {
            add(fine(Subject::folder, "The folder " + profile.remoteFolder + " can be opened."));
            return true;
        }
        const Transcript& answer = seen.list ? seen.list->answer : seen.mlsd.answer;
        if (reportsTooMany(answer)) {
            add(turnedAway(profile, answer));
            return false;
        }
        add(wrong(
            Subject::listing, "The server takes the login and does not list the folder." + said(answer),
            "Listings and files go over connections of their own (passive mode), which a firewall may stop. Ask the "
            "hosting provider which ports passive mode uses, whether they are open, and whether the account may list "
            "the "
            "folder."));
        return false;
    }

    [[nodiscard]] const std::vector<RemoteEntry>* entries() const {
        if (seen.mlsd.entries) return &*seen.mlsd.entries;
        return seen.list && seen.list->entries ? &*seen.list->entries : nullptr;
    }

    void listing() {
        if (entries() == nullptr) {
            add(wrong(
                Subject::listing,
                "The server's listing of the folder cannot be read: it is in a form of its own, or holds "
                "names that are not in UTF-8 or special files.",
                "Ask the hosting provider whether the server has MLSD and uses UTF-8. Check for special files, such as "
                "sockets, "
                "and names with odd letters in the folder."));
        } else if (seen.mlsd.entries) {
            add(fine(Subject::listing, "The server lists with dates (MLSD): " + amount() + " in the folder."));
        } else {
            add(notice(
                Subject::listing, "The server lists without dates (LIST, no MLSD): " + amount() + " in the folder.",
                "All works, with one more question to the server for each file that is compared. Ask the "
                "hosting provider whether there is a server with MLSD."));
        }
    }

    [[nodiscard]] std::string amount() const {
        const auto count = entries()->size();
        return std::to_string(count) + (count == 1 ? " item" : " items");
    }

    void completeness() {
        const auto isCut = [](const SeenListing& list) {
            const auto count = list.entries ? list.entries->size() : 0;
            return (count <= cutListing && count + ownEntries >= cutListing)
                   || std::ranges::any_of(list.answer.replies, [](const auto& reply) {
                          return contains(asciiLowercase(reply), "truncated");
                      });
        };
        if (!isCut(seen.mlsd) && !(seen.list && isCut(*seen.list))) return;
        add(wrong(
            Subject::completeness, "The server cuts the listing of a large folder off, at " + amount() + ".",
            "What is beyond is neither offered nor compared. Ask the hosting provider to raise the limit above the "
            "number of "
            "files in the largest folder (pure-ftpd: -L 20000:5), or spread the files over more folders."));
    }

    // The names with a leading dot that are not this program's own.
    static std::set<std::string> dotNames(const std::optional<std::vector<RemoteEntry>>& entries) {
        std::set<std::string> names;
        for (const auto& entry : entries.value_or(std::vector<RemoteEntry>{})) {
            if (entry.name.starts_with('.') && !entry.name.starts_with(".zembrastel-")) names.insert(entry.name);
        }
        return names;
    }

    void hiddenFiles() {
        const auto shown = seen.list ? dotNames(seen.list->entries) : std::set<std::string>();
        auto there = dotNames(seen.mlsd.entries);
        if (seen.listAll) there.merge(dotNames(seen.listAll->entries));
        const auto hidden = std::ranges::find_if(there, [&shown](const auto& name) { return !shown.contains(name); });
        const bool testFileHidden = seen.upload && seen.upload->listed == false;
        if (hidden != there.end() || testFileHidden) {
            add(notice(
                Subject::hiddenFiles,
                "The server's listings leave out names that begin with a dot"
                    + (hidden != there.end() ? ", such as " + *hidden : std::string()) + ".",
                "Files like .htaccess are uploaded all the same, but a newer version on the server is not "
                "noticed. Ask the hosting provider to have them listed (proftpd: ListOptions -a; vsftpd: "
                "force_dot_files=YES; pure-ftpd: -D)."));
        } else if (!shown.empty() || (seen.upload && seen.upload->listed == true)) {
            add(fine(Subject::hiddenFiles, "Names that begin with a dot are listed."));
        } else {
            add(unknown(
                Subject::hiddenFiles, "The folder shows no name that begins with a dot; only --write finds out more."));
        }
    }

    [[nodiscard]] const SeenDate* queriedDate() const {
        if (seen.upload && seen.upload->date) return &*seen.upload->date;
        return seen.date ? &*seen.date : nullptr;
    }

    void dateQuery() {
        const SeenDate* const date = queriedDate();
        if (date == nullptr) {
            add(unknown(
                Subject::dateQuery,
                "There is no file in the folder whose date could be asked for; --write makes one."));
        } else if (date->date) {
            add(fine(Subject::dateQuery, "The server reports the date of a file."));
        } else {
            add(wrong(
                Subject::dateQuery, "The server does not report the date of a file." + said(date->answer),
                "Without it Zembrastel cannot find newer files on the server. Ask the hosting provider to allow the "
                "command "
                "MDTM."));
        }
    }

    static std::string roughly(Seconds difference) {
        constexpr Seconds hour{3600};
        constexpr Seconds minute{60};
        const Seconds far(std::abs(difference.count()));
        const auto minutes = static_cast<long>(std::lround(far / minute));
        const auto hours = static_cast<long>(far / hour);
        const auto plural = [](long number, const std::string& unit) {
            return std::to_string(number) + " " + unit + (number == 1 ? "" : "s");
        };
        if (far < hour) return plural(minutes, "minute");
        if (far >= 48 * hour) return plural(hours / 24, "day");
        const long rest = minutes % 60;
        return plural(minutes / 60, "hour") + (rest == 0 ? "" : " " + plural(rest, "minute"));
    }

    // Do these differ as the times of two places do?
    static bool isZoneDifference(Seconds difference) {
        constexpr double quarter = 900;
        constexpr double furthest = 14.25 * 3600;
        const double far = std::abs(difference.count());
        return far <= furthest && std::abs(std::remainder(far, quarter)) <= clockTolerance.count();
    }

    static Seconds since(std::chrono::system_clock::time_point time, RemoteDate date) {
        return sinceUnixEpoch(date) - Seconds(time.time_since_epoch());
    }

    static Finding wrongClock(Seconds difference, const std::string& how) {
        const std::string distance = roughly(difference) + (difference.count() > 0 ? " ahead" : " behind");
        if (isZoneDifference(difference)) {
            return wrong(
                Subject::clock, how + distance + ": the server reports dates in its local time, not in UTC.",
                "Files look newer or older than they are, so wrong versions may be offered. Ask the hosting provider "
                "to have "
                "dates reported in UTC (vsftpd: use_localtime=NO).");
        }
        return wrong(
            Subject::clock, how + distance + ": the server's clock is off.",
            "Files look newer or older than they are, so wrong versions may be offered. Check this machine's own "
            "clock; if that is right, ask the hosting provider to set the server's.");
    }

    void serverClock() {
        if (seen.upload && seen.upload->date && seen.upload->date->date) {
            const auto difference = since(seen.upload->at, *seen.upload->date->date);
            if (std::abs(difference.count()) > clockTolerance.count()) {
                add(wrongClock(difference, "The date of a file that was just uploaded is "));
            } else {
                add(fine(Subject::clock, "The server's clock agrees with this machine's."));
            }
            return;
        }
        if (const auto twice = listedAndQueried(); std::abs(twice.count()) > clockTolerance.count()) {
            add(wrongClock(
                twice, "Asked for the date of a file, the server reports another one than in its listing, "));
            return;
        }
        // The dates of old files prove nothing, but no file is from the future. The age of this one is unknown, so the
        // cause is not decided.
        const auto ahead = furthestAhead();
        if (ahead.count() > clockTolerance.count()) {
            add(wrong(
                Subject::clock,
                "A file on the server is dated " + roughly(ahead)
                    + " in the future: the server reports dates in its local time, not in UTC, or its clock is off.",
                "Files look newer or older than they are, so wrong versions may be offered. --write finds out which it "
                "is. Ask the hosting provider to have dates reported in UTC (vsftpd: use_localtime=NO), and the clock "
                "set."));
        } else {
            add(unknown(Subject::clock, "No file is dated in the future; only --write compares the server's clock."));
        }
    }

    [[nodiscard]] Seconds listedAndQueried() const {
        if (!seen.date || !seen.date->date || !seen.mlsd.entries) return {};
        const auto entry = std::ranges::find(*seen.mlsd.entries, seen.date->path, &RemoteEntry::name);
        if (entry == seen.mlsd.entries->end() || !entry->modified) return {};
        return *seen.date->date - *entry->modified;
    }

    [[nodiscard]] Seconds furthestAhead() const {
        Seconds most = Seconds::min();
        if (seen.date && seen.date->date) most = since(seen.at, *seen.date->date);
        for (const auto& entry : seen.mlsd.entries.value_or(std::vector<RemoteEntry>{})) {
            if (entry.modified) most = std::max(most, since(seen.at, *entry.modified));
        }
        return most;
    }

    void upload(const SeenUpload& test) {
        if (test.first.succeeded) {
            add(fine(Subject::upload, "A test file was uploaded under a temporary name and renamed."));
            if (test.second) replacement(*test.second);
        } else {
            add(refusedUpload(test));
        }
        if (!test.left.empty()) {
            std::string names;
            for (const auto& name : test.left) names += (names.empty() ? "" : ", ") + name;
            add(notice(
                Subject::testFile, "The server did not delete the test, which is left in the folder: " + names + ".",
                "It is not needed: delete it in another way. Zembrastel itself never deletes files on the "
                "server, so it works without that right."));
        } else if (test.first.succeeded || (test.plainName && test.plainName->succeeded)) {
            add(fine(Subject::testFile, "The test file was deleted again; nothing is left of it."));
        }
    }

    void replacement(const Transcript& second) {
        if (second.succeeded) {
            add(fine(Subject::replacement, "It was replaced by a second upload in the same way."));
        } else if (contains(second.failure, "RNTO")) {
            add(wrong(
                Subject::replacement, "The server does not rename a file over one that is there." + said(second),
                "So files can be uploaded once and never again. Ask the hosting provider to allow it (proftpd: "
                "AllowOverwrite "
                "on)."));
        } else {
            add(wrong(Subject::replacement, "A second upload of the test file failed." + said(second), uploadRemedy));
        }
    }

    static Finding refusedUpload(const SeenUpload& test) {
        if (test.plainName && test.plainName->succeeded) {
            return wrong(
                Subject::temporaryName, "The server refuses names that begin with a dot." + said(test.first),
                "Every upload begins under such a name (.zembrastel-…), so none works. Ask the hosting provider to "
                "allow names "
                "with a leading dot, or at least those that begin with .zembrastel- (proftpd: PathDenyFilter; vsftpd: "
                "deny_file; pure-ftpd: -x).");
        }
        if (containsAny(test.first.failure, {"RNFR", "RNTO"})) {
            return wrong(
                Subject::rename, "The server takes a file and does not let it be renamed." + said(test.first),
                "Every upload ends with giving the file its name, so none works. Ask the hosting provider to allow the "
                "commands "
                "RNFR and RNTO (vsftpd: cmds_denied; pure-ftpd: without -G).");
        }
        return wrong(Subject::upload, "The server takes no file in this folder." + said(test.first), uploadRemedy);
    }

    static constexpr const char* uploadRemedy =
        "Ask the hosting provider whether the account may write in this folder, and whether its space is used up.";

    const Profile& profile;
    const ServerObservations& seen;
    std::vector<Finding> findings;
};

} // namespace

std::vector<Finding> diagnose(const Profile& profile, const ServerObservations& seen) {
    return Diagnosing(profile, seen).run();
}

} // namespace zembrastel
