// The members of the messages between programs, for reading and for writing: included by control_messages.cpp alone.
#pragma once

#include "app/control/control_messages.h"
#include "model/error.h"

#include <array>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace zembrastel::control {

[[noreturn]] inline void notUnderstood() { throw SyncError("The message was not understood."); }

// The members of each record, for both directions.
template <class T, class Record>
concept Maybe = std::same_as<std::remove_const_t<T>, Record>;

void eachField(Maybe<ControlRequest> auto& request, const auto& visit) {
    visit("request", request.kind);
    visit("profiles", request.profiles);
    visit("revision", request.revision);
    visit("downloadAll", request.downloadAll);
    visit("download", request.download);
    visit("adoption", request.adoption);
    visit("comparesContents", request.comparesContents);
}

void eachField(Maybe<TransferProgress::File> auto& file, const auto& visit) {
    visit("path", file.path);
    visit("bytes", file.bytes);
    visit("size", file.size);
    visit("rate", file.rate);
    visit("left", file.left);
}

void eachField(Maybe<TransferProgress> auto& progress, const auto& visit) {
    visit("work", progress.work);
    visit("file", progress.file);
    visit("filesDone", progress.filesDone);
    visit("filesQueued", progress.filesQueued);
    visit("folders", progress.folders);
    visit("bytes", progress.bytes);
    visit("bytesQueued", progress.bytesQueued);
    visit("rate", progress.rate);
}

// The phase of a status as other programs get it: as a title and flags.
struct ShownPhase {
    explicit ShownPhase(const ProfileStatus& status)
        : title(status.title()), active(status.active()), failed(status.failed()), filesMissing(status.filesMissing()) {
    }

    std::string title;
    bool active;
    bool failed;
    bool filesMissing;

    friend bool operator==(const ShownPhase&, const ShownPhase&) = default;
};

// Enters the first phase with this title and these flags. Throws SyncError if there is none.
inline void enterShownPhase(ProfileStatus& status, const ShownPhase& shown) {
    for (const bool unsaved : {false, true}) {
        for (const auto& facts : phaseTable) {
            status.phase = facts.phase;
            status.unsaved = unsaved;
            if (ShownPhase(status) == shown) return;
        }
    }
    notUnderstood();
}

// The numbers of curl and of the server.
void eachField(Maybe<Failure> auto& failure, const auto& visit) {
    constexpr bool reads = !std::is_const_v<std::remove_reference_t<decltype(failure)>>;
    auto code = static_cast<std::int64_t>(failure.code);
    auto reply = static_cast<std::int64_t>(failure.reply);
    visit("kind", failure.kind);
    visit("message", failure.message);
    visit("code", code);
    visit("reply", reply);
    visit("path", failure.path);
    if constexpr (reads) {
        failure.code = static_cast<CurlCode>(code);
        failure.reply = static_cast<FtpReply>(reply);
    }
}

void eachField(Maybe<ProfileStatus> auto& status, const auto& visit) {
    ShownPhase shown(status);
    visit("title", shown.title);
    visit("detail", status.detail);
    visit("active", shown.active);
    visit("failed", shown.failed);
    visit("filesMissing", shown.filesMissing);
    if constexpr (!std::is_const_v<std::remove_reference_t<decltype(status)>>) enterShownPhase(status, shown);
    visit("uploaded", status.uploaded);
    visit("pending", status.pending);
    visit("lastUpload", status.lastUpload);
    visit("progress", status.progress);
    visit("failure", status.failure);
    visit("outlook", status.outlook);
    visit("waiting", status.waiting);
    visit("contentsUnchanged", status.contentsUnchanged);
}

void eachField(Maybe<answer::Choice> auto& choice, const auto& visit) {
    visit("files", choice.files);
    visit("alike", choice.alike);
    visit("otherSizes", choice.otherSizes);
    visit("same", choice.same);
    visit("different", choice.different);
    visit("bytesToCompare", choice.bytesToCompare);
    visit("comparing", choice.comparing);
}

void eachField(Maybe<answer::Status> auto& sent, const auto& visit) {
    visit("profile", sent.profile);
    visit("name", sent.name);
    visit("enabled", sent.enabled);
    visit("running", sent.running);
    visit("newerOnServer", sent.newerOnServer);
    visit("missingOnServer", sent.missingOnServer);
    visit("choice", sent.choice);
    visit("status", sent.status);
}

void eachField(Maybe<Activity> auto& line, const auto& visit) {
    visit("id", line.id);
    visit("date", line.date);
    visit("text", line.text);
    // Other programs learn only whether the line reports a failure, or an upload of which file.
    bool error = line.error();
    visit("error", error);
    visit("failure", line.failure);
    bool uploaded = line.kind == Activity::Kind::uploaded;
    visit("uploaded", uploaded);
    if constexpr (!std::is_const_v<std::remove_reference_t<decltype(line)>>) {
        line.kind = error ? Activity::Kind::failure : uploaded ? Activity::Kind::uploaded : Activity::Kind::note;
    }
    visit("path", line.path);
}

void eachField(Maybe<answer::Activity> auto& sent, const auto& visit) {
    visit("profile", sent.profile);
    visit("line", sent.line);
}

void eachField(Maybe<answer::Changed> auto& sent, const auto& visit) {
    visit("profile", sent.profile);
    visit("retried", sent.retried);
}

void eachField(Maybe<RemoteChange> auto& change, const auto& visit) {
    visit("path", change.path);
    visit("remoteDate", change.remoteDate);
    visit("localDate", change.local.modified);
    visit("bothChanged", change.bothChanged);
}

void eachField(Maybe<answer::Review> auto& sent, const auto& visit) {
    visit("profile", sent.profile);
    visit("revision", sent.revision);
    visit("files", sent.changes);
}

void eachField(Maybe<answer::Outcome> auto& sent, const auto& visit) {
    visit("path", sent.path);
    visit("kept", sent.kept);
    visit("downloaded", sent.downloaded);
}

void eachField(Maybe<answer::Failed> auto& sent, const auto& visit) {
    visit("reason", sent.reason);
    visit("text", sent.text);
    visit("failure", sent.failure);
}

void eachField(Maybe<answer::Done> auto& sent, const auto& visit) { visit("reviewWaits", sent.reviewWaits); }

// The words for the cases of an enumeration, in their order.
template <class T>
inline constexpr std::array<const char*, 0> words{};
template <>
constexpr std::array words<ControlRequest::Kind>{"show",    "status",       "follow", "pause",       "resume",
                                                 "review",  "decide",       "retry",  "forgetFiles", "sendMissing",
                                                 "sendAll", "leaveMissing", "push",   "adopt"};
template <>
constexpr std::array words<Adoption>{"alike", "nothing"};
template <>
constexpr std::array words<answer::Failed::Reason>{"notUnderstood", "noWindow",      "noProfile", "refused",
                                                   "paused",        "needsDownload", "server",    "otherReview",
                                                   "choiceWaits",   "notSaved"};
template <>
constexpr std::array words<Failure::Kind>{"other", "transfer", "filesMissing", "noNetwork"};
template <>
constexpr std::array words<TransferProgress::Work>{"uploading", "downloading", "comparing", "comparingContents"};
constexpr std::array answerWords{"status", "activity", "changed", "review", "outcome", "failed", "done"};
static_assert(answerWords.size() == std::variant_size_v<ControlAnswer>);

} // namespace zembrastel::control
