// The tree of the content picker: the folders of the server, listed one at a time as they are opened, together with the
// items that exist only in the local folder. It does not know what is chosen.
//
// Main context; no call blocks on a server. Listings run side by side, each with a thread and a control of its own; a
// failure belongs to its folder. Loaded contents are never refreshed: make a new model for that. Paths are relative to
// the profile's remote folder, which is "".
#pragma once

#include "app/context/background_tasks.h"
#include "app/context/lifetime.h"
#include "app/context/main_context.h"
#include "model/profile.h"
#include "transport/listing/remote_entry.h"
#include "transport/transfer_control.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

// One visible line of the tree; its path is its identity.
struct RemoteBrowserRow {
    std::string path;
    std::shared_ptr<const RemoteEntry> entry; // never null, and good for as long as the row
    int depth = 0;                            // 0 for what lies in the remote folder itself
};

// Reports changes to the views. Called on the main context, after the change.
class RemoteBrowserObserver {
public:
    virtual ~RemoteBrowserObserver() = default;

    // Of one folder: its contents, whether it is loading, or its error.
    virtual void folderChanged(const std::string&) {}
    // A folder was opened or closed.
    virtual void expandedChanged(const std::string&) {}
};

class RemoteBrowserModel {
public:
    // The contents of one folder: folders first, each group ordered as a file manager would.
    using Entries = std::shared_ptr<const std::vector<RemoteEntry>>;

    // The profile need not be saved. With `withLocal` every listing also has what exists locally alone. The context
    // must outlive the model.
    RemoteBrowserModel(MainContext& mainContext, Profile toBrowse, std::string knownPassword, bool withLocal);
    RemoteBrowserModel(const RemoteBrowserModel&) = delete;
    RemoteBrowserModel& operator=(const RemoteBrowserModel&) = delete;
    // Ends all listings without waiting for a server. No result is reported afterwards.
    ~RemoteBrowserModel();

    // The observer must outlive the model or be removed.
    void observe(RemoteBrowserObserver& observer) { observers.insert(&observer); }
    void forget(RemoteBrowserObserver& observer) { observers.erase(&observer); }

    [[nodiscard]] const Profile& profile() const { return browsed; }
    [[nodiscard]] bool includeLocal() const { return mergesLocal; }

    // What was loaded, by folder; never null.
    [[nodiscard]] const std::map<std::string, Entries, std::less<>>& children() const { return loaded; }
    // The folders that are open, also while they are not loaded.
    [[nodiscard]] const std::set<std::string, std::less<>>& expanded() const { return opened; }
    [[nodiscard]] const std::set<std::string, std::less<>>& loading() const { return underWay; }
    // Why the last listing of a folder failed, for the user.
    [[nodiscard]] const std::map<std::string, std::string, std::less<>>& errors() const { return failures; }
    // True if the last listing failed because the server's certificate was refused.
    [[nodiscard]] bool certificateRefused() const { return refusedCertificate; }

    // Lists one folder, unless that is under way. A folder that exists locally alone is not asked for on the server.
    void load(std::string path);

    // Opens or closes a folder; one that is opened and not loaded is listed.
    void toggle(std::string path);

    // Ends every listing under way as though it had not begun.
    void cancel();

    // All lines that are visible, from top to bottom. Computed anew each time.
    [[nodiscard]] std::vector<RemoteBrowserRow> rows() const;

private:
    struct Result {
        Entries entries; // null when there is a failure
        std::string failure;
        bool ofCertificate = false;
    };

    [[nodiscard]] bool isLocalOnly(std::string_view path) const;
    void finish(const std::string& path, const std::shared_ptr<TransferControl>& control, const Result& result);
    void appendRows(const std::string& folder, int depth, std::vector<RemoteBrowserRow>& rows) const;
    void notify(const std::function<void(RemoteBrowserObserver&)>& report) const;

    MainContext& context;
    const Profile browsed;
    const std::string password;
    const bool mergesLocal;
    std::set<RemoteBrowserObserver*> observers;
    std::map<std::string, Entries, std::less<>> loaded;
    std::set<std::string, std::less<>> opened;
    std::set<std::string, std::less<>> underWay;
    std::map<std::string, std::string, std::less<>> failures;
    bool refusedCertificate = false;
    std::map<std::string, std::shared_ptr<TransferControl>> controls; // of the folders under way
    Lifetime lifetime;
    BackgroundTasks tasks;
};

} // namespace zembrastel
