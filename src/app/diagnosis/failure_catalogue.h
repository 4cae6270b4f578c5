// What the user reads about a failure: what happened, what to do next, and what the program offers for it.
//
// The only place that has these sentences: the window, the terminal and the notifications show them. Pure functions;
// any thread.
#pragma once

#include "model/profile.h"
#include "transport/failure.h"

#include <string>
#include <vector>

namespace zembrastel {

// A sentence with places for names: "{0}" is the first argument. A face may translate the pattern.
struct Phrase {
    const char* pattern = "";
    std::vector<std::string> arguments = {};

    [[nodiscard]] std::string text() const;
};

enum class FailureAction { reviewCertificate, compareKeys, editProfile, createFolder, retry, pause };

struct Explanation {
    Phrase heading;                     // what happened
    Phrase next;                        // what to do; empty if the heading says it all
    std::vector<FailureAction> actions; // the most helpful one first
    std::string details;                // the words of curl, without its general advice; empty if there are none
    bool known = true;                  // false if the heading says no more than that there was a failure

    // Heading and next step.
    [[nodiscard]] std::string text() const;
};

// The whole explanation in one line of text, with the file that the failure is about and without the details.
[[nodiscard]] std::string explainedText(const Failure& failure, const Profile& profile);

// Explains a failure of this profile's work.
[[nodiscard]] Explanation explain(const Failure& failure, const Profile& profile);

// Explains why the remote folder of this profile, which the server has, was not listed.
[[nodiscard]] Explanation explainListing(const Failure& failure, const Profile& profile);

// Explains why the remote folder of this profile was not created.
[[nodiscard]] Explanation explainCreation(const Failure& failure, const Profile& profile);

// True if the remote folder of the profile does not exist or cannot be entered, so that creating it may help.
[[nodiscard]] bool lacksRemoteFolder(const Failure& failure, const Profile& profile);

// curl's message without the lines that refer to curl's web pages and explain its options.
[[nodiscard]] std::string withoutGeneralAdvice(const std::string& message);

} // namespace zembrastel
