#include "model/error.h"
#include "model/password_store.h"
#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/text.h"
#include "transport/curl/conversation.h"
#include "transport/ftp_transport.h"

#include <optional>

namespace zembrastel {
namespace {

// What follows `beginning` in the line, without the line's end; nothing for another line.
std::optional<std::string_view> after(std::string_view beginning, std::string_view line) {
    if (!line.starts_with(beginning)) return std::nullopt;
    return trimmed(line.substr(beginning.size()));
}

// Sorts out what a talkative curl wrote: marks at the beginning of a line say whose words it has.
void readWords(std::string_view text, Transcript& transcript) {
    // The last lines are curl's own message.
    const auto message = text.starts_with("curl: (") ? 0 : text.find("\ncurl: (");
    if (message != std::string_view::npos) {
        transcript.failure = trimmed(text.substr(message));
        text = text.substr(0, message);
    }
    for (const auto line : split(text, '\n')) {
        if (const auto reply = after("< ", line)) transcript.replies.emplace_back(printable(*reply));
        if (after("* Connected to ", line)) transcript.connected = true;
    }
}

// A conversation of one block.
BlockOutcome holdOne(
    const FTPTransport& transport, std::string_view path, bool directory, std::vector<TransferOption> options,
    int localFile, const std::function<void(const ChildProcess&)>& look = {},
    std::optional<std::uint64_t> maxWritten = std::nullopt) {
    TransferPlan plan{
        .blocks = {{.path = std::string(path), .directory = directory, .options = std::move(options)}},
        .maxWritten = maxWritten};
    if (localFile >= 0) plan.files.push_back(localFile);
    BlockOutcome only;
    const ConversationEvents events{
        .ended =
            [&only](std::size_t, BlockOutcome outcome) {
                only = std::move(outcome);
                return true;
            },
        .look = look};
    converse(transport.profile, transport.password, *transport.control, plan, events);
    return only;
}

} // namespace

std::string FTPTransport::run(
    std::string_view path, bool directory, const std::vector<TransferOption>& options, int localFile,
    const Position& position, std::optional<std::uint64_t> maxWritten) const {
    std::function<void(const ChildProcess&)> look;
    if (observer != nullptr && position) {
        look = [this, &position](const ChildProcess& curl) {
            if (const auto bytes = position(curl)) observer->fileMoved(*bytes);
        };
    }
    auto done = holdOne(*this, path, directory, options, localFile, look, maxWritten);
    if (done.succeeded()) return std::move(done.output);
    if (done.code == CurlCode::writeFailed && localFile >= 0) {
        if (const auto why = whyNotWritten(localFile); !why.empty()) done.message += ": " + why;
    }
    throw TransferError(done.code, done.message, done.reply);
}

Transcript FTPTransport::transcribe(
    std::string_view path, bool directory, std::vector<TransferOption> options, int localFile) const {
    options.push_back({"verbose"});
    const auto done = holdOne(*this, path, directory, std::move(options), localFile);
    Transcript transcript{.succeeded = done.succeeded(), .code = done.code, .output = done.output};
    readWords(withoutPassword(done.words, password), transcript);
    if (!done.succeeded() && (transcript.failure.empty() || !isValidUtf8(transcript.failure))) {
        transcript.failure = done.words.empty() ? done.message : "Transfer failed.";
    }
    return transcript;
}

} // namespace zembrastel
