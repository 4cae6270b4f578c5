#include "transport/publish/leftovers.h"

#include "model/error.h"
#include "model/scan.h"
#include "platform/uuid.h"
#include "transport/curl/dialogue.h"
#include "transport/download/local_replacement.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/publish/server_answers.h"

#include <filesystem>
#include <map>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <vector>

namespace zembrastel {
namespace {

constexpr std::string_view prefix = ".zembrastel-";

bool hasSuffix(std::string_view path, std::string_view suffix) {
    const std::string_view name = path.substr(path.rfind('/') + 1); // of a path without "/" the whole
    return name.size() > prefix.size() + suffix.size() && name.starts_with(prefix) && name.ends_with(suffix)
           && Uuid::parse(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()));
}

std::vector<std::string> leftoversIn(const Profile& profile, const TransferControl& control) {
    std::vector<std::string> found;
    const auto note = [&found](std::string_view path) {
        if (isTemporaryPath(path)) found.emplace_back(path);
    };
    (void)scan(profile, {.checkpoint = [&control] { control.check(); }, .excluded = note});
    return found;
}

void clear(const std::string& localFolder, const std::string& path) {
    const auto leftover = LocalPlace::resolve(localFolder, path);
    const auto item = leftover.attributes();
    if (!item || !S_ISREG(item->st_mode)) return;
    const Descriptor file = leftover.parent->openForReading(leftover.name);
    // A running download holds the lock on its file.
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
    if (hasSuffix(path, copySuffix)) {
        leftover.parent->remove(leftover.name);
    } else {
        moveToBackup(localFolder, *leftover.parent, leftover.name, path);
    }
}

template <class Step>
void attempt(const Step& step) {
    try {
        step();
    } catch (const SyncError&) {
        // The folder is gone, or there is a link on the way now.
    } catch (const std::filesystem::filesystem_error&) {
        // It may not be moved, or is gone.
    } catch (const Cancelled&) {
        // The starting job notices it as well.
    }
}

} // namespace

bool isTemporaryPath(std::string_view path) { return hasSuffix(path, copySuffix) || hasSuffix(path, displacedSuffix); }

void clearLeftovers(const Profile& profile, const TransferControl& control) {
    attempt([&] {
        for (const auto& path : leftoversIn(profile, control)) {
            attempt([&] { clear(profile.localFolder, path); });
        }
    });
}

void addRemovals(Dialogue& dialogue, const FTPTransport& transport) {
    std::map<std::string, std::vector<ServerTraits::Leftover>> folders;
    for (auto& left : transport.traits->leftovers(transport.profile)) folders[left.folder].push_back(left);
    for (const auto& [folder, files] : folders) {
        std::vector<std::string> commands;
        for (const auto& file : files) commands.push_back("DELE " + file.name);
        dialogue.add(
            commandsIn(folder, commands), [traits = transport.traits, tried = files](const BlockOutcome& outcome) {
                const Replies replies(outcome, tried.size());
                for (std::size_t i = 0; i < tried.size(); ++i) {
                    traits->triedToRemove(tried[i], bool(replies.after("250", i)));
                }
            });
    }
}

void removeLeftovers(const FTPTransport& transport) {
    Dialogue dialogue(transport, transport.traits->login());
    addRemovals(dialogue, transport);
    dialogue.run({}, {});
}

} // namespace zembrastel
