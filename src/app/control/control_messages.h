// The requests that the user's other programs send to the program that holds a state folder, and its answers: one JSON
// object a line in both directions, each with the "version" of the protocol.
//
// Values and pure functions; any thread. The last line of an answer is Failed or Done; the answer to `follow` has no
// end. Readers skip unknown members; a missing member has the default of its field. The saved state has a codec of its
// own: it is parsed with simdjson for speed and names the place of each error, so a common codec would be longer.
#pragma once

#include "app/profile_status.h"
#include "platform/uuid.h"
#include "transport/compare/first_comparison.h"
#include "transport/compare/remote_change.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zembrastel {

inline constexpr std::int64_t controlVersion = 1;

struct ControlRequest {
    enum class Kind {
        show,        // the window
        status,      // of the profiles, or of all without any: Status for each
        follow,      // the same, then every Status and Activity as it comes
        pause,       // the profiles: Changed for each that was not paused already
        resume,      // the same
        review,      // of one profile, once its server has been checked: Review
        decide,      // the review of that revision: Activity while it is carried out, then Outcome for each file
        retry,       // the failed server checks of the profiles: Changed for each that had failed
        forgetFiles, // of the profiles that wait for missing files: Changed for each
        sendMissing, // of one profile, what its server lacks; then, once the server has been checked: Review
        sendAll,     // the same with everything that is not known to be equal there
        // Of one profile, once its server has been checked: Status with the files that are missing there, which are not
        // reported again; or Review, which is to be decided first.
        leaveMissing,
        // Of one profile, whose server is checked first: Status and Activity as they come, until the server has all
        // that has changed; or Review, which is to be decided first.
        push,

        // Of one profile whose first check waits for a choice: `adoption` is carried out, once the contents were
        // compared if `comparesContents` is set: Status as before the choice, or nothing if there is no choice.
        adopt
    };

    Kind kind = Kind::status;
    std::vector<Uuid> profiles = {};
    std::string revision = {}; // that of the Review which is decided on, as it came
    bool downloadAll = false;
    std::vector<std::string> download = {}; // paths
    Adoption adoption = Adoption::alike;
    bool comparesContents = false;
};

namespace answer {

// What a first check found of a site that is already on the server; see FirstComparison.
struct Choice {
    std::int64_t files = 0; // in the local folder
    std::int64_t alike = 0;
    std::int64_t otherSizes = 0;
    std::int64_t same = 0;      // contents compared
    std::int64_t different = 0; // contents compared
    std::int64_t bytesToCompare = 0;
    bool comparing = false; // now

    [[nodiscard]] std::int64_t others() const { return files - alike; }
};

struct Status {
    Uuid profile;
    std::string name;
    bool enabled = false;
    bool running = false;
    std::int64_t newerOnServer = 0;   // files that wait for a decision
    std::int64_t missingOnServer = 0; // published files that the server check did not find there
    std::optional<Choice> choice;     // that waits
    ProfileStatus status;             // without its activity
};

struct Activity {
    Uuid profile;
    zembrastel::Activity line;
};

struct Changed {
    Uuid profile;
    bool retried = false; // its server check had failed, and is tried again
};

struct Review {
    Uuid profile;
    std::string revision;              // names this one review; every check makes another
    std::vector<RemoteChange> changes; // without size and inode of the local files
};

struct Outcome {
    std::string path;
    bool kept = false; // the local version, by choice
    bool downloaded = false;
    // Neither: the download failed, or the file changed or vanished meanwhile.
};

struct Failed {
    enum class Reason {
        notUnderstood, // another version, or no request at all
        noWindow,
        noProfile,
        refused,       // the profile cannot do that now; `text` says why
        paused,        // nothing runs for the profile
        needsDownload, // its initial download is not complete
        server,        // `text` is what the conversation with the server ended with
        otherReview,   // the review that was decided on no longer waits; nothing was changed
        choiceWaits,   // the first check waits for a choice, which comes first
        notSaved       // it is done, but could not be saved
    };

    Reason reason = Reason::notUnderstood;
    std::string text = {};
    std::optional<Failure> failure = {}; // of the reason `server`, with its kind

    [[nodiscard]] Failure reported() const { return failure.value_or(Failure{.message = text}); }
};

struct Done {
    bool reviewWaits = false; // after a decision: the check that followed found newer files again
};

} // namespace answer

[[nodiscard]] answer::Choice choiceOf(const FirstComparison& found, bool comparing);

using ControlAnswer = std::variant<
    answer::Status, answer::Activity, answer::Changed, answer::Review, answer::Outcome, answer::Failed, answer::Done>;

// Without a line feed.
[[nodiscard]] std::string encode(const ControlRequest& request);
[[nodiscard]] std::string encode(const ControlAnswer& answer);

// Throw SyncError for anything else, whatever it is.
[[nodiscard]] ControlRequest decodeControlRequest(std::string_view line);
[[nodiscard]] ControlAnswer decodeControlAnswer(std::string_view line);

} // namespace zembrastel
