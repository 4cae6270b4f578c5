#include "cli/narration.h"

#include <gtest/gtest.h>

namespace zembrastel::testing {
namespace {

using Lines = std::vector<std::string>;

// Tells a profile's events one after another, as the model would, and keeps what is to be shown.
class Story {
public:
    Story& status(const std::string& title, const std::string& detail, std::int64_t pending = 0) {
        ProfileStatus status;
        status.title = title;
        status.detail = detail;
        status.pending = pending;
        return keep(narration.status(status));
    }

    Story& activity(const std::string& text, bool error = false) {
        return keep(narration.activity({.date = {}, .text = text, .error = error}));
    }

    Lines lines;

private:
    Story& keep(const std::optional<std::string>& line) {
        if (line) lines.push_back(*line);
        return *this;
    }

    Narration narration;
};

TEST(Narration, HoursOfPollingAreOneLine) {
    Story story;
    for (int poll = 0; poll < 1000; ++poll) story.status("Watching", "Checking every 2 seconds.");
    EXPECT_EQ(story.lines, Lines{"Watching: Checking every 2 seconds."});
}

TEST(Narration, UploadsAreToldOnceEach) {
    Story story;
    story.status("Changes queued", "Waiting for files to finish saving…", 2);
    story.status("Changes queued", "Waiting for files to finish saving…", 2);
    for (const std::string path : {"a", "b"}) {
        story.status("Uploading", path, 2).status("Uploading", path, 1).activity("Uploaded " + path);
    }
    story.status("Watching", "").status("Changes queued", "Waiting…", 1).status("Changes queued", "Waiting…", 3);
    EXPECT_EQ(
        story.lines, (Lines{
                         "Changes queued: Waiting for files to finish saving… (2 pending)", "Uploading: a (2 pending)",
                         "Uploaded a", "Uploading: b (2 pending)", "Uploaded b", "Watching",
                         "Changes queued: Waiting… (1 pending)", "Changes queued: Waiting… (3 pending)"}));
}

TEST(Narration, FailureThatComesAsActivityAndStatusIsReadOnce) {
    Story story;
    story.activity("curl: (7) Failed to\nconnect", true);
    story.status("Waiting to retry", "curl: (7) Failed to\nconnect Retrying in 5 seconds.");
    story.activity("curl: (7) Failed to\nconnect", true);
    story.status("Waiting to retry", "curl: (7) Failed to\nconnect Retrying in 10 seconds.");
    EXPECT_EQ(
        story.lines, (Lines{
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 5 seconds.",
                         "error: curl: (7) Failed to connect", "Waiting to retry: Retrying in 10 seconds."}));
}

TEST(Narration, EveryFailedRetryOfTheServerCheckIsASignOfLife) {
    Story story;
    for (int attempt = 0; attempt < 3; ++attempt) {
        story.status("Server check needs attention", "curl: (6) Could not resolve host Uploads remain paused.");
        story.activity("curl: (6) Could not resolve host", true);
    }
    EXPECT_EQ(
        story.lines, (Lines{
                         "Server check needs attention: curl: (6) Could not resolve host Uploads remain paused.",
                         "error: curl: (6) Could not resolve host", "error: curl: (6) Could not resolve host"}));
}

} // namespace
} // namespace zembrastel::testing
