#include "sync/unchanged_contents.h"

#include <gtest/gtest.h>

namespace zembrastel {
namespace {

TEST(UnchangedContents, FileThatMayDifferOnServerIsSent) {
    const Fingerprint published{.size = 5, .modified = 1, .inode = 1};
    const Fingerprint now{.size = 5, .modified = 2, .inode = 2};
    const RemoteDate date{RemoteDate::duration(100)};
    const PublishedContent content{.fingerprint = published, .date = date, .hash = {}};
    const PublishedContent earlier{.fingerprint = now, .date = date, .hash = {}};
    const Fingerprint longer{.size = 6, .modified = 2, .inode = 2};
    const ServerVersion there{.modified = date, .size = 5};
    const ServerVersion unsized{.modified = date};
    const ServerVersion newer{.modified = date + RemoteDate::duration(2), .size = 5};
    const ServerVersion torn{.modified = date, .size = 4};
    struct Case {
        const Fingerprint& now;
        const Fingerprint* baseline;
        const PublishedContent* content;
        const ServerVersion* onServer;
        bool may;
    };
    for (const auto& each : std::vector<Case>{
             {now, &published, &content, &there, true},
             {now, &published, &content, &unsized, true},
             {longer, &published, &content, &there, false},
             {now, nullptr, &content, &there, false},
             {now, &published, nullptr, &there, false},
             {now, &published, &earlier, &there, false},
             {now, &published, &content, nullptr, false},
             {now, &published, &content, &newer, false},
             {now, &published, &content, &torn, false}}) {
        EXPECT_EQ(mayHavePublishedContent(each.now, each.baseline, each.content, each.onServer), each.may);
    }
}

} // namespace
} // namespace zembrastel
