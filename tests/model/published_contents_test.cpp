#include "model/records/published_contents.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::writeFile;

PublishedContent contentOf(const std::string& path, std::int64_t version) {
    return {
        .fingerprint = {.size = version, .modified = 0.1 * static_cast<double>(version), .inode = 7},
        .date = RemoteDate(RemoteDate::duration(static_cast<double>(version))),
        .hash = hashOf(path + std::to_string(version))};
}

class PublishedContentsTest : public ::testing::Test {
protected:
    // Adds this version of the files, and records it.
    void add(std::int64_t version, const std::vector<std::string>& paths) {
        PublishedContentMap entries;
        for (const auto& path : paths) {
            entries.emplace(path, contentOf(path, version));
            baseline.set(path, entries.at(path).fingerprint);
        }
        record.add(entries, baseline);
    }

    [[nodiscard]] PublishedContentMap find() const {
        std::map<std::string, Fingerprint, std::less<>> versions;
        for (const auto& [path, fingerprint] : baseline) versions.emplace(path, fingerprint);
        return PublishedContents(folder.path(), profile).find(versions);
    }

    [[nodiscard]] bool findsOnlyAdded() const {
        return std::ranges::all_of(find(), [](const auto& entry) {
            return entry.second == contentOf(entry.first, entry.second.fingerprint.size);
        });
    }

    testing::TemporaryFolder folder;
    Profile profile;
    FileMap baseline;
    PublishedContents record{folder.path(), profile};
    fs::path file = folder / ("contents-" + profile.id.text() + ".hashes");
};

TEST_F(PublishedContentsTest, DamagedFileNeverYieldsAnotherHash) {
    add(1, {"a", "b/c"});
    add(2, {"b/c", "d"});
    ASSERT_EQ(find().size(), 3U);
    const std::string whole = readFile(file);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile(file, whole.substr(0, length));
        EXPECT_TRUE(findsOnlyAdded()) << length;
        auto flipped = whole;
        flipped[length] = static_cast<char>(flipped[length] ^ 0x10);
        writeFile(file, flipped);
        EXPECT_TRUE(findsOnlyAdded()) << length;
        if (length % 20 != 0) continue;
        record = PublishedContents(folder.path(), profile); // the next run
        add(3, {"d"});
        EXPECT_EQ(find().at("d"), contentOf("d", 3)) << "the file is made anew";
        add(2, {"d"});
    }
}

TEST_F(PublishedContentsTest, HashesOfAnotherPlaceAreNotUsed) {
    add(1, {"a"});
    const Profile original = profile;
    for (auto change : std::vector<std::function<void()>>{
             [this] { profile.host = "other"; }, [this] { profile.port = 22; }, [this] { profile.username = "other"; },
             [this] { profile.remoteFolder = "/other"; }, [this] { profile.localFolder = "/other"; }}) {
        profile = original;
        EXPECT_EQ(find().size(), 1U);
        change();
        EXPECT_TRUE(find().empty());
    }
    baseline.set("a", contentOf("a", 2).fingerprint);
    profile = original;
    EXPECT_TRUE(find().empty()) << "nor those of another version";
}

TEST_F(PublishedContentsTest, FileDoesNotGrowWithoutEnd) {
    std::vector<std::string> paths;
    for (int number = 0; number < 5000; ++number) paths.push_back("folder/" + std::to_string(number));
    for (std::int64_t version = 0; version < 20; ++version) add(version, paths);
    EXPECT_EQ(find().size(), paths.size());
    EXPECT_LT(fs::file_size(file), std::uintmax_t{4} << 20); // 8 MB of entries were added
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

} // namespace
} // namespace zembrastel
