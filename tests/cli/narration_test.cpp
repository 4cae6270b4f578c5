#include "cli/text/status_text.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {

using namespace cli;

namespace {

using Lines = std::vector<std::string>;

// Tells a profile's events one after another, as the model would, and keeps what is to be shown.
class Story {
public:
    void status(Phase phase, const std::string& detail) {
        ProfileStatus status;
        status.enter(phase, detail);
        if (const auto line = narration.status(status)) lines.push_back(*line);
    }

    void activity(const std::string& text, bool error = false) {
        if (const auto line = narration.activity(
                {.date = {}, .text = text, .kind = error ? Activity::Kind::failure : Activity::Kind::note}))
            lines.push_back(*line);
    }

    Lines lines;

private:
    Narration narration;
};

TEST(Narration, FailureThatComesAsActivityAndStatusIsReadOnceAtEveryAttempt) {
    Story story;
    for (const std::string seconds : {"5", "10"}) {
        story.activity("curl: (7) Failed to\nconnect", true);
        story.status(Phase::waitingToRetry, "curl: (7) Failed to\nconnect. Retrying in " + seconds + " seconds.");
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
        story.status(Phase::checkFailed, "curl: (6) No host. Uploads remain paused.");
        story.activity("curl: (6) No host", true);
    }
    EXPECT_EQ(
        story.lines, (Lines{
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 5 seconds.",
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 10 seconds.",
                         "Server check needs attention: curl: (6) No host. Uploads remain paused.",
                         "error: curl: (6) No host", "error: curl: (6) No host"}));
}

} // namespace
} // namespace zembrastel::testing
