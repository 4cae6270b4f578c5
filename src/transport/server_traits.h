// What was learnt about one server while the program runs.
//
// Shared by the transports of a profile, each on its thread: the one object of theirs beside TransferControl that has a
// lock. A profile whose server or login changes gets a new one.
#pragma once

#include "model/fingerprint.h"
#include "model/profile.h"
#include "model/temporary_journal.h"
#include "transport/curl/transfer_error.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zembrastel {

class ServerTraits {
public:
    // How much one login is good for. Some servers want each data connection to resume the TLS session of the control
    // connection, in which this curl fails with TLS 1.3 from the second data connection on.
    enum class Login { manyTransfers, manyWithTls12, oneTransfer };

    ServerTraits() = default;

    // With a journal, in which the names of temporary files outlive a program that is killed: those in it are left over
    // from such a one.
    explicit ServerTraits(TemporaryJournal used);

    [[nodiscard]] Login login() const;

    // A login that was used so was refused a further data connection: the next ones are used with more care. False when
    // there is no more careful way.
    bool wasRefused(Login used);

    [[nodiscard]] bool hasMLSD() const;
    void lacksMLSD();

    // MLSD failed with this reply: the server may not know the command.
    void learnFromFailedMLSD(FtpReply reply);

    // The facts of a single file in one reply (RFC 3659, 7), with date and size.
    enum class Mlst { untried, works, missing };
    [[nodiscard]] Mlst mlst() const;
    void learnMlst(Mlst learnt);

    // A file can be continued where it ends (APPE).
    [[nodiscard]] bool appends() const;
    void refusedToAppend();

    // SITE CHMOD sets the mode of a file.
    [[nodiscard]] bool changesModes() const;
    void refusedToChangeModes();

    // The size that the server reports for a single file (SIZE) is of no use.
    [[nodiscard]] bool confirmsSizes() const;
    void confirmsNoSizes();

    // True for the first call.
    [[nodiscard]] bool firstUnconfirmed();

    // A temporary file of this program: its folder is relative to the profile's remote folder.
    using Leftover = TemporaryJournal::File;

    // These are about to be sent. They are in the journal when the call returns.
    void announce(const Profile& profile, const std::vector<Leftover>& files);

    // The file is under its own name, or was never made.
    void isGone(const Profile& profile, const Leftover& file);

    // It may have stayed on the server.
    void leave(const Profile& profile, Leftover left);

    // Those in the remote folder that the profile has now.
    [[nodiscard]] std::vector<Leftover> leftovers(const Profile& profile) const;

    // It was removed, or there was none of that name. The latter counts only when it came more than once: a server may
    // still be making the file of a connection that was given up.
    void triedToRemove(const Leftover& tried, bool removed);

    // The beginning of a large file that the server has under a temporary name, to be continued.
    struct Beginning {
        Fingerprint version{};
        Leftover file{};
        std::uint64_t confirmed = 0; // bytes of it that are the file's
        std::uint64_t most = 0;      // that it can have
    };
    void keep(const Profile& profile, const std::string& path, Beginning beginning);

    // Takes back what was kept for this version of the file. That of another version becomes a leftover.
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
    Mlst listsSingly = Mlst::untried;
    bool appendsFiles = true;
    bool modes = true;
    std::vector<TemporaryJournal::Entry> sent; // under their temporary names, as far as is known
    std::vector<Left> left;
    std::vector<Kept> kept;
    std::optional<TemporaryJournal> journal;
};

} // namespace zembrastel
