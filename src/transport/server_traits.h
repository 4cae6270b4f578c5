// Properties of one server that were learnt while the program runs.
//
// Shared by the transports of a profile, each on its own thread; it has a lock. A profile whose server or login changes
// gets a new object.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/records/temporary_journal.h"
#include "transport/curl/transfer_error.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class ServerTraits {
public:
    // The transfers that one login allows. Some servers require each data connection to resume the TLS session of the
    // control connection; there this curl fails with TLS 1.3 from the second data connection on.
    enum class Login { manyTransfers, manyWithTls12, oneTransfer };

    ServerTraits() = default;

    // With a journal, which keeps the names of temporary files if the program is killed. The names in it are leftovers
    // of such a run.
    explicit ServerTraits(TemporaryJournal used);

    [[nodiscard]] Login login() const;

    // The server refused a further data connection to a login used in this way: later logins are used for less. False
    // if there is no such way.
    bool wasRefused(Login used);

    [[nodiscard]] bool hasMLSD() const;
    void lacksMLSD();

    // Learns from the reply to a failed MLSD whether the server knows the command.
    void learnFromFailedMLSD(FtpReply reply);

    // MLST: date and size of a single file in one reply (RFC 3659, 7).
    enum class Support { untried, works, missing };
    [[nodiscard]] Support mlst() const;
    void learnMlst(Support learnt);

    // STAT with the options of a listing: names and sizes of a folder, hidden files included, in one reply. For servers
    // without MLSD.
    [[nodiscard]] Support statusListing() const;
    void learnStatusListing(Support learnt);

    // How long the server has lately taken to reply to one command, the way there and back included. Nullopt before it
    // was measured.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> replyTime() const;
    void learnReplyTime(std::chrono::nanoseconds measured, std::size_t commands); // the mean of so many commands
    void repliesWithin(std::chrono::nanoseconds bound); // counts until the time itself was measured

    // How long the last listing of a folder took. Nullopt before there was one.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> listingTime() const;
    void learnListingTime(std::chrono::nanoseconds measured);

    // True if bytes can be appended to a file (APPE).
    [[nodiscard]] bool appends() const;
    void refusedToAppend();

    // True if SITE CHMOD sets the mode of a file.
    [[nodiscard]] bool changesModes() const;
    void refusedToChangeModes();

    // True if the size that the server reports for a single file (SIZE) is usable.
    [[nodiscard]] bool confirmsSizes() const;
    void confirmsNoSizes();

    // True for the first call.
    [[nodiscard]] bool firstUnconfirmed();

    // A temporary file of this program: its folder is relative to the profile's remote folder.
    using Leftover = TemporaryJournal::File;

    // These files are about to be sent. They are in the journal when the call returns.
    void announce(const Profile& profile, const std::vector<Leftover>& files);

    // The temporary file was renamed, or was never made.
    void isGone(const Profile& profile, const Leftover& file);

    // The temporary file may still be on the server.
    void leave(const Profile& profile, Leftover left);

    // The leftovers in the profile's present remote folder.
    [[nodiscard]] std::vector<Leftover> leftovers(const Profile& profile) const;

    // The file was removed, or there was no such file. The latter counts only after several attempts: a server may
    // still create the file of an abandoned connection.
    void triedToRemove(const Leftover& tried, bool removed);

    // The beginning of a large file that the server has under a temporary name, so that it can be continued.
    struct Beginning {
        Fingerprint version{};
        Leftover file{};
        std::uint64_t confirmed = 0; // bytes that are certainly those of the file
        std::uint64_t most = 0;      // size of the copy at most
    };
    void keep(const Profile& profile, const std::string& path, Beginning beginning);

    // Returns and forgets the beginning kept for this version of the file. The beginning of another version becomes a
    // leftover.
    [[nodiscard]] std::optional<Beginning> continues(
        const Profile& profile, const std::string& path, const Fingerprint& version);

private:
    struct Left {
        TemporaryJournal::Entry entry;
        int tries = 0;
    };
    struct Kept {
        std::string place; // of the remote folder
        std::string path;
        Beginning beginning;
    };

    void addLeft(TemporaryJournal::Entry entry);
    void writeJournal();

    mutable std::mutex lock;
    Login use = Login::manyTransfers;
    bool mlsd = true;
    bool sizes = true;
    bool unconfirmed = false;
    Support listsSingly = Support::untried;
    Support listsAsStatus = Support::untried;
    std::optional<std::chrono::nanoseconds> commandTook;
    std::optional<std::chrono::nanoseconds> commandTookLess;
    std::optional<std::chrono::nanoseconds> listingTook;
    bool appendsFiles = true;
    bool modes = true;
    std::vector<TemporaryJournal::Entry> sent; // announced, neither gone nor left
    std::vector<Left> left;
    std::vector<Kept> kept;
    std::optional<TemporaryJournal> journal;
};

} // namespace zembrastel
