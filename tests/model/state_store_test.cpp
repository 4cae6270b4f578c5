#include "model/state_store.h"

#include "model/error.h"
#include "platform/private_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <sys/stat.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;

struct stat attributes(const fs::path& path) {
    struct stat found {};
    EXPECT_EQ(lstat(path.c_str(), &found), 0) << path;
    return found;
}

unsigned mode(const fs::path& path) { return attributes(path).st_mode & 07777U; }

void writeFile(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

std::string bytesOf(std::istream& file) {
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return bytesOf(file);
}

SavedState stateNamed(const std::string& name) {
    SavedState state;
    state.profiles.emplace_back().name = name;
    state.baselines[state.profiles.front().id]["a.txt"] = {.size = 1, .modified = 1700000000.123456789, .inode = 3};
    return state;
}

class StateStoreFiles : public testing::Test {
protected:
    PrivateFolder temporary;
    fs::path folder = temporary.path() / "share/Zembrastel";
    fs::path file = folder / "profiles.json";
};

TEST_F(StateStoreFiles, WhatWasSavedIsThereAtTheNextStartForTheOwnerAlone) {
    EXPECT_EQ(StateStore(folder).load(), SavedState{});
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(mode(folder), 0700U);
    EXPECT_EQ(mode(folder.parent_path()), 0700U);
    StateStore(folder).save(stateNamed("one"));
    fs::permissions(file, fs::perms::others_read, fs::perm_options::add);
    const auto state = stateNamed("two");
    StateStore(folder).save(state);
    EXPECT_EQ(mode(file), 0600U);
    EXPECT_EQ(StateStore(folder).load(), state);
}

TEST_F(StateStoreFiles, AReaderOfTheOldFileNeverSeesHalfOfTheNewOne) {
    const StateStore store(folder);
    store.save(stateNamed("one"));
    const auto before = attributes(file).st_ino;
    std::ifstream reader(file, std::ios::binary);
    const auto whole = bytesOf(file);
    store.save(stateNamed(std::string(100000, 'x')));
    EXPECT_NE(attributes(file).st_ino, before);
    EXPECT_EQ(bytesOf(reader), whole);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(StateStoreFiles, AFileThatCannotBeUnderstoodIsLeftAsItWas) {
    const StateStore store(folder);
    const auto state = encode(stateNamed("one"));
    auto otherProtocol = state;
    otherProtocol.replace(otherProtocol.find("FTPS (TLS)"), 10, "SFTP");
    for (const auto& bytes : {std::string(), std::string("{"), state.substr(0, state.size() / 2), otherProtocol}) {
        writeFile(file, bytes);
        EXPECT_THROW((void)store.load(), SyncError) << bytes;
        EXPECT_EQ(bytesOf(file), bytes);
    }
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_THROW((void)store.load(), fs::filesystem_error);
}

TEST_F(StateStoreFiles, AFailedSaveLeavesTheOldStateAndNoLitter) {
    const StateStore store(folder);
    store.save(stateNamed("one"));
    const auto before = bytesOf(file);
    EXPECT_THROW(store.save(stateNamed("\xFF")), SyncError);
    EXPECT_EQ(bytesOf(file), before);

    fs::remove(file);
    fs::create_directories(file / "kept");
    EXPECT_THROW(store.save(stateNamed("two")), fs::filesystem_error);
    EXPECT_TRUE(fs::exists(file / "kept"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(StateStoreFiles, AFolderThatCannotBeMadeIsReportedAtOnce) {
    const auto blocked = temporary.path() / "file";
    writeFile(blocked, "x");
    EXPECT_THROW(StateStore{blocked}, fs::filesystem_error);
    EXPECT_THROW(StateStore{blocked / "Zembrastel"}, fs::filesystem_error);
}

} // namespace
} // namespace zembrastel
