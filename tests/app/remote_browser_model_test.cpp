#include "app/context/main_queue.h"
#include "app/remote_browser_model.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "support/work_off.h"

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::FtpServer;
using testing::LocalSite;
using Texts = std::vector<std::string>;

// A main context on which nothing happens until the test lets it: for results that come too late.
class HeldContext final : public MainContext {
public:
    void post(std::function<void()> work) override {
        const std::lock_guard lock(mutex);
        posted.push_back(std::move(work));
        changed.notify_all();
    }
    void postAfter(std::chrono::milliseconds, std::function<void()> work) override { post(std::move(work)); }

    // The next piece of work, once it is there.
    std::function<void()> take() {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, 30s, [this] { return !posted.empty(); })) throw std::runtime_error("nothing came");
        auto work = std::move(posted.front());
        posted.pop_front();
        return work;
    }

    // What is left when no thread posts any more.
    void runAll() {
        while (!posted.empty()) take()();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> posted;
};

class Witness final : public RemoteBrowserObserver {
public:
    void folderChanged(const std::string& path) override { events.push_back("folder " + path); }
    void expandedChanged(const std::string& path) override { events.push_back("expanded " + path); }

    Texts events;
};

// One line a row, indented by its depth; "+" marks what is local only, "/" a folder.
Texts shown(const RemoteBrowserModel& browser) {
    Texts lines;
    for (const auto& row : browser.rows()) {
        EXPECT_EQ(fs::path(row.path).filename(), row.entry->name);
        lines.push_back(
            std::string(static_cast<std::size_t>(row.depth), ' ') + (row.entry->localOnly ? "+" : "") + row.entry->name
            + (row.entry->directory ? "/" : ""));
    }
    return lines;
}

// A browser of the folder `site` on one server.
class Browsing {
public:
    explicit Browsing(FtpServer::Kind kind, const Texts& extra = {}) : server(kind, {.extra = extra}), site(server) {
        fs::create_directory(server.root() / "site");
    }

    RemoteBrowserModel& open(bool includeLocal = false) {
        browser = std::make_unique<RemoteBrowserModel>(queue, site.profile, site.password, includeLocal);
        browser->observe(witness);
        return *browser;
    }

    void put(const testing::FileTree& files) {
        for (const auto& [path, content] : files) server.put("site/" + path, content);
    }

    // Until nothing is loading.
    [[nodiscard]] bool settles() {
        return queue.runUntil([this] { return browser->loading().empty(); }, 30s);
    }

    FtpServer server;
    LocalSite site;
    Witness witness;
    MainQueue queue;
    std::unique_ptr<RemoteBrowserModel> browser;
};

class RemoteBrowser : public ::testing::Test, protected Browsing {
protected:
    RemoteBrowser() : Browsing(FtpServer::Kind::vsftpd) {}
};

TEST_F(RemoteBrowser, FoldersOpenOneByOneInFileManagerOrderAndAreListedOnce) {
    put({{"file10", ""}, {"file2", ""}, {"Beta/x", ""}, {"alpha/deep/y", ""}, {"alpha/.htaccess", ""}});
    fs::create_directory(server.root() / "site/empty");
    open().load("");
    EXPECT_EQ(browser->loading(), (std::set<std::string, std::less<>>{""}));
    ASSERT_TRUE(settles());
    EXPECT_EQ(shown(*browser), (Texts{"alpha/", "Beta/", "empty/", "file2", "file10"}));
    EXPECT_EQ(browser->children().size(), 1U);

    browser->toggle("alpha");
    browser->toggle("alpha/deep"); // before its parent is there
    browser->toggle("empty");
    ASSERT_TRUE(settles());
    const Texts opened{"alpha/", " deep/", "  y", " .htaccess", "Beta/", "empty/", "file2", "file10"};
    EXPECT_EQ(shown(*browser), opened);
    EXPECT_EQ(browser->rows()[2].path, "alpha/deep/y");
    EXPECT_TRUE(browser->children().at("empty")->empty());

    server.stop(); // nothing needs it again
    browser->toggle("alpha");
    EXPECT_EQ(shown(*browser), (Texts{"alpha/", "Beta/", "empty/", "file2", "file10"}));
    browser->toggle("alpha");
    EXPECT_EQ(shown(*browser), opened);
    EXPECT_TRUE(browser->loading().empty());
    EXPECT_TRUE(browser->errors().empty());
}

TEST_F(RemoteBrowser, FailureStaysWithItsFolderAndReopeningTriesAgain) {
    put({{"good/page", ""}, {"lost/page", ""}});
    open().load("");
    ASSERT_TRUE(settles());
    fs::rename(server.root() / "site/lost", server.root() / "lost");
    browser->toggle("lost");
    browser->toggle("good");
    ASSERT_TRUE(settles());
    EXPECT_EQ(browser->errors().size(), 1U);
    EXPECT_EQ(browser->errors().at("lost"), "curl: (9) Server denied you to change to the given directory");
    EXPECT_EQ(shown(*browser), (Texts{"good/", " page", "lost/"}));

    fs::rename(server.root() / "lost", server.root() / "site/lost");
    browser->toggle("lost");
    browser->toggle("lost");
    EXPECT_TRUE(browser->errors().empty());
    ASSERT_TRUE(settles());
    EXPECT_EQ(shown(*browser), (Texts{"good/", " page", "lost/", " page"}));
}

