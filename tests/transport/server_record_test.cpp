#include "transport/compare/server_record.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

using namespace std::chrono_literals;
using Differences = std::vector<std::chrono::duration<double>>;

const RemoteDate recordedDate = toRemoteDate(std::chrono::sys_days(std::chrono::year(2026) / 5 / 1));

TEST(ServerRecord, EditsAreToldFromTheRecordedVersion) {
    const Fingerprint uploaded{.size = 10};
    const Fingerprint chosen{.size = 99};
    const RecordedFile whole{.local = &uploaded, .remoteDate = &recordedDate};
    const RecordedFile undated{.local = &uploaded};
    const RecordedFile decided{.remoteDate = &recordedDate, .announced = &chosen};
    struct {
        const char* what;
        ServerVersion found;
        RecordedFile recorded;
        std::chrono::seconds shift;
        bool differs;
    } const cases[]{
        {"the same", {recordedDate, 10}, whole, 0s, false},
        {"a rounded date", {recordedDate + 1s, 10}, whole, 0s, false},
        {"a later edit", {recordedDate + 2s, 10}, whole, 0s, true},
        {"an older copy put back", {recordedDate - 24h, 10}, whole, 0s, true},
        {"an edit within the same second", {recordedDate, 11}, whole, 0s, true},
        {"a size that the server does not report", {recordedDate, std::nullopt}, whole, 0s, false},
        {"a moved clock", {recordedDate + 1h, 10}, whole, 1h, false},
        {"an edit after the clock moved", {recordedDate + 1h + 5s, 10}, whole, 1h, true},
        {"an edit where no date was recorded", {recordedDate, 11}, undated, 0s, true},
        {"no edit where no date was recorded", {recordedDate, 10}, undated, 0s, false},
        {"a version that the user has decided on", {recordedDate, 99}, decided, 0s, false},
        {"an edit within the second of such a version", {recordedDate + 1s, 98}, decided, 0s, true},
        {"nothing recorded", {recordedDate, 10}, {}, 0s, false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(differsFromRecord(each.found, each.recorded, each.shift), each.differs) << each.what;
    }
}

TEST(ServerRecord, OnlyAMovedClockIsACommonShift) {
    struct {
        const char* what;
        Differences found;
        std::chrono::seconds shift;
    } const cases[]{
        {"summer time", {3600s, 3600s, 3601s}, 1h},
        {"a zone in the west", {-19800s, -19800s, -19800s}, -330min},
        {"two files that were touched together", {3600s, 3600s}, 0s},
        {"all files uploaded anew", {500s, 500s, 500s}, 0s},
        {"one file edited exactly an hour later", {3600s, 0s, 0s}, 0s},
        {"farther than any zone", {30h, 30h, 30h}, 0s},
        {"no file", {}, 0s},
    };
    for (const auto& each : cases) EXPECT_EQ(commonShift(each.found), each.shift) << each.what;
}

} // namespace
} // namespace zembrastel
