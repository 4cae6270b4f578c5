// How curl's transfers fail, as the program's decisions need it.
//
// Values; any thread. The messages are for the user alone: no decision reads them.
#pragma once

#include "model/error.h"

#include <string>

namespace zembrastel {

// The exit codes of curl that decide what happens next. Others occur, too.
enum class CurlCode : int {
    endedBySignal = -1,
    ok = 0,
    badUrl = 3,
    proxyNotFound = 5,
    hostNotFound = 6,
    notConnected = 7,
    noSuchFolder = 9, // or it may not be entered
    partialFile = 18, // or, of an upload, a reply that is not the one for a complete file
    transferRefused = 19,
    commandRefused = 21,
    writeFailed = 23,
    uploadRefused = 25,
    readFailed = 26,
    timedOut = 28,
    restartRefused = 31,
    tlsFailed = 35,
    nothingToContinue = 36,
    sendFailed = 55,
    receiveFailed = 56,
    untrustedCertificate = 60,
    tlsRefused = 64,
    loginRefused = 67,
    noSpace = 70,
    noSuchFile = 78,
    wrongKey = 90
};

// True if the server's certificate, or its key, is the reason of the failure.
[[nodiscard]] constexpr bool isOfCertificate(CurlCode code) {
    return code == CurlCode::untrustedCertificate || code == CurlCode::wrongKey;
}

// The replies of a server (RFC 959) that decide what happens next.
enum class FtpReply : int {
    none = 0,
    hangsUp = 421, // often because there are too many connections
    noDataConnection = 425,
    spaceUsedUp = 452,
    syntaxError = 500,
    notImplemented = 502,
    sessionNotReused = 522, // the data connection did not resume the TLS session
    notAllowed = 550,       // or there is no such file or folder
    quotaExceeded = 552,
    nameRefused = 553
};

[[nodiscard]] constexpr bool isUnknownCommand(FtpReply reply) {
    return reply == FtpReply::syntaxError || reply == FtpReply::notImplemented;
}

// A failure of curl, with its message for the user.
class TransferError : public SyncError {
public:
    TransferError(CurlCode failure, const std::string& message, FtpReply lastReply = FtpReply::none)
        : SyncError(message), code(failure), reply(lastReply) {}

    const CurlCode code;
    const FtpReply reply; // the server's last one
};

} // namespace zembrastel