TEST_F(RemoteBrowser, LocalProblemNeverHidesWhatTheServerHas) {
    put({{"linked/page", ""}, {"missing/page", ""}, {"kind/page", ""}, {"ours/page", ""}});
    testing::writeTree(site.root(), {{"target/secret", ""}, {"kind", "a file here"}, {"ours/local", ""}});
    fs::create_directory_symlink(site / "target", site / "linked");
    fs::create_directory_symlink(site / "target", site / "only-a-link");
    fs::create_symlink(site / "kind", site / "file-link");
    ASSERT_EQ(::mkfifo((site / "fifo").c_str(), 0600), 0);
    testing::writeFile(site / "caf\xE9", ""); // not UTF-8
    testing::writeFile(site / "two\nlines", "");
    open(true).load("");
    for (const auto* folder : {"linked", "missing", "kind", "ours", "target"}) browser->toggle(folder);
    ASSERT_TRUE(settles());
    EXPECT_TRUE(browser->errors().contains("target")); // asked for before it was known to be local only
    EXPECT_EQ(
        shown(*browser),
        (Texts{"kind/", " page", "linked/", " page", "missing/", " page", "ours/", " +local", " page", "+target/"}));

    site.profile.localFolder = site / "nowhere";
    open(true).load("");
    ASSERT_TRUE(settles());
    EXPECT_EQ(shown(*browser), (Texts{"kind/", "linked/", "missing/", "ours/"}));
}

TEST(RemoteBrowserWithLocal, WhatIsOnBothSidesIsListedOnceAndHiddenLocalItemsAreShown) {
    Browsing shop(FtpServer::Kind::odd);
    shop.put({{"shared/server.html", ""}, {"both", "server"}, {"zeta", ""}});
    testing::writeTree(
        shop.site.root(),
        {{"both", "here"}, {"shared/here.html", ""}, {"drafts/inner/note", ""}, {".well-known/key", ""}, {"note", ""}});
    shop.open(true).load("");
    ASSERT_TRUE(shop.settles());
    shop.browser->toggle("drafts");
    shop.browser->toggle("shared");
    ASSERT_TRUE(shop.settles());
    shop.browser->toggle("drafts/inner");
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(
        shown(*shop.browser), (Texts{
                                  "+.well-known/", "+drafts/", " +inner/", "  +note", "shared/", " +here.html",
                                  " server.html", "both", "+note", "zeta"}));
    EXPECT_TRUE(shop.browser->rows()[7].entry->modified);
    EXPECT_TRUE(shop.browser->errors().empty());

    shop.open(false).load("");
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(shown(*shop.browser), (Texts{"shared/", "both", "zeta"}));
}

TEST(RemoteBrowserOnAHangingServer, SlowFolderHoldsUpNeitherTheOthersNorTheEnd) {
    Browsing shop(FtpServer::Kind::odd, {"--hang=CWD", "--only=slow*", "--times=4"});
    shop.put({{"slow1/page", ""}, {"slow2/page", ""}, {"quick/page", ""}});
    shop.open().load("");
    ASSERT_TRUE(shop.settles());
    auto& browser = *shop.browser;
    for (const auto* folder : {"slow1", "slow2", "quick"}) browser.toggle(folder);
    ASSERT_TRUE(shop.queue.runUntil([&] { return browser.children().contains("quick"); }, 30s));
    EXPECT_EQ(browser.loading(), (std::set<std::string, std::less<>>{"slow1", "slow2"}));

    const auto begin = std::chrono::steady_clock::now();
    shop.witness.events.clear();
    browser.cancel();
    EXPECT_EQ(shop.witness.events, (Texts{"folder slow1", "folder slow2"}));
    EXPECT_TRUE(browser.loading().empty());
    browser.load("slow1");
    browser.load("slow2");
    shop.witness.events.clear();
    shop.browser.reset();
    // curl would wait for its 120 seconds.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    ASSERT_TRUE(testing::workOff(shop.queue));
    EXPECT_TRUE(shop.witness.events.empty());
}

TEST_F(RemoteBrowser, ResultThatComesTooLateReachesNobody) {
    HeldContext context;
    put({{"old", ""}});
    const auto begin = [&] {
        browser = std::make_unique<RemoteBrowserModel>(context, site.profile, site.password, false);
        browser->observe(witness);
        browser->load("");
    };
    begin();
    const auto orphan = context.take();
    browser.reset();
    orphan();
    context.runAll();
    EXPECT_EQ(witness.events, Texts{"folder "});

    begin();
    const auto late = context.take();
    browser->cancel();
    put({{"new", ""}});
    browser->load("");
    late();
    EXPECT_TRUE(browser->children().empty());
    EXPECT_TRUE(browser->loading().contains(""));
    while (!browser->loading().empty()) context.take()();
    EXPECT_EQ(shown(*browser), (Texts{"new", "old"}));
    browser.reset();
    context.runAll();
}

} // namespace
} // namespace zembrastel
