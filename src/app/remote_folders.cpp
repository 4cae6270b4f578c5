#include "app/remote_folders.h"

#include "app/diagnosis/failure_catalogue.h"
#include "model/error.h"
#include "platform/text.h"
#include "transport/curl/curl_configuration.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

// "/a//b/" becomes "a/b".
std::string withoutRoot(std::string_view folder) {
    std::string path;
    for (const auto component : splitNonEmpty(folder, '/')) path = childPath(path, component);
    return path;
}

std::string parentOf(std::string_view path) {
    const auto slash = path.rfind('/');
    return std::string(path.substr(0, slash == std::string_view::npos ? 0 : slash));
}

std::string nameOf(std::string_view path) { return path.empty() ? "/" : std::string(path.substr(path.rfind('/') + 1)); }

bool isBelow(std::string_view path, std::string_view folder) {
    if (folder.empty()) return !path.empty();
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

// The folder below `folder` on the way to `path`, which is below it.
std::string nextOnTheWay(const std::string& folder, const std::string& path) {
    return path.substr(0, path.find('/', folder.empty() ? 0 : folder.size() + 1));
}

} // namespace

RemoteFolders::RemoteFolders(
    MainContext& mainContext, Profile draft, std::string knownPassword, std::function<void()> changed)
    : context(mainContext), profile(std::move(draft)), password(std::move(knownPassword)), notify(std::move(changed)),
      tasks(mainContext) {
    startTree();
}

RemoteFolders::~RemoteFolders() {
    if (control) control->cancel();
    tree->forget(*this);
}

void RemoteFolders::startTree() {
    Profile whole = profile;
    whole.remoteFolder = "/";
    tree = std::make_unique<RemoteBrowserModel>(context, std::move(whole), password, false);
    tree->observe(*this);
}

// Runs the request on a thread of its own and then, on the main context, what it returns.
void RemoteFolders::run(std::string remoteFolder, Request request, Failed failed) {
    if (control) control->cancel();
    control = std::make_shared<TransferControl>();
    FTPTransport transport{.profile = profile, .password = password, .control = control};
    transport.profile.remoteFolder = std::move(remoteFolder);
    const auto deliver = [this, running = control](Next next) {
        context.post(lifetime.guard([this, running, next = std::move(next)] {
            if (running != control) return;
            next();
            notify();
        }));
    };
    (void)tasks.start(
        [request = std::move(request), failed = std::move(failed), transport, deliver](const std::stop_token&) {
            try {
                deliver(request(transport));
            } catch (const Cancelled&) {
                // The object is gone, or another request has replaced this one.
            } catch (const std::exception& error) {
                deliver(failed(zembrastel::failureOf(error), transport.profile));
            }
        });
}

void RemoteFolders::connect(const std::optional<std::string>& path) {
    startTree();
    login.reset();
    connectFailure.clear();
    refusedCertificate = false;
    newFolder.reset();
    wanted.reset();
    run(
        "/",
        [this, path](const FTPTransport& transport) -> Next {
            return [this, path, folder = transport.loginFolder()] { connected(folder, path); };
        },
        [this](const Failure& failure, const Profile& asked) -> Next {
            return [this, reason = explain(failure, asked).heading.text(), code = failure.code] {
                connectFailure = reason;
                refusedCertificate = isOfCertificate(code);
            };
        });
    notify();
}

void RemoteFolders::connected(const std::string& folder, const std::optional<std::string>& path) {
    login = withoutRoot(folder);
    const auto entered = withoutRoot(profile.remoteFolder);
    const bool isAbsolute = profile.remoteFolder.starts_with('/');
    wanted = path                           ? *path
             : isAbsolute || login->empty() ? entered
             : entered.empty()              ? *login
                                            : childPath(*login, entered);
    tree->toggle("");
}

void RemoteFolders::folderChanged(const std::string& path) {
    if (wanted && isBelow(*wanted, path) && !isLoading(path)) {
        auto next = nextOnTheWay(path, *wanted);
        if (isLoaded(path) && !has(next) && login && isBelow(*login, path)) {
            wanted = login;
            next = nextOnTheWay(path, *wanted);
        }
        if (next != *wanted && has(next) && !isOpen(next)) tree->toggle(next);
    }
    notify();
}

bool RemoteFolders::has(const std::string& path) const {
    const auto siblings = subfolders(parentOf(path));
    return std::ranges::find(siblings, path, &RemoteFolder::path) != siblings.end();
}

std::optional<std::string> RemoteFolders::target() const {
    if (!wanted) return std::nullopt;
    std::string found;
    while (isBelow(*wanted, found)) {
        const auto next = nextOnTheWay(found, *wanted);
        if (!has(next)) break;
        found = next;
    }
    return found;
}

std::string RemoteFolders::failureOf(const std::string& path) const {
    const auto failure = tree->errors().find(path);
    return failure == tree->errors().end() ? std::string() : failure->second;
}

std::vector<RemoteFolder> RemoteFolders::subfolders(const std::string& path) const {
    std::vector<RemoteFolder> found;
    if (const auto listed = tree->children().find(path); listed != tree->children().end()) {
        for (const auto& entry : *listed->second) {
            if (entry.directory) found.push_back({.path = childPath(path, entry.name), .name = entry.name});
        }
    }
    if (login && isBelow(*login, path)) {
        const auto next = nextOnTheWay(path, *login);
        const bool isKnown = std::ranges::find(found, next, &RemoteFolder::path) != found.end();
        const bool isListing = isLoading(path) && !isLoaded(path);
        if (!isKnown && !isListing) found.push_back({.path = next, .name = nameOf(next)});
    }
    return found;
}

void RemoteFolders::create(const std::string& parent, const std::string& name) {
    newFolder = {.parent = parent, .name = name};
    if (!validName(name)) {
        newFolder->failure = "A folder cannot have this name: " + printable(name);
        notify();
        return;
    }
    run(
        '/' + childPath(parent, name),
        [this](const FTPTransport& transport) -> Next {
            transport.createFolder();
            return [this] { created(); };
        },
        [this](const Failure& failure, const Profile& asked) -> Next {
            return [this, reason = explainCreation(failure, asked).heading.text()] { newFolder->failure = reason; };
        });
    notify();
}

void RemoteFolders::created() {
    const auto parent = newFolder->parent;
    wanted = childPath(parent, newFolder->name);
    newFolder.reset();
    if (!isOpen(parent)) tree->toggle(parent);
    tree->load(parent);
}

void RemoteFolders::forgetCreation() {
    if (newFolder && control) control->cancel();
    if (newFolder) control.reset(); // drops its result
    newFolder.reset();
    notify();
}

} // namespace zembrastel
