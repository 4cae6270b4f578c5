#include "model/state_store.h"

#include "model/error.h"
#include "support/file_tree.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

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

TEST_F(StateStoreFiles, WhatWasSavedIsThereAtTheNextStartForTheOwnerAlone) {
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

TEST_F(StateStoreFiles, AReaderOfTheOldFileNeverSeesHalfOfTheNewOne) {
    store.save(stateNamed("one"));
    fs::create_hard_link(file, temporary / "opened");
    const auto whole = readFile(file);
    store.save(stateNamed(std::string(100000, 'x')));
    EXPECT_EQ(readFile(temporary / "opened"), whole);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(StateStoreFiles, AFileThatCannotBeUnderstoodOrReplacedIsLeftAsItWas) {
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
    testing::writeFile(file / "kept", "x");
    EXPECT_THROW((void)store.load(), fs::filesystem_error);
    EXPECT_THROW(store.save(stateNamed("two")), fs::filesystem_error);
    EXPECT_TRUE(fs::exists(file / "kept"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(StateStoreFiles, AFolderThatCannotBeMadeIsReportedAtOnce) {
    testing::writeFile(temporary / "file", "x");
    EXPECT_THROW(StateStore{temporary / "file"}, fs::filesystem_error);
    EXPECT_THROW(StateStore{temporary / "file/Zembrastel"}, fs::filesystem_error);
}

} // namespace
} // namespace zembrastel
