#include "cli/narration.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

using Lines = std::vector<std::string>;

// Tells a profile's events one after another, as the model would, and keeps what is to be shown.
class Story {
public:
    void status(const std::string& title, const std::string& detail, std::int64_t pending = 0) {
        ProfileStatus status;
        status.title = title;
        status.detail = detail;
        status.pending = pending;
        if (const auto line = narration.status(status)) lines.push_back(*line);
    }

    void activity(const std::string& text, bool error = false) {
        if (const auto line = narration.activity({.date = {}, .text = text, .error = error})) lines.push_back(*line);
    }

    Lines lines;

private:
    Narration narration;
};

TEST(Narration, PollsAreToldOnceAndSoIsEachUpload) {
    Story story;
    for (int poll = 0; poll < 1000; ++poll) story.status("Changes queued", "Waiting…", 2);
    for (const std::string path : {"a", "b"}) {
        story.status("Uploading", path, 2);
        story.status("Uploading", path, 1);
        story.activity("Uploaded " + path);
    }
    story.status("Watching", "");
    for (const int pending : {1, 3}) story.status("Changes queued", "Waiting…", pending);
    EXPECT_EQ(
        story.lines, (Lines{
                         "Changes queued: Waiting… (2 pending)", "Uploading: a (2 pending)", "Uploaded a",
                         "Uploading: b (2 pending)", "Uploaded b", "Watching", "Changes queued: Waiting… (1 pending)",
                         "Changes queued: Waiting… (3 pending)"}));
}

TEST(Narration, FailureThatComesAsActivityAndStatusIsReadOnceAtEveryAttempt) {
    Story story;
    for (const std::string seconds : {"5", "10"}) {
        story.activity("curl: (7) Failed to\nconnect", true);
        story.status("Waiting to retry", "curl: (7) Failed to\nconnect. Retrying in " + seconds + " seconds.");
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
        story.status("Server check needs attention", "curl: (6) No host. Uploads remain paused.");
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
