#include "app/control/control_messages.h"

#include "app/control/control_fields.h"
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

using namespace control;
using Time = std::chrono::system_clock::time_point;
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;
using Json = rapidjson::Value;

// No nesting overflows the stack. Numbers stay texts until they are read: RapidJSON's own conversion reads beyond its
// tables on long fractions, and dates are to arrive bit for bit.
constexpr unsigned parseFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;

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
    throw SyncError("The running Zembrastel is another version; restart it.");
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
