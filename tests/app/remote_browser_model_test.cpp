#include "app/context/main_context.h"
#include "app/remote_browser_model.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "support/work_off.h"

#include <atomic>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace zembrastel {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::FtpServer;
using Texts = std::vector<std::string>;

// A queue, and whether a result was posted to it.
class WatchedQueue final : public MainContext {
public:
    void post(std::function<void()> work) override { postAfter(0ms, std::move(work)); }
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override {
        queue.postAfter(delay, std::move(work));
        posted.test_and_set();
        posted.notify_all();
    }

    MainQueue queue;
    std::atomic_flag posted;
};

// A browser of the folder `site` on a server.
struct Browsing : RemoteBrowserObserver {
    explicit Browsing(FtpServer::Kind kind, const Texts& extra = {}) : server(kind, {.extra = extra}), site(server) {
        fs::create_directory(server.root() / "site");
    }

    RemoteBrowserModel& open(bool includeLocal = false) {
        browser = std::make_unique<RemoteBrowserModel>(context, site.profile, site.password, includeLocal);
        browser->observe(*this);
        browser->load("");
        return *browser;
    }

    void put(const Texts& paths) {
        for (const auto& path : paths) server.put("site/" + path, "");
    }

    void folderChanged(const std::string& path) override { events.push_back(path); }

    // Until nothing is loading.
    [[nodiscard]] bool settles() {
        return context.queue.runUntil([this] { return browser->loading().empty(); }, 30s);
    }

    // One line a row, indented by its depth; "+" marks an item that is local only, "/" a folder.
    [[nodiscard]] Texts shown() const {
        Texts lines;
        for (const auto& row : browser->rows()) {
            EXPECT_EQ(fs::path(row.path).filename(), row.entry->name);
            lines.push_back(
                std::string(static_cast<std::size_t>(row.depth), ' ') + (row.entry->localOnly ? "+" : "")
                + row.entry->name + (row.entry->directory ? "/" : ""));
        }
        return lines;
    }

    FtpServer server;
    testing::LocalSite site;
    Texts events;
    WatchedQueue context;
    std::unique_ptr<RemoteBrowserModel> browser;
};

TEST(RemoteBrowser, FailureStaysWithItsFolder) {
    Browsing shop(FtpServer::Kind::vsftpd);
    shop.put({"file10", "file2", "Beta/x", "alpha/deep/y", "alpha/.htaccess", "lost/page"});
    auto& browser = shop.open();
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(shop.shown(), (Texts{"alpha/", "Beta/", "lost/", "file2", "file10"}));
    EXPECT_EQ(browser.children().size(), 1U);

    fs::rename(shop.server.root() / "site/lost", shop.server.root() / "lost");
    for (const auto* folder : {"alpha", "alpha/deep", "lost"}) browser.toggle(folder); // a child before its parent
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(browser.errors().size(), 1U);
    EXPECT_EQ(browser.errors().at("lost"), "The server does not let you read this folder.");
    fs::rename(shop.server.root() / "lost", shop.server.root() / "site/lost");
    for (int times = 0; times < 2; ++times) browser.toggle("lost"); // to try again
    EXPECT_TRUE(browser.errors().empty());
    ASSERT_TRUE(shop.settles());
    const Texts opened{"alpha/", " deep/", "  y", " .htaccess", "Beta/", "lost/", " page", "file2", "file10"};
    EXPECT_EQ(shop.shown(), opened);

    shop.server.stop(); // what is loaded needs no server
    browser.toggle("alpha");
    EXPECT_EQ(shop.shown(), (Texts{"alpha/", "Beta/", "lost/", " page", "file2", "file10"}));
    browser.toggle("alpha");
    EXPECT_EQ(shop.shown(), opened);
    EXPECT_TRUE(browser.loading().empty() && browser.errors().empty());
}

TEST(RemoteBrowser, LocalItemsHideNoServerItems) {
    Browsing shop(FtpServer::Kind::odd);
    shop.put({"linked/page", "kind/page", "ours/page", "both"});
    const auto& site = shop.site;
    testing::writeTree(
        site.root(), {{"target/inner/note", ""},
                      {"kind", "a file here"},
                      {"ours/local", ""},
                      {"both", ""},
                      {".well-known/key", ""}});
    fs::create_directory_symlink(site / "target", site / "linked");
    fs::create_symlink(site / "kind", site / "file-link");
    ASSERT_EQ(::mkfifo((site / "fifo").c_str(), 0600), 0);
    testing::writeFile(site / "caf\xE9", ""); // not UTF-8
    testing::writeFile(site / "two\nlines", "");
    auto& browser = shop.open(true);
    for (const auto* folder : {"linked", "kind", "ours"}) browser.toggle(folder);
    ASSERT_TRUE(shop.settles());
    browser.toggle("target");
    ASSERT_TRUE(shop.settles());
    EXPECT_TRUE(browser.errors().empty());
    EXPECT_EQ(
        shop.shown(), (Texts{
                          "+.well-known/", "kind/", " page", "linked/", " page", "ours/", " +local", " page",
                          "+target/", " +inner/", "both"}));
    EXPECT_TRUE(browser.rows().back().entry->modified) << "the server's entry";

    shop.site.profile.localFolder = site / "nowhere";
    shop.open(true);
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(shop.shown(), (Texts{"kind/", "linked/", "ours/", "both"}));
}

TEST(RemoteBrowser, SlowFolderDelaysNeitherOthersNorTheEnd) {
    Browsing shop(FtpServer::Kind::odd, {"--hang=CWD", "--only=slow*", "--times=4"});
    shop.put({"slow1/page", "slow2/page", "quick/page"});
    auto& browser = shop.open();
    ASSERT_TRUE(shop.settles());
    for (const auto* folder : {"slow1", "slow2", "quick"}) browser.toggle(folder);
    ASSERT_TRUE(shop.context.queue.runUntil([&] { return browser.children().contains("quick"); }, 30s));
    const auto begin = std::chrono::steady_clock::now();
    shop.events.clear();
    browser.cancel();
    EXPECT_EQ(shop.events, (Texts{"slow1", "slow2"}));
    EXPECT_TRUE(browser.loading().empty());
    browser.load("slow1");
    browser.load("slow2");
    shop.browser.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s) << "curl would wait for its 120 seconds";
}

TEST(RemoteBrowser, LateResultIsDropped) {
    Browsing shop(FtpServer::Kind::vsftpd);
    shop.put({"old"});
    shop.open();
    shop.context.posted.wait(false);
    shop.browser.reset();
    ASSERT_TRUE(testing::workOff(shop.context.queue));
    EXPECT_EQ(shop.events, Texts{""}) << "only that loading began";

    shop.context.posted.clear();
    auto& browser = shop.open();
    shop.context.posted.wait(false);
    browser.cancel();
    shop.put({"new"});
    browser.load("");
    ASSERT_TRUE(shop.settles());
    EXPECT_EQ(shop.shown(), (Texts{"new", "old"}));
}

} // namespace
} // namespace zembrastel
