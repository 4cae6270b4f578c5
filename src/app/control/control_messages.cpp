#include "app/control/control_messages.h"

#include "model/error.h"

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <optional>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <system_error>
#include <type_traits>
#include <utility>

namespace zembrastel {
namespace {

using Time = std::chrono::system_clock::time_point;
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;
using Json = rapidjson::Value;

// No nesting overflows the stack. Numbers stay texts until they are read: RapidJSON's own conversion reads beyond its
// tables on long fractions, and dates are to arrive bit for bit.
constexpr unsigned parseFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;

[[noreturn]] void notUnderstood() { throw SyncError("The message was not understood."); }

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

// How a status shows itself to other programs, which know titles and flags instead of phases.
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

// One of them if several phases are shown alike.
void enterShownPhase(ProfileStatus& status, const ShownPhase& shown) {
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
constexpr std::array words<Failure::Kind>{"other", "transfer", "filesMissing"};
template <>
constexpr std::array words<answer::Failed::Reason>{"notUnderstood", "noWindow",      "noProfile", "refused",
                                                   "paused",        "needsDownload", "server",    "otherReview",
                                                   "choiceWaits",   "notSaved"};
template <>
constexpr std::array words<TransferProgress::Work>{"uploading", "downloading", "comparing", "comparingContents"};
constexpr std::array answerWords{"status", "activity", "changed", "review", "outcome", "failed", "done"};
static_assert(answerWords.size() == std::variant_size_v<ControlAnswer>);

template <class T>
concept Enumeration = std::is_enum_v<T>;
template <class T>
concept Class = std::is_class_v<T>;

void write(Writer& writer, const std::string& value) {
    writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}
void write(Writer& writer, bool value) { writer.Bool(value); }
void write(Writer& writer, std::int64_t value) { writer.Int64(value); }
void write(Writer& writer, std::uint64_t value) { writer.Uint64(value); }
void write(Writer& writer, std::chrono::seconds value) { writer.Int64(value.count()); }
void write(Writer& writer, double value) { writer.Double(value); }
void write(Writer& writer, const Uuid& value) { write(writer, value.text()); }
void write(Writer& writer, const Time& value) { writer.Int64(value.time_since_epoch().count()); }
void write(Writer& writer, const RemoteDate& value) { writer.Double(value.time_since_epoch().count()); }
void write(Writer& writer, Enumeration auto value) {
    writer.String(words<decltype(value)>.at(static_cast<std::size_t>(value)));
}

template <Class Record>
void writeFields(Writer& writer, const Record& record);

template <Class Record>
void write(Writer& writer, const Record& record) {
    writer.StartObject();
    writeFields(writer, record);
    writer.EndObject();
}

template <class T>
void write(Writer& writer, const std::optional<T>& value) {
    if (value) {
        write(writer, *value);
    } else {
        writer.Null();
    }
}

template <class T>
void write(Writer& writer, const std::vector<T>& values) {
    writer.StartArray();
    for (const auto& value : values) write(writer, value);
    writer.EndArray();
}

template <Class Record>
void writeFields(Writer& writer, const Record& record) {
    eachField(record, [&writer](const char* key, const auto& value) {
        writer.Key(key);
        write(writer, value);
    });
}

const Json* member(const Json& object, const char* key) {
    const auto found = object.FindMember(key);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

void require(bool fits) {
    if (!fits) notUnderstood();
}

void read(const Json& json, std::string& value) {
    require(json.IsString());
    value.assign(json.GetString(), json.GetStringLength());
}
void read(const Json& json, bool& value) {
    require(json.IsBool());
    value = json.GetBool();
}
template <class Number>
void readNumber(const Json& json, Number& value) {
    require(json.IsString());
    const auto* const end = json.GetString() + json.GetStringLength();
    const auto parsed = std::from_chars(json.GetString(), end, value);
    require(parsed.ec == std::errc() && parsed.ptr == end);
}
void read(const Json& json, std::int64_t& value) { readNumber(json, value); }
void read(const Json& json, std::uint64_t& value) { readNumber(json, value); }
void read(const Json& json, std::chrono::seconds& value) {
    std::int64_t count = 0;
    read(json, count);
    value = std::chrono::seconds(count);
}
void read(const Json& json, double& value) {
    readNumber(json, value);
    require(std::isfinite(value));
}
void read(const Json& json, Uuid& value) {
    require(json.IsString());
    const auto parsed = Uuid::parse({json.GetString(), json.GetStringLength()});
    require(parsed.has_value());
    value = *parsed;
}
void read(const Json& json, Time& value) {
    std::int64_t ticks = 0;
    read(json, ticks);
    value = Time(Time::duration(ticks));
}
void read(const Json& json, RemoteDate& value) {
    double seconds = 0;
    read(json, seconds);
    value = RemoteDate(RemoteDate::duration(seconds));
}
template <std::size_t count>
std::size_t readWord(const Json& json, const std::array<const char*, count>& known) {
    require(json.IsString());
    for (std::size_t index = 0; index < count; ++index) {
        if (std::string_view(json.GetString(), json.GetStringLength()) == known[index]) return index;
    }
    notUnderstood();
}
void read(const Json& json, Enumeration auto& value) {
    using Kind = std::remove_reference_t<decltype(value)>;
    value = static_cast<Kind>(readWord(json, words<Kind>));
}

template <Class Record>
void read(const Json& json, Record& record);

template <class T>
void read(const Json& json, std::optional<T>& value) {
    if (json.IsNull()) {
        value.reset();
    } else {
        read(json, value.emplace());
    }
}

template <class T>
void read(const Json& json, std::vector<T>& values) {
    require(json.IsArray());
    values.clear();
    for (const auto& element : json.GetArray()) read(element, values.emplace_back());
}

template <Class Record>
void read(const Json& json, Record& record) {
    require(json.IsObject());
    eachField(record, [&json](const char* key, auto& value) {
        if (const Json* found = member(json, key)) read(*found, value);
    });
}

// An object of this version.
void parse(rapidjson::Document& document, std::string_view line) {
    document.Parse<parseFlags>(line.data(), line.size());
    require(!document.HasParseError() && document.IsObject());
    const Json* found = member(document, "version");
    require(found != nullptr);
    std::int64_t version = 0;
    read(*found, version);
    if (version == controlVersion) return;
    throw SyncError("Two versions of the program that do not know each other are in use: restart the one that runs.");
}

template <std::size_t... index>
ControlAnswer emptyAnswer(std::size_t chosen, std::index_sequence<index...>) {
    ControlAnswer made = answer::Done{};
    ((index == chosen ? void(made.emplace<index>()) : void()), ...);
    return made;
}

} // namespace

answer::Choice choiceOf(const FirstComparison& found, bool comparing) {
    return {
        .files = static_cast<std::int64_t>(found.localFiles),
        .alike = static_cast<std::int64_t>(found.alikeFiles()),
        .otherSizes = static_cast<std::int64_t>(found.otherSizes),
        .same = static_cast<std::int64_t>(found.same.size()),
        .different = static_cast<std::int64_t>(found.different.files.size()),
        .bytesToCompare = static_cast<std::int64_t>(found.bytesToCompare()),
        .comparing = comparing};
}

std::string encode(const ControlRequest& request) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key("version");
    write(writer, controlVersion);
    writeFields(writer, request);
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

std::string encode(const ControlAnswer& answer) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    writer.Key("version");
    write(writer, controlVersion);
    writer.Key("answer");
    writer.String(answerWords.at(answer.index()));
    std::visit([&writer](const auto& sent) { writeFields(writer, sent); }, answer);
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

ControlRequest decodeControlRequest(std::string_view line) {
    rapidjson::Document document;
    parse(document, line);
    require(document.HasMember("request"));
    ControlRequest request;
    read(document, request);
    return request;
}

ControlAnswer decodeControlAnswer(std::string_view line) {
    rapidjson::Document document;
    parse(document, line);
    require(document.HasMember("answer"));
    ControlAnswer decoded = emptyAnswer(
        readWord(document["answer"], answerWords), std::make_index_sequence<std::variant_size_v<ControlAnswer>>());
    std::visit([&document](auto& sent) { read(document, sent); }, decoded);
    return decoded;
}

} // namespace zembrastel
