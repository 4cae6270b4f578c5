// Lists many folders and asks about many files with one login.
//
// Blocks its thread. Each folder and file has its own outcome. A failure of the server or of the connection is thrown
// as SyncError, a stop as Cancelled.
#pragma once

#include "model/error.h"
#include "transport/curl/conversation.h"
#include "transport/ftp_transport.h"
#include "transport/listing/remote_entry.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace zembrastel {

// Why the query of one folder or file failed, for the user.
struct QueryFailure {
    std::string message;
    CurlCode code = CurlCode::ok; // where the answer itself was of no use
    FtpReply reply = FtpReply::none;
};

using ListedEntries = std::variant<std::vector<RemoteEntry>, QueryFailure>;

// The result; a failure is thrown as SyncError.
template <class Result>
[[nodiscard]] Result resultOf(std::variant<Result, QueryFailure> outcome) {
    if (const auto* failure = std::get_if<QueryFailure>(&outcome)) {
        throw TransferError(failure->code, failure->message, failure->reply);
    }
    return std::get<Result>(std::move(outcome));
}

// Lists folders, and remembers between calls whether the server has MLSD.
//
// A data connection that ends early is not always reported as an error, not even with TLS: the client sees a normal
// end, and the server has sent everything. So each folder is listed by MLSD and by LIST. If the two differ, if both are
// empty, or if there is only one, the names are requested by STAT over the control connection, whose loss is always
// noticed. A listing is incomplete if it ends in the middle of a line, or lacks a name that STAT shows. It is requested
// once more and then not used. If the server does not list by STAT, the folder is listed twice instead, and the second
// answers count. Names that begin with a dot prove nothing, since many servers hide them in LIST.
class FolderLister {
public:
    // The transport is borrowed.
    explicit FolderLister(const FTPTransport& used) : transport(used) {}

    // Called with the index of a path and the entries of that folder: see FTPTransport::list(). May query the server.
    using Take = std::function<void(std::size_t path, ListedEntries listed)>;

    // Calls `take` once for each path, in order, some time after the server has listed the folder.
    void list(const std::vector<std::string>& paths, const Take& take);

private:
    [[nodiscard]] std::vector<ListedEntries> listTogether(std::span<const std::string> paths);

    const FTPTransport& transport;
    bool hasMLSD = true;
};

// The output of curl's "head" option for a file.
using AnswerAboutFile = std::variant<std::string, QueryFailure>;

// In the order of the paths.
[[nodiscard]] std::vector<AnswerAboutFile> askAboutFiles(
    const FTPTransport& transport, const std::vector<std::string>& paths);

// The block that asks about one file, and the facts in its output. readFacts() throws SyncError if the date is missing
// or unreadable.
[[nodiscard]] TransferBlock factsBlock(const std::string& path);
[[nodiscard]] FTPTransport::FileFacts readFacts(const std::string& output, std::string_view path);

} // namespace zembrastel
