// What was learnt about one server while the program runs.
//
// Shared by the transports of a profile, each on its thread: the one object of theirs beside TransferControl that has a
// lock. A profile whose server or login changes gets a new one.
#pragma once

#include "model/profile.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace zembrastel {

class ServerTraits {
public:
    // How much one login is good for. Some servers want each data connection to resume the TLS session of the control
    // connection, in which this curl fails with TLS 1.3 from the second data connection on.
    enum class Login { manyTransfers, manyWithTls12, oneTransfer };

    [[nodiscard]] Login login() const;

    // A login that was used so was refused a further data connection: the next ones are used with more care. False when
    // there is no more careful way.
    bool wasRefused(Login used);

    [[nodiscard]] bool hasMLSD() const;
    void lacksMLSD();

    // The size that the server reports for a single file (SIZE) is of no use.
    [[nodiscard]] bool confirmsSizes() const;
    void confirmsNoSizes();

    // True for the first call.
    [[nodiscard]] bool firstUnconfirmed();

    // A temporary file of this program that may have stayed on the server.
    struct Leftover {
        std::string folder; // relative to the profile's remote folder
        std::string name;

        friend bool operator==(const Leftover&, const Leftover&) = default;
    };
    void leave(const Profile& profile, Leftover left);

    // Those in the remote folder that the profile has now.
    [[nodiscard]] std::vector<Leftover> leftovers(const Profile& profile) const;

    // It was removed, or there was none of that name. The latter counts only when it came more than once: a server may
    // still be making the file of a connection that was given up.
    void triedToRemove(const Leftover& tried, bool removed);

private:
    struct Left {
        std::string place; // of the remote folder
        Leftover file;
        int tries = 0;
    };

    mutable std::mutex lock;
    Login use = Login::manyTransfers;
    bool mlsd = true;
    bool sizes = true;
    bool unconfirmed = false;
    std::vector<Left> left;
};

} // namespace zembrastel
