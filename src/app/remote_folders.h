// The choice of a remote folder: all folders of a server below "/", the folder in which a login starts, and the making
// of new folders.
//
// Main context; no call blocks on a server. Paths have no leading "/": "" is the server's top folder.
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/lifetime.h"
#include "app/context/main_context.h"
#include "app/remote_browser_model.h"
#include "model/profile.h"
#include "transport/failure.h"
#include "transport/ftp_transport.h"
#include "transport/transfer_control.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

// One folder of the tree.
struct RemoteFolder {
    std::string path;
    std::string name; // "/" for the top folder
};

class RemoteFolders : private RemoteBrowserObserver {
public:
    // A new folder that the server is asked for, or that it refused.
    struct Creation {
        std::string parent;
        std::string name;
        std::string failure = {}; // why it was refused, for the user; empty while the request runs
    };

    // Logs in as the draft of a profile, which need not be saved. `changed` is called on the main context after every
    // change. The context must outlive the object.
    RemoteFolders(MainContext& mainContext, Profile draft, std::string knownPassword, std::function<void()> changed);
    // Ends all requests without waiting for a server. Nothing is reported afterwards.
    ~RemoteFolders() override;

    // Connects, and opens the folders above `path`, or above the draft's remote folder. Opens those above the login
    // folder if the remote folder is empty, or if it does not exist and nothing nearer to it does. What was loaded is
    // loaded again.
    void connect(const std::optional<std::string>& path = std::nullopt);

    // Nullopt until the server has answered.
    [[nodiscard]] const std::optional<std::string>& loginFolder() const { return login; }
    // Why there is no connection, for the user; empty without a failure.
    [[nodiscard]] const std::string& failure() const { return connectFailure; }
    // True if that is because the server's certificate was refused.
    [[nodiscard]] bool certificateRefused() const { return refusedCertificate; }

    // The folder at which the tree opens: the deepest folder found so far on the way to the wanted one. Nullopt before
    // the first listing, and after settleTarget().
    [[nodiscard]] std::optional<std::string> target() const;
    // The user chose another folder meanwhile.
    void settleTarget() { wanted.reset(); }

    [[nodiscard]] bool isOpen(const std::string& path) const { return tree->expanded().contains(path); }
    [[nodiscard]] bool isLoading(const std::string& path) const { return tree->loading().contains(path); }
    [[nodiscard]] bool isLoaded(const std::string& path) const { return tree->children().contains(path); }
    // Why the folder could not be listed, for the user; empty if it could.
    [[nodiscard]] std::string failureOf(const std::string& path) const;
    void toggle(const std::string& path) { tree->toggle(path); }
    void load(const std::string& path) { tree->load(path); }

    // The known subfolders, in the order of a file manager. The way to the login folder is known without a listing.
    [[nodiscard]] std::vector<RemoteFolder> subfolders(const std::string& path) const;

    // Makes a folder on the server, and then loads `parent` again to find it there. One request at a time.
    void create(const std::string& parent, const std::string& name);
    void forgetCreation();
    [[nodiscard]] const std::optional<Creation>& creation() const { return newFolder; }

private:
    void folderChanged(const std::string& path) override;
    void expandedChanged(const std::string&) override { notify(); }
    void connected(const std::string& folder, const std::optional<std::string>& path);
    [[nodiscard]] bool has(const std::string& path) const;
    void created();
    void startTree();
    // What is left to do on the main context.
    using Next = std::function<void()>;
    using Request = std::function<Next(const FTPTransport&)>;
    using Failed = std::function<Next(const Failure&, const Profile&)>;
    void run(std::string remoteFolder, Request request, Failed failed);

    MainContext& context;
    const Profile profile;
    const std::string password;
    const std::function<void()> notify;
    std::unique_ptr<RemoteBrowserModel> tree;
    std::optional<std::string> login;
    std::string connectFailure;
    bool refusedCertificate = false;
    std::optional<std::string> wanted; // opened as far as it exists
    std::optional<Creation> newFolder;
    std::shared_ptr<TransferControl> control; // of the latest request
    Lifetime lifetime;
    BackgroundTasks tasks;
};

} // namespace zembrastel
