// The reviews of files that are newer on the server, the failures that keep uploads back, and what the next server
// check of each profile has to consider.
//
// Main context. A review belongs to the job that found it, or was postponed by "Stay paused" and belongs to a profile
// without a job.
#pragma once

#include "app/model_observer.h"
#include "app/remote_review.h"
#include "model/records/resend_request.h"
#include "transport/compare/first_comparison.h"

#include <map>
#include <optional>
#include <string>

namespace zembrastel {

class Reviews {
public:
    struct Unsettled {
        // Paths of the last review that were neither kept nor downloaded since. The next check offers them whatever the
        // dates of the local files are: an edit of the local file must not overwrite what the user did not decide on.
        PathSet unanswered;
        PathSet disputed;             // by the last worker: see event::ServerChanged
        PathSet newerAtFirst;         // on the server; see ServerRecord
        PathSet missing;              // published files that the last check did not find on the server
        std::optional<Resend> resend; // requested, and not begun; see ResendRequest
        // The answer to the choice of the next check, if that is a first comparison: given before, see NewPlace.
        std::optional<Adoption> adoption;
    };

    explicit Reviews(const Observers& toNotify) : observers(toNotify) {}

    [[nodiscard]] const std::map<Uuid, RemoteReview>& all() const { return reviews; }
    [[nodiscard]] const std::map<Uuid, std::string>& failures() const { return checkFailures; }
    [[nodiscard]] const std::optional<RemoteReview>& presented() const { return shown; }

    // Publishes the review and the failure of the profile's job, each nullptr if there is none. Without the review of a
    // job a postponed one counts. A presented review that is over is closed.
    void publish(const Uuid& id, const RemoteReview* ofJob, const std::string* failure);

    // For a profile without a job. It is to be published.
    void postpone(const RemoteReview& review) { postponedReviews.insert_or_assign(review.id, review); }
    void dropPostponed(const Uuid& id) { postponedReviews.erase(id); }
    [[nodiscard]] const RemoteReview* postponed(const Uuid& id) const; // nullptr if there is none

    void open(const Uuid& id);
    void close();
    // Presents the first review, unless one is presented.
    void presentNext();

    [[nodiscard]] Unsettled& unsettled(const Uuid& id) { return questions[id]; }
    [[nodiscard]] const PathSet& missing(const Uuid& id) const;
    void forget(const Uuid& id) { questions.erase(id); }

private:
    void present(std::optional<RemoteReview> review);

    const Observers& observers;
    std::map<Uuid, RemoteReview> reviews;
    std::map<Uuid, RemoteReview> postponedReviews;
    std::map<Uuid, std::string> checkFailures;
    std::optional<RemoteReview> shown;
    std::map<Uuid, Unsettled> questions;
};

[[nodiscard]] PathSet pathsOf(const std::vector<RemoteChange>& changes);

// "a.html, b.html", and of many paths only how many more there are.
[[nodiscard]] std::string listedPaths(const PathSet& paths);

} // namespace zembrastel
