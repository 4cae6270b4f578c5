// A failure on its way from where it happened to where it is shown: its kind for decisions, its words for the user.
//
// Values; any thread. No decision reads the message.
#pragma once

#include "transport/curl/transfer_error.h"

#include <exception>
#include <string>

namespace zembrastel {

struct Failure {
    enum class Kind {
        other,        // the message says it all
        transfer,     // of curl: see `code` and `reply`; the message has curl's words
        filesMissing, // none of the synchronised files is in the local folder
        noNetwork     // like `transfer`, while this machine had no network
    };

    std::string message{};
    Kind kind = Kind::other;
    CurlCode code = CurlCode::ok;
    FtpReply reply = FtpReply::none; // the server's last one
    std::string path{};              // of the file that it is about; empty if it is about none

    friend bool operator==(const Failure&, const Failure&) = default;
};

// True if this machine having no network can be the reason.
[[nodiscard]] inline bool mayBeOfNetwork(const Failure& failure) {
    const bool isOfConnection = failure.code == CurlCode::hostNotFound || failure.code == CurlCode::notConnected
                                || failure.code == CurlCode::timedOut;
    return failure.kind == Failure::Kind::transfer && isOfConnection;
}

// The failure that this exception reports.
[[nodiscard]] inline Failure failureOf(const std::exception& error) {
    Failure failure{.message = describe(error)};
    if (const auto* transfer = dynamic_cast<const TransferError*>(&error);
        transfer != nullptr && transfer->code != CurlCode::ok) {
        failure.kind = Failure::Kind::transfer;
        failure.code = transfer->code;
        failure.reply = transfer->reply;
    }
    return failure;
}

} // namespace zembrastel
