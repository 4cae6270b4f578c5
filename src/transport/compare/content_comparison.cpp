#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "transport/curl/dialogue.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"

#include <algorithm>
#include <span>
#include <sys/stat.h>
#include <utility>

namespace zembrastel {
namespace {

constexpr std::size_t maxAtOnce = 64;

using FileToCompare = FTPTransport::FileToCompare;

std::string nameOf(std::size_t number) { return "fetched" + std::to_string(number); }

// The first files, as many as one conversation may fetch.
class Batch {
public:
    Batch(const FTPTransport& used, std::span<const FileToCompare> chosen)
        : transport(used), dialogue(used, used.traits->login()), files(chosen) {
        if (dialogue.login == ServerTraits::Login::oneTransfer) files = files.first(1);
    }

    // Compares the first of the files and returns how many; adds the paths of the equal ones to `equal`.
    std::size_t run(std::set<std::string, std::less<>>& equal, Persistence& persistence) {
        std::vector<int> given;
        std::uint64_t longest = 1;
        for (std::size_t number = 0; number < files.size(); ++number) {
            fetched.push_back(folder.folder().create(nameOf(number), S_IRUSR | S_IWUSR));
            given.push_back(fetched.back().get());
            longest = std::max(longest, static_cast<std::uint64_t>(files[number].fingerprint.size));
            dialogue.add(
                {.path = files[number].path, .options = {{"output", ChildProcess::filePathOf(number)}}},
                [this, &equal, number](const BlockOutcome& outcome) {
                    if (outcome.succeeded() && isEqual(number)) equal.insert(files[number].path);
                    ++compared;
                });
        }
        dialogue.hold(std::move(given), {}, longest);
        if (dialogue.broken) persistence.brokeOff(dialogue, compared > 0);
        return compared;
    }

private:
    [[nodiscard]] bool isEqual(std::size_t number) const {
        const auto& [path, fingerprint] = files[number];
        const auto place = LocalPlace::resolve(transport.profile.localFolder, path);
        if (place.fingerprint() != fingerprint) return false;
        const Descriptor here = place.parent->openForReading(place.name);
        return readContents(here.get(), place.url)
                   == readContents(fetched[number].get(), folder.path() / nameOf(number))
               && place.fingerprint() == fingerprint;
    }

    const FTPTransport& transport;
    Dialogue dialogue;
    std::span<const FileToCompare> files;
    const PrivateFolder folder;
    std::vector<Descriptor> fetched;
    std::size_t compared = 0;
};

} // namespace

std::set<std::string, std::less<>> FTPTransport::filesWithEqualContents(const std::vector<FileToCompare>& files) const {
    std::set<std::string, std::less<>> equal;
    std::span<const FileToCompare> left(files);
    Persistence persistence(*traits);
    while (!left.empty()) {
        control->check();
        left = left.subspan(Batch(*this, left.first(std::min(left.size(), maxAtOnce))).run(equal, persistence));
    }
    return equal;
}

} // namespace zembrastel
