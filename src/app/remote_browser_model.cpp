#include "app/remote_browser_model.h"

#include "app/diagnosis/failure_catalogue.h"
#include "model/error.h"
#include "platform/directory_walk.h"
#include "platform/folder.h"
#include "platform/name_order.h"
#include "platform/text.h"
#include "transport/curl/curl_configuration.h"
#include "transport/download/local_replacement.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

// One folder to be listed on a background thread, with all that this needs.
struct FolderListing {
    FTPTransport transport;
    std::string path;
    bool onServer;
    bool locally;

    [[nodiscard]] std::vector<RemoteEntry> run() const {
        auto entries = onServer ? transport.list(path) : std::vector<RemoteEntry>{};
        if (locally) addLocalOnly(entries);
        // The program's own backups are never synchronised.
        std::erase_if(entries, [this](const auto& entry) { return childPath(path, entry.name) == backupFolder; });
        return sorted(std::move(entries));
    }

    // Why the listing failed, for the user.
    [[nodiscard]] std::string reason(const Failure& failure) const {
        const auto explanation =
            path.empty() ? explain(failure, transport.profile) : explainListing(failure, transport.profile);
        return explanation.heading.text();
    }

private:
    void addLocalOnly(std::vector<RemoteEntry>& entries) const {
        try {
            auto found = localOnly(entries);
            std::move(found.begin(), found.end(), std::back_inserter(entries));
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception&) {
            // What the server has is worth showing all the same.
        }
    }

    // The items of the local folder that are not among `entries`.
    [[nodiscard]] std::vector<RemoteEntry> localOnly(const std::vector<RemoteEntry>& entries) const {
        std::vector<RemoteEntry> found;
        const auto place = LocalPlace::resolve(transport.profile.localFolder, path);
        const auto folder = place.parent ? place.parent->enter(place.name) : std::nullopt;
        if (!folder) return found;
        std::set<std::string_view> known; // not hashed: the server chooses the names
        for (const auto& entry : entries) known.insert(entry.name);
        visitItems(*folder, [&](const WalkEntry& item) {
            transport.control->check();
            const bool directory = item.kind == EntryKind::folder;
            if (!directory && item.kind != EntryKind::file) return;
            // What can be neither sent nor saved cannot be chosen either.
            if (!isValidUtf8(item.name) || !validName(item.name) || known.contains(item.name)) return;
            found.push_back(
                {.name = std::string(item.name),
                 .directory = directory,
                 .modified = std::nullopt,
                 .localOnly = true,
                 .size = directory ? std::nullopt : sizeOf(item)});
        });
        return found;
    }

    // Nullopt if the file has vanished meanwhile.
    [[nodiscard]] static std::optional<std::uint64_t> sizeOf(const WalkEntry& item) {
        try {
            return static_cast<std::uint64_t>(item.attributes().st_size);
        } catch (const std::filesystem::filesystem_error&) {
            return std::nullopt;
        }
    }

