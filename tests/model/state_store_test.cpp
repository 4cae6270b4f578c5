#include "model/state_store.h"

#include "model/error.h"
#include "support/file_tree.h"
#include "support/local_site.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using testing::readFile;

SavedState stateNamed(const std::string& name) {
    SavedState state;
    state.profiles.emplace_back().name = name;
    state.baselines[state.profiles.front().id] = {{"a.txt", {.size = 1, .modified = 1700000000.123456789, .inode = 3}}};
    return state;
}

class StateStoreFiles : public ::testing::Test {
protected:
    static fs::perms mode(const fs::path& path) { return fs::status(path).permissions(); }

    testing::TemporaryFolder temporary;
    const fs::path folder = temporary / "share/Zembrastel";
    const fs::path file = folder / "profiles.json";
    const StateStore store{folder};
};

TEST_F(StateStoreFiles, SavedStateIsPrivateAndSurvivesARestart) {
    EXPECT_EQ(store.load(), SavedState{});
    EXPECT_TRUE(fs::is_empty(folder));
    for (const auto& made : {folder, folder.parent_path()}) EXPECT_EQ(mode(made), fs::perms::owner_all) << made;
    store.save(stateNamed("one"));
    fs::permissions(file, fs::perms::others_read, fs::perm_options::add);
    const auto state = stateNamed("two");
    store.save(state);
    EXPECT_EQ(mode(file), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(StateStore(folder).load(), state);
}

TEST_F(StateStoreFiles, UnreadableFileIsNeverChanged) {
    const auto state = encode(stateNamed("one"));
    auto otherProtocol = state;
    otherProtocol.replace(otherProtocol.find("FTPS (TLS)"), 10, "SFTP");
    for (const auto& bytes : {std::string(), std::string("{"), state.substr(0, state.size() / 2), otherProtocol}) {
        testing::writeFile(file, bytes);
        EXPECT_THROW((void)store.load(), SyncError) << bytes;
        EXPECT_THROW(store.save(stateNamed("\xFF")), SyncError);
        EXPECT_EQ(readFile(file), bytes);
    }
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); // which would keep a reader waiting
    EXPECT_EQ(testing::failureOf([&] { return store.load(); }), file.string() + ": It is not a file");
    fs::remove(file);
    testing::writeFile(file / "kept", "x");
    EXPECT_THROW((void)store.load(), SyncError);
    EXPECT_THROW(store.save(stateNamed("two")), fs::filesystem_error);
    EXPECT_TRUE(fs::exists(file / "kept"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(StateStoreFiles, FolderWithOnlyOwnFilesBecomesPrivate) {
    fs::permissions(folder, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec);
    store.save(stateNamed("one"));
    EXPECT_TRUE(StateStore::find(folder));
    EXPECT_NE(mode(folder), fs::perms::owner_all) << "changed by a look";
    EXPECT_EQ(StateStore(folder).load(), store.load());
    EXPECT_EQ(mode(folder), fs::perms::owner_all);
    testing::writeFile(temporary / "site/index.html", "x");
    const auto before = mode(temporary / "site");
    (void)StateStore(temporary / "site");
    EXPECT_EQ(mode(temporary / "site"), before);
    const auto umaskBefore = ::umask(0277);
    (void)StateStore(temporary / "a/b");
    ::umask(umaskBefore);
    for (const auto* made : {"a", "a/b"}) EXPECT_EQ(mode(temporary / made), fs::perms::owner_all) << made;
}

TEST_F(StateStoreFiles, ReadingAMissingFolderCreatesNone) {
    EXPECT_FALSE(StateStore::find(temporary / "misspelt"));
    EXPECT_FALSE(fs::exists(temporary / "misspelt"));
}

TEST_F(StateStoreFiles, ReplacedFolderIsNotWrittenTo) {
    store.save(stateNamed("one"));
    fs::rename(folder, temporary / "elsewhere");
    EXPECT_THROW(store.save(stateNamed("two")), SyncError);
    fs::create_directory(folder);
    EXPECT_THROW(store.save(stateNamed("two")), SyncError);
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(StateStore(temporary / "elsewhere").load().profiles.front().name, "one");
    fs::remove(folder);
    fs::rename(temporary / "elsewhere", folder);
    store.save(stateNamed("two"));
    EXPECT_EQ(store.load().profiles.front().name, "two");
}

TEST_F(StateStoreFiles, FolderThatCannotBeCreatedIsReported) {
    testing::writeFile(temporary / "file", "x");
    EXPECT_THROW(StateStore{temporary / "file"}, fs::filesystem_error);
    EXPECT_THROW(StateStore{temporary / "file/Zembrastel"}, fs::filesystem_error);
}

} // namespace
} // namespace zembrastel
