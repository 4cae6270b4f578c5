#include "app/jobs/job.h"

#include "model/error.h"

#include <gtest/gtest.h>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::string_view allSteps = "pcfaosrdxiwe";

struct Steps {
    std::size_t started = 0;
    std::stop_source last;
    const Job::StartTask start = [this] {
        ++started;
        return last = std::stop_source();
    };

    bool take(char step, Job& job) const {
        switch (step) {
        case 'p':
            return job.takePassword("secret");
        case 'c':
            return job.check(start);
        case 'f':
            return job.failCheck("no answer");
        case 'a':
            return job.awaitChoice({.first = FirstComparison()});
        case 'o':
            return job.compareContents(start, std::make_shared<TransferControl>());
        case 's':
            return job.endComparison();
        case 'r':
            return job.awaitDecision({.id = job.work().profile.id, .changes = {}});
        case 'd':
            return job.download(start);
        case 'x':
            return job.failDownload("no answer");
        case 'i':
            return job.downloadInitially(start);
        case 'w':
            return job.watch(start);
        default:
            job.end();
            return true;
        }
    }
};

TEST(Job, LateStepStartsNoSecondTask) {
    struct Row {
        std::string_view way; // to the state, which is the one of this row in Job::State
        std::string_view allowed;
        bool hasTask;
    };
    const std::vector<Row> table{{"", "pciw", false}, {"c", "farw", true}, {"cf", "farw", true}, {"ca", "co", false},
                                 {"cao", "sx", true}, {"cr", "dw", false}, {"crd", "cxw", true}, {"crdx", "", false},
                                 {"i", "", true},     {"w", "", true},     {"ce", "", false}};
    ASSERT_EQ(table.size(), std::variant_size_v<Job::State>);
    for (std::size_t state = 0; state < table.size(); ++state) {
        for (const char name : allSteps) {
            SCOPED_TRACE(std::string(table[state].way) + ", " + name);
            Steps steps;
            Job job{Profile()};
            for (const char before : table[state].way) EXPECT_TRUE(steps.take(before, job));
            ASSERT_EQ(job.state().index(), state);
            EXPECT_EQ(job.review() != nullptr, job.is<Job::AwaitingDecision>());
            EXPECT_EQ(job.failure() != nullptr, job.is<Job::CheckFailed>() || job.is<Job::DownloadFailed>());
            const auto started = steps.started;
            const std::stop_source task = steps.last;
            const bool allowed = name == 'e' || table[state].allowed.find(name) != std::string_view::npos;
            EXPECT_EQ(steps.take(name, job), allowed);
            if (!allowed) {
                EXPECT_EQ(std::pair(job.state().index(), steps.started), std::pair(state, started));
            }
            EXPECT_EQ(
                task.stop_requested(),
                (allowed && name == 's')
                    || (job.is<Job::Ended>() && (table[state].hasTask || state + 1 == table.size())));
            const auto control = job.work().control;
            EXPECT_EQ(control->isStopped(), job.is<Job::Ended>());
        }
    }
}

TEST(Job, MissingThreadLeavesTheState) {
    Job job{Profile()};
    const auto fails = []() -> std::stop_source { throw std::runtime_error("no thread"); };
    EXPECT_THROW((void)job.check(fails), std::runtime_error);
    EXPECT_TRUE(job.is<Job::ReadingPassword>());
}

} // namespace
} // namespace zembrastel