    [[nodiscard]] std::vector<RemoteEntry> sorted(std::vector<RemoteEntry> entries) const {
        struct Keyed {
            std::string key;
            RemoteEntry* entry;
        };
        std::vector<Keyed> order;
        order.reserve(entries.size());
        for (auto& entry : entries) {
            transport.control->check();
            order.push_back({.key = (entry.directory ? '0' : '1') + nameSortKey(entry.name), .entry = &entry});
        }
        std::stable_sort(order.begin(), order.end(), [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
        std::vector<RemoteEntry> result;
        result.reserve(entries.size());
        for (const auto& keyed : order) result.push_back(std::move(*keyed.entry));
        return result;
    }
};

} // namespace

RemoteBrowserModel::RemoteBrowserModel(
    MainContext& mainContext, Profile toBrowse, std::string knownPassword, bool withLocal)
    : context(mainContext), browsed(std::move(toBrowse)), password(std::move(knownPassword)), mergesLocal(withLocal),
      tasks(mainContext) {}

RemoteBrowserModel::~RemoteBrowserModel() {
    for (const auto& [path, control] : controls) control->cancel();
}

void RemoteBrowserModel::notify(const std::function<void(RemoteBrowserObserver&)>& report) const {
    for (auto* observer : observers) report(*observer);
}

void RemoteBrowserModel::load(std::string path) {
    if (underWay.contains(path)) return;
    const auto changed = [&path](RemoteBrowserObserver& observer) { observer.folderChanged(path); };
    if (std::cmp_greater_equal(splitNonEmpty(path, '/').size(), maxFolderLevels)) {
        failures.insert_or_assign(path, "Maximum folder depth reached.");
        notify(changed);
        return;
    }
    const auto control = std::make_shared<TransferControl>();
    const FolderListing listing{
        .transport = {.profile = browsed, .password = password, .control = control},
        .path = path,
        .onServer = !isLocalOnly(path),
        .locally = mergesLocal};
    controls.insert_or_assign(path, control);
    underWay.insert(path);
    failures.erase(path);
    notify(changed);
    const auto done = [this, path, control](Result result) {
        context.post(
            lifetime.guard([this, path, control, result = std::move(result)] { finish(path, control, result); }));
    };
    try {
        (void)tasks.start([listing, done](const std::stop_token&) {
            try {
                done({.entries = std::make_shared<const std::vector<RemoteEntry>>(listing.run()), .failure = {}});
            } catch (const Cancelled&) {
                // No caller waits for it any more.
            } catch (const std::exception& error) {
                const auto failure = failureOf(error);
                done(
                    {.entries = nullptr,
                     .failure = listing.reason(failure),
                     .ofCertificate = isOfCertificate(failure.code)});
            }
        });
    } catch (const std::system_error& error) {
        finish(path, control, {.entries = nullptr, .failure = describe(error)});
    }
}

void RemoteBrowserModel::finish(
    const std::string& path, const std::shared_ptr<TransferControl>& control, const Result& result) {
    const auto running = controls.find(path);
    if (running == controls.end() || running->second != control) return; // it was cancelled
    controls.erase(running);
    underWay.erase(path);
    refusedCertificate = result.ofCertificate;
    if (result.entries) {
        loaded.insert_or_assign(path, result.entries);
    } else {
        failures.insert_or_assign(path, result.failure);
    }
    notify([&path](RemoteBrowserObserver& observer) { observer.folderChanged(path); });
}

bool RemoteBrowserModel::isLocalOnly(std::string_view path) const {
    const auto slash = path.rfind('/');
    const auto parent = loaded.find(slash == std::string_view::npos ? "" : path.substr(0, slash));
    if (parent == loaded.end()) return false;
    const auto name = path.substr(slash + 1); // all of it without a slash
    const auto& siblings = *parent->second;
    const auto entry =
        std::find_if(siblings.begin(), siblings.end(), [name](const RemoteEntry& each) { return each.name == name; });
    return entry != siblings.end() && entry->localOnly;
}

void RemoteBrowserModel::toggle(std::string path) {
    const bool closes = opened.erase(path) > 0;
    if (!closes) opened.insert(path);
    notify([&path](RemoteBrowserObserver& observer) { observer.expandedChanged(path); });
    if (!closes && !loaded.contains(path)) load(std::move(path));
}

void RemoteBrowserModel::cancel() {
    for (const auto& [path, control] : controls) control->cancel();
    controls.clear();
    for (const auto& path : std::exchange(underWay, {})) {
        notify([&path](RemoteBrowserObserver& observer) { observer.folderChanged(path); });
    }
}

std::vector<RemoteBrowserRow> RemoteBrowserModel::rows() const {
    std::vector<RemoteBrowserRow> rows;
    appendRows("", 0, rows);
    return rows;
}

void RemoteBrowserModel::appendRows(const std::string& folder, int depth, std::vector<RemoteBrowserRow>& rows) const {
    const auto found = loaded.find(folder);
    if (found == loaded.end()) return;
    const Entries& entries = found->second;
    for (const auto& entry : *entries) {
        rows.push_back({.path = childPath(folder, entry.name), .entry = {entries, &entry}, .depth = depth});
        if (!entry.directory) continue;
        const auto open = opened.find(rows.back().path);
        if (open != opened.end()) appendRows(*open, depth + 1, rows);
    }
}

} // namespace zembrastel
