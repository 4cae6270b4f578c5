// The files of one profile that are newer on the server and wait for a decision, and the outcomes of a decision.
//
// Values; any thread.
#pragma once

#include "platform/uuid.h"
#include "transport/compare/remote_change.h"

#include <set>
#include <string>
#include <vector>

namespace zembrastel {

using PathSet = std::set<std::string, std::less<>>;

struct RemoteReview {
    Uuid id;                        // of the profile
    Uuid reviewId = Uuid::random(); // of this review: a decision names the review that it answers
    std::vector<RemoteChange> changes;
};

// What became of a decision.
enum class Decision {
    accepted, // it is being carried out
    refused,  // nothing was decided: the alert says why
    outdated  // it answers a review that no longer waits. Nothing was changed: show outdatedDecision
};

inline constexpr const char* outdatedDecision =
    "The files that are newer on the server are no longer those that you decided on. Nothing was changed. Review the "
    "files again.";

} // namespace zembrastel
