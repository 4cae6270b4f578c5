// What a server has in many folders, and what it says of many files, asked with one login.
//
// Blocks its thread. Each folder and file has an outcome of its own; a failure of the server or of the connection is
// thrown as SyncError, a stop as Cancelled.
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

// Why one folder could not be listed, or one file not be asked about, for the user.
struct QueryFailure {
    std::string message;
    CurlCode code = CurlCode::ok; // where the answer itself was of no use
};

using ListedEntries = std::variant<std::vector<RemoteEntry>, QueryFailure>;

// The result itself; its failure is thrown.
template <class Result>
[[nodiscard]] Result resultOf(std::variant<Result, QueryFailure> outcome) {
    if (const auto* failure = std::get_if<QueryFailure>(&outcome)) throw TransferError(failure->code, failure->message);
    return std::get<Result>(std::move(outcome));
}

// Lists folders, and remembers from one call to the next whether the server has MLSD.
//
// A data connection that ends early is not always an error, with TLS neither: the client sees an end, and the server
// has sent everything. So each folder is listed by MLSD and by LIST. Where the two differ, both are empty or there is
// one alone, STAT asks for the names over the control connection, which cannot lose its end unseen. A listing that was
// cut is asked for once more and then not used: one that ends in the middle of a line, and one that lacks what STAT
// shows. Where the server does not list by STAT, the folder is listed twice instead, and its second answers count.
// Names that begin with a dot prove nothing, since many servers leave them out of LIST.
class FolderLister {
public:
    // The transport is borrowed.
    explicit FolderLister(const FTPTransport& used) : transport(used) {}

    // Called with the index of a path and the entries of that folder: see FTPTransport::list(). May ask the server.
    using Take = std::function<void(std::size_t path, ListedEntries listed)>;

    // Calls `take` once for each path, in their order, some time after the server has listed the folder.
    void list(const std::vector<std::string>& paths, const Take& take);

private:
    [[nodiscard]] std::vector<ListedEntries> listTogether(std::span<const std::string> paths);

    const FTPTransport& transport;
    bool hasMLSD = true;
};

// What curl's "head" prints of a file.
using AnswerAboutFile = std::variant<std::string, QueryFailure>;

// In the order of the paths.
[[nodiscard]] std::vector<AnswerAboutFile> askAboutFiles(
    const FTPTransport& transport, const std::vector<std::string>& paths);

// The block that asks about one file, and what its output says. Throws SyncError where the date is missing or
// unreadable.
[[nodiscard]] TransferBlock factsBlock(const std::string& path);
[[nodiscard]] FTPTransport::FileFacts readFacts(const std::string& output, std::string_view path);

} // namespace zembrastel
