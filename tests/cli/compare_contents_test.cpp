// The profile option "Compare contents": files of which only the date is new are not sent.
#include "server_fixture.h"

#include <sys/stat.h>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class CompareContents : public CliWithServer {
protected:
    void SetUp() override {
        CliWithServer::SetUp();
        if (IsSkipped()) return;
        writeTree(site, {{"images/b.svg", "<b/>"}, {"news/1.html", "one"}, {"news/2.html", "two"}});
        place.expect(2, "profile set 'My website' --compare-contents yes");
        place.expect(0, "profile set 'My website' --compare-contents on");
        expect(0, "push", {"5 files"});
    }

    // All files are written again, as by a build, with these contents instead of their own.
    void build(const FileTree& changes = {}) {
        ++builds;
        for (auto& [path, text] : readTree(site)) {
            const auto changed = changes.find(path);
            fs::remove(site / path);
            writeFile(site / path, changed == changes.end() ? text : changed->second);
            touch(site / path, begun + builds * 1s);
        }
    }

    // The files that the server got: each upload makes a new file there.
    [[nodiscard]] Texts sentBy(const std::string& command, const Texts& texts = {}) {
        const auto inodes = [this] {
            std::map<std::string, ino_t> found;
            for (const auto& [path, text] : readTree(serverSite)) {
                struct stat attributes {};
                EXPECT_EQ(::stat((serverSite / path).c_str(), &attributes), 0);
                found.emplace(path, attributes.st_ino);
            }
            return found;
        };
        auto before = inodes();
        expect(0, command, texts);
        Texts sent;
        for (const auto& [path, inode] : inodes()) {
            if (before[path] != inode) sent.push_back(path);
        }
        return sent;
    }

    int builds = 0;
    const std::chrono::sys_seconds begun = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    static constexpr std::size_t all = 5;
};

TEST_F(CompareContents, NewDatesAloneSendNothing) {
    build();
    expect(0, "push --dry-run", {"5 files have a new date but the same content and are not sent.", "Nothing to push"});
    EXPECT_EQ(sentBy("push", {"5 files have a new date but the same content and are not sent."}), Texts{});
    EXPECT_EQ(sentBy("push", {"Nothing to push"}), Texts{}) << "recorded with the new dates";
    build({{"news/1.html", "ONE"}, {"news/2.html", "three"}});
    expect(0, "push --dry-run", {"Would upload news/1.html", "To push: 2 files."});
    EXPECT_EQ(sentBy("push --json", {R"("files":2,"sameContents":3)"}), (Texts{"news/1.html", "news/2.html"}));
    build();
    EXPECT_EQ(sentBy("push", {"5 files have a new date"}), Texts{}) << "the hashes are those of the later uploads";
}

// Otherwise a file would not be sent that the server does not have.
TEST_F(CompareContents, OtherVersionOnServerIsNotTrusted) {
    fs::remove(serverSite / "news/1.html");
    build();
    EXPECT_EQ(sentBy("push"), Texts{"news/1.html"});

    changeOnServer("news/2.html", "their", 1h);
    expect(3, "push");
    place.expect(0, "review 'My website' --keep-all");
    expect(0, "push", {"Nothing to push"});
    build();
    EXPECT_EQ(sentBy("push"), Texts{"news/2.html"});

    const auto date = fs::last_write_time(serverSite / "index.html");
    server->put("site/index.html", "TORN!");
    fs::last_write_time(serverSite / "index.html", date);
    build();
    EXPECT_EQ(sentBy("push"), Texts{}) << "the same for unchanged files";
    build();
    EXPECT_EQ(sentBy("push --all"), Texts{"index.html"});
    fs::create_directory(server->root() / "other");
    server->handOver();
    place.expect(0, "profile set 'My website' --remote-folder " + server->remoteFolder("other"));
    build();
    expect(0, "push", {"Pushed \"My website\": 5 files."});
    EXPECT_EQ(readTree(server->root() / "other"), readTree(site));
}

TEST_F(CompareContents, ComparedContentsCountAsPublished) {
    place.saveProfile(place.profile()); // nothing is recorded of its files
    expect(3, "push");
    expect(0, "adopt --by content");
    build();
    EXPECT_EQ(sentBy("push", {"5 files have a new date"}), Texts{});

    const auto record = place.state() / ("contents-" + place.profile().id.text() + ".hashes");
    fs::remove(record);
    expect(0, "push --all");
    build();
    EXPECT_EQ(sentBy("push", {"5 files have a new date"}), Texts{});

    // As when the option is switched on for files that were published or downloaded before.
    fs::remove(record);
    expect(0, "push", {"Nothing to push"});
    build();
    EXPECT_EQ(sentBy("push", {"5 files have a new date"}), Texts{});
}

TEST_F(CompareContents, KillNeverLeavesAFileUnsent) {
    for (int lines = 0; lines < 4; ++lines) {
        build({{"index.html", std::string(5, static_cast<char>('a' + lines))}, {"news/1.html", std::to_string(lines)}});
        Program push = place.start("push 'My website' --json");
        for (int read = 0; read < lines; ++read) (void)push.readLine(limit);
        push.kill();
    }
    expect(0, "push");
    EXPECT_EQ(readTree(serverSite), readTree(site));
}

} // namespace
} // namespace zembrastel::testing
