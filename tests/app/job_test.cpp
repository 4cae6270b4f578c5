#include "app/job.h"

#include "model/error.h"

#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace zembrastel {
namespace {

// The job's states and steps by the names that the table uses.
class Steps {
public:
    using Step = std::function<bool(Job&)>;

    const std::vector<std::pair<std::string, Step>> all{
        {"password", [](Job& job) { return job.takePassword("secret"); }},
        {"check", [this](Job& job) { return job.check(start); }},
        {"check fails", [](Job& job) { return job.failCheck("no answer"); }},
        {"review", [](Job& job) { return job.awaitDecision({.id = job.work().profile.id, .changes = {}}); }},
        {"download", [this](Job& job) { return job.download(start); }},
        {"download fails", [](Job& job) { return job.failDownload("no answer"); }},
        {"initial download", [this](Job& job) { return job.downloadInitially(start); }},
        {"watch", [this](Job& job) { return job.watch(start); }},
        {"end", [](Job& job) {
             job.end();
             return true;
         }}};

    bool take(const std::string& name, Job& job) const {
        for (const auto& [known, step] : all) {
            if (known == name) return step(job);
        }
        ADD_FAILURE() << name;
        return false;
    }

    std::size_t started = 0;
    std::stop_source last;
    const Job::StartTask start = [this] {
        ++started;
        return last = std::stop_source();
    };
};

struct Row {
    std::vector<std::string> way; // to the state
    std::size_t state;            // of Job::State
    std::vector<std::string> allowed;
    bool hasTask;
};

TEST(Job, NoStepIsTakenFromAStateThatDoesNotAllowIt) {
    const std::vector<Row> table{
        {{}, 0, {"password", "check", "initial download", "watch"}, false},
        {{"check"}, 1, {"check fails", "review", "watch"}, true},
        {{"check", "check fails"}, 2, {"check fails", "review", "watch"}, true},
        {{"check", "review"}, 3, {"download", "watch"}, false},
        {{"check", "review", "download"}, 4, {"check", "download fails", "watch"}, true},
        {{"check", "review", "download", "download fails"}, 5, {}, false},
        {{"initial download"}, 6, {}, true},
        {{"watch"}, 7, {}, true},
        {{"check", "end"}, 8, {}, false}};
    EXPECT_EQ(table.size(), std::variant_size_v<Job::State>);
    for (const auto& row : table) {
        for (const auto& [name, step] : Steps().all) {
            SCOPED_TRACE(std::to_string(row.state) + ", " + name);
            Steps steps;
            Job job{Profile()};
            for (const auto& before : row.way) EXPECT_TRUE(steps.take(before, job));
            ASSERT_EQ(job.state().index(), row.state);
            EXPECT_EQ(job.review() != nullptr, job.is<Job::AwaitingDecision>());
            EXPECT_EQ(job.failure() != nullptr, job.is<Job::CheckFailed>() || job.is<Job::DownloadFailed>());
            const std::size_t started = steps.started;
            const std::stop_source task = steps.last;
            const bool isEnd = name == "end";
            const bool isAllowed = isEnd || std::ranges::count(row.allowed, name) > 0;
            EXPECT_EQ(steps.take(name, job), isAllowed);
            if (!isAllowed) {
                EXPECT_EQ(job.state().index(), row.state);
                EXPECT_EQ(steps.started, started) << "a task was started beside another";
            }
            EXPECT_EQ(task.stop_requested(), row.state == 8 || (isEnd && row.hasTask));
        }
    }
}

TEST(Job, EndingRefusesEveryLaterTransfer) {
    Job job{Profile()};
    const auto control = job.work().control;
    job.end();
    EXPECT_THROW(control->check(), Cancelled);
    EXPECT_TRUE(job.is<Job::Ended>());
}

TEST(Job, ThreadThatCannotBeHadLeavesTheStateAsItWas) {
    Job job{Profile()};
    const auto fails = []() -> std::stop_source { throw std::runtime_error("no thread"); };
    EXPECT_THROW((void)job.check(fails), std::runtime_error);
    EXPECT_TRUE(job.is<Job::ReadingPassword>());
}

} // namespace
} // namespace zembrastel
