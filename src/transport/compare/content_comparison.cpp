#include "model/error.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/private_folder.h"
#include "transport/curl/conversation.h"
#include "transport/ftp_transport.h"
#include "transport/local_place.h"
#include "transport/publish/publish_decision.h"

#include <algorithm>
#include <span>
#include <sys/stat.h>

namespace zembrastel {
namespace {

constexpr std::size_t maxAtOnce = 64;

using FileToCompare = FTPTransport::FileToCompare;

class Batch {
public:
    Batch(const FTPTransport& used, std::span<const FileToCompare> chosen)
        : transport(used), files(chosen), login(used.traits->login()) {
        if (login == ServerTraits::Login::oneTransfer) files = files.first(1);
        for (std::size_t number = 0; number < files.size(); ++number) {
            fetched.push_back(folder.folder().create(nameOf(number), S_IRUSR | S_IWUSR));
        }
    }

    // Compares the first of the files and returns how many; adds the paths of the equal ones to `equal`.
    std::size_t run(std::set<std::string, std::less<>>& equal) {
        TransferPlan plan;
        for (std::size_t number = 0; number < files.size(); ++number) {
            plan.files.push_back(fetched[number].get());
            plan.blocks.push_back(blockFor(number));
            plan.maxWritten =
                std::max(plan.maxWritten.value_or(1), static_cast<std::uint64_t>(files[number].fingerprint.size));
        }
        const auto ended = [&](std::size_t block, const BlockOutcome& outcome) {
            if (outcome.succeeded()) {
                if (isEqual(block)) equal.insert(files[block].path);
            } else if (scopeOf(block, outcome) != FailureScope::file) {
                broken = outcome;
                brokenAt = block;
                return false;
            }
            ++compared;
            return true;
        };
        converse(transport.profile, transport.password, *transport.control, plan, {.ended = ended});
        if (broken && !goesOn()) throw SyncError(broken->message);
        return compared;
    }

private:
    [[nodiscard]] static std::string nameOf(std::size_t number) { return "fetched" + std::to_string(number); }

    [[nodiscard]] TransferBlock blockFor(std::size_t number) const {
        TransferBlock block{.path = files[number].path, .options = {{"output", ChildProcess::filePathOf(number)}}};
        if (login == ServerTraits::Login::manyWithTls12 && transport.profile.transport != TransferProtocol::ftp) {
            block.options.push_back({"tls-max", "1.2"});
        }
        return block;
    }

    [[nodiscard]] FailureScope scopeOf(std::size_t block, const BlockOutcome& outcome) const {
        const bool further = block > 0 && transport.profile.transport != TransferProtocol::ftp;
        const auto data = !further                                      ? DataConnection::first
                          : login == ServerTraits::Login::manyTransfers ? DataConnection::furtherTls13
                                                                        : DataConnection::further;
        return zembrastel::scopeOf(outcome.code, outcome.message, data);
    }

    // False if the failure ends the comparison. A server may end a long session, or refuse further data connections.
    [[nodiscard]] bool goesOn() {
        if (scopeOf(brokenAt, *broken) == FailureScope::furtherData) return transport.traits->wasRefused(login);
        return compared > 0;
    }

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
    std::span<const FileToCompare> files;
    const ServerTraits::Login login;
    const PrivateFolder folder;
    std::vector<Descriptor> fetched;
    std::size_t compared = 0;
    std::optional<BlockOutcome> broken;
    std::size_t brokenAt = 0;
};

} // namespace

std::set<std::string, std::less<>> FTPTransport::filesWithEqualContents(const std::vector<FileToCompare>& files) const {
    std::set<std::string, std::less<>> equal;
    std::span<const FileToCompare> left(files);
    while (!left.empty()) {
        control->check();
        left = left.subspan(Batch(*this, left.first(std::min(left.size(), maxAtOnce))).run(equal));
    }
    return equal;
}

} // namespace zembrastel
