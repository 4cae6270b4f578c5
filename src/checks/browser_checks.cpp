#include "app/remote_browser_model.h"
#include "checks/check.h"
#include "checks/server_fixture.h"

namespace zembrastel {
namespace {

using Names = std::vector<std::string>;

// A folder on both sides, a folder that is local only, and a file that is only on the server.
class Selector : public ServerFixture {
public:
    explicit Selector(const TestServer& server) : ServerFixture(server) {
        colleagueUploads("shared/page", "1");
        write("shared/page", "1");
        write("drafts/note", "1");
        browser.load("");
    }

    // What the browser lists in a folder, in its order.
    [[nodiscard]] Names listed(const std::string& path) {
        (void)waitUntil([this] { return browser.loading().empty(); });
        const auto failure = browser.errors().find(path);
        require(failure == browser.errors().end(), failure == browser.errors().end() ? "" : failure->second);
        const auto found = browser.children().find(path);
        require(found != browser.children().end(), "no listing came");
        Names names;
        for (const auto& entry : *found->second) names.push_back(entry.name + (entry.localOnly ? ", local only" : ""));
        return names;
    }

    RemoteBrowserModel browser{queue, profile, TestServer::password, true};
};

void localOnlyIncluded(const TestServer& server) {
    Selector selector(server);
    requireEqual("the selector", selector.listed(""), {"drafts, local only", "shared", "README.txt"});
}

void localOnlyExpanded(const TestServer& server) {
    Selector selector(server);
    (void)selector.listed("");
    // If the server were asked, it would now know of this one.
    selector.colleagueUploads("drafts/hers", "1");
    selector.browser.toggle("drafts");
    requireEqual("the expanded folder", selector.listed("drafts"), {"note, local only"});
}

} // namespace

Checks browserChecks(const TestServer& server) {
    return {
        {"sync selector includes local-only folders", [server] { localOnlyIncluded(server); }},
        {"local-only folders can be expanded in the selector", [server] { localOnlyExpanded(server); }}};
}

} // namespace zembrastel
