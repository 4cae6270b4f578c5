#include "model/saved_state.h"

#include "model/error.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <system_error>
#include <tuple>
#include <type_traits>
#include <variant>

namespace zembrastel {
namespace {

using Rules = decltype(DownloadSelection::rules);
using Profiles = decltype(SavedState::profiles);
using Baselines = decltype(SavedState::baselines);
using AllRemoteDates = decltype(SavedState::remoteDates)::value_type;

// The keys of each record, for both directions. A key is required when reading unless its field is optional.
template <class T, class Record>
concept Maybe = std::same_as<std::remove_const_t<T>, Record>;

void eachField(Maybe<SavedState> auto& state, const auto& visit) {
    visit("profiles", state.profiles);
    visit("baselines", state.baselines);
    visit("remoteDates", state.remoteDates);
}

void eachField(Maybe<ProfileExport> auto& exported, const auto& visit) {
    visit("zembrastelProfiles", exported.version);
    visit("profiles", exported.profiles);
}

void eachField(Maybe<Profile> auto& profile, const auto& visit) {
    visit("id", profile.id);
    visit("name", profile.name);
    visit("host", profile.host);
    visit("port", profile.port);
    visit("transport", profile.transport);
    visit("username", profile.username);
    visit("remoteFolder", profile.remoteFolder);
    visit("localFolder", profile.localFolder);
    visit("exclusions", profile.exclusions);
    visit("enabled", profile.enabled);
    visit("needsDownload", profile.needsDownload);
    visit("initialDownloadSelection", profile.initialDownloadSelection);
    visit("syncSelection", profile.syncSelection);
}

void eachField(Maybe<DownloadSelection> auto& selection, const auto& visit) { visit("rules", selection.rules); }

void eachField(Maybe<Fingerprint> auto& fingerprint, const auto& visit) {
    visit("size", fingerprint.size);
    visit("modified", fingerprint.modified);
    visit("inode", fingerprint.inode);
}

template <class T>
concept Record = requires(T& record) {
    eachField(record, [](std::string_view, auto&) {});
};

template <class T>
concept Map = requires {
    typename T::mapped_type;
};

template <class T>
concept Optional = std::same_as<std::remove_const_t<T>, std::optional<typename T::value_type>>;

std::string quoted(std::string_view text) { return '"' + printable(text) + '"'; }

// Renders records as compact JSON. Straight to the text: a state of a hundred thousand files is written whole each
// time, and RapidJSON's writer took two to three times as long.
class JsonText {
public:
    template <Record T>
    void write(const T& record) {
        begin('{');
        eachField(record, [this](std::string_view key, const auto& field) { this->writeField(key, field); });
        end('}');
    }

    std::string text;

private:
    void begin(char bracket) {
        text += bracket;
        first = true;
    }

    void end(char bracket) {
        text += bracket;
        first = false;
    }

    void separate() {
        if (!first) text += ',';
        first = false;
    }

    template <class T>
    void writeField(std::string_view key, const T& field) {
        if constexpr (Optional<const T>) {
            if (field) writeField(key, *field);
        } else {
            writeKey(key);
            write(field);
        }
    }

    template <Map T>
    void write(const T& map) {
        begin('{');
        for (const auto& [key, value] : map) {
            writeKey(key);
            write(value);
        }
        end('}');
    }

    void write(const Profiles& profiles) {
        begin('[');
        for (const auto& profile : profiles) {
            separate();
            write(profile);
        }
        end(']');
    }

    void writeKey(const Uuid& id) { writeKey(id.text()); }
    void writeKey(std::string_view key) {
        separate();
        write(key);
        text += ':';
    }

    void write(const std::string& value) { write(std::string_view(value)); }
    void write(std::string_view value) {
        if (isPlain(value)) {
            text += '"';
            text += value;
            text += '"';
        } else {
            writeEscaped(value);
        }
    }

    void writeEscaped(std::string_view value) {
        if (!isValidUtf8(value)) throw SyncError(quoted(value) + " is not valid UTF-8");
        text += '"';
        for (auto rest = value; !rest.empty();) {
            const auto plain = static_cast<std::size_t>(std::ranges::find_if(rest, needsEscape) - rest.begin());
            text += rest.substr(0, plain);
            rest.remove_prefix(plain);
            if (rest.empty()) break;
            escape(rest.front());
            rest.remove_prefix(1);
        }
        text += '"';
    }

    // Are all bytes ASCII and none to be escaped? Nearly every path is so: eight bytes are looked at in one go.
    static bool isPlain(std::string_view value) {
        constexpr std::uint64_t ones = 0x0101010101010101;
        constexpr std::uint64_t highBits = ones * 0x80;
        const auto holdsLess = [](std::uint64_t word, std::uint64_t byte) { return (word - ones * byte) & ~word; };
        for (; value.size() >= sizeof(std::uint64_t); value.remove_prefix(sizeof(std::uint64_t))) {
            std::uint64_t word = 0;
            std::memcpy(&word, value.data(), sizeof word);
            const auto special =
                word | holdsLess(word, ' ') | holdsLess(word ^ ones * '"', 1) | holdsLess(word ^ ones * '\\', 1);
            if ((special & highBits) != 0) return false;
        }
        return std::ranges::none_of(value, [](char c) { return static_cast<signed char>(c) < 0 || needsEscape(c); });
    }

    // RFC 8259, section 7.
    static bool needsEscape(char c) { return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\'; }

    void escape(char c) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        const auto code = static_cast<unsigned char>(c);
        if (code >= ' ') {
            text += {'\\', c};
        } else if (c == '\n') { // between the rules of exclusions
            text += "\\n";
        } else {
            text += {'\\', 'u', '0', '0', digits[code / 16], digits[code % 16]};
        }
    }

    template <class T>
    void writeNumber(T number) {
        std::array<char, 32> digits; // the shortest that is read back as the same number has at most 24
        const auto ended = std::to_chars(digits.data(), digits.data() + digits.size(), number);
        text.append(digits.data(), ended.ptr);
    }

    void write(double number) {
        if (!std::isfinite(number)) throw SyncError("a time of a file is not a finite number");
        writeNumber(number);
    }

    void write(bool value) { text += value ? "true" : "false"; }
    void write(std::int64_t number) { writeNumber(number); }
    void write(std::uint64_t number) { writeNumber(number); }
    void write(RemoteDate date) { write(date.time_since_epoch().count()); }
    void write(const Uuid& id) { write(id.text()); }
    void write(TransferProtocol protocol) { write(rawValue(protocol)); }
    void write(const Exclusions& exclusions) { write(exclusions.text()); }

    bool first = true; // of what is open
};

template <Record T>
std::string encodeRecord(const T& record, std::size_t expectedSize = 0) {
    JsonText json;
    json.text.reserve(expectedSize);
    json.write(record);
    return std::move(json.text);
}

struct Ignored {};
struct Nothing {}; // null

// As it stands in the file, so that no conversion on the way loses a digit.
struct Number {
    std::string_view text;
};

// A map of paths that is being read.
template <class Value>
struct Growing {
    PathMap<Value>* map = nullptr;
    typename PathMap<Value>::Builder entries;
};

// What the next value is for: a place in the records, whose type says what the value must be.
using Target = std::variant<
    Ignored*, bool*, std::int64_t*, std::uint64_t*, double*, RemoteDate*, std::string*, Uuid*, TransferProtocol*,
    Exclusions*, SavedState*, ProfileExport*, Profiles*, Profile*, std::optional<DownloadSelection>*,
    DownloadSelection*, Rules*, Baselines*, FileMap*, Growing<Fingerprint>*, Fingerprint*,
    std::optional<AllRemoteDates>*, AllRemoteDates*, RemoteDates*, Growing<RemoteDate>*>;

// What is wrong with a value that is nothing like the wanted type.
constexpr const char* mismatch(const bool&) { return "is not true or false"; }
constexpr const char* mismatch(const std::int64_t&) { return "is not a whole number"; }
constexpr const char* mismatch(const std::uint64_t&) { return "is not a whole number from 0 up"; }
constexpr const char* mismatch(const double&) { return "is not a number"; }
constexpr const char* mismatch(const RemoteDate&) { return "is not a number"; }
constexpr const char* mismatch(const std::string&) { return "is not a text"; }
constexpr const char* mismatch(const Exclusions&) { return "is not a text"; }
constexpr const char* mismatch(const Uuid&) { return "is not a UUID"; }
constexpr const char* mismatch(const TransferProtocol&) { return "is not a known protocol"; }
constexpr const char* mismatch(const Profiles&) { return "is not a list"; }
constexpr const char* mismatch(const auto&) { return "is not an object"; }

constexpr const char* notUnicode = "is not valid Unicode";

// RapidJSON passes the escape of half a surrogate pair on, which UTF-8 cannot express: it could never be saved again.
bool holdsSurrogate(std::string_view text) {
    constexpr unsigned char firstSurrogate = 0xA0; // of the bytes that follow ED
    for (auto lead = text.find('\xED'); lead != std::string_view::npos; lead = text.find('\xED', lead + 1)) {
        if (static_cast<unsigned char>(text[lead + 1]) >= firstSurrogate) return true;
    }
    return false;
}

// Each `assign` takes one kind of JSON value to one type, and returns what is wrong with the value, if anything is.

const char* assign(bool& target, bool value) {
    target = value;
    return nullptr;
}

template <class T>
const char* assignNumber(T& target, std::string_view text) {
    const auto* const end = text.data() + text.size();
    const auto [parsed, failure] = std::from_chars(text.data(), end, target);
    if (failure == std::errc::result_out_of_range) return "is out of range";
    return failure == std::errc{} && parsed == end ? nullptr : mismatch(target);
}

const char* assign(std::int64_t& target, Number number) { return assignNumber(target, number.text); }
const char* assign(std::uint64_t& target, Number number) { return assignNumber(target, number.text); }
const char* assign(double& target, Number number) { return assignNumber(target, number.text); }

const char* assign(RemoteDate& target, Number number) {
    double seconds = 0;
    const auto* const wrong = assign(seconds, number);
    target = RemoteDate(RemoteDate::duration(seconds));
    return wrong;
}

const char* assign(std::string& target, std::string_view text) {
    target = text;
    return holdsSurrogate(text) ? notUnicode : nullptr;
}

const char* assign(Exclusions& target, std::string_view text) {
    target = Exclusions(std::string(text));
    return holdsSurrogate(text) ? notUnicode : nullptr;
}

const char* assign(Uuid& target, std::string_view text) {
    const auto id = Uuid::parse(text);
    target = id.value_or(Uuid{});
    return id ? nullptr : mismatch(target);
}

const char* assign(TransferProtocol& target, std::string_view text) {
    const auto protocol = transferProtocol(text);
    target = protocol.value_or(TransferProtocol{});
    return protocol ? nullptr : mismatch(target);
}

template <class T>
const char* assign(std::optional<T>& target, Nothing) {
    target.reset();
    return nullptr;
}

// Takes the parser's events straight to the records. The objects and lists being read stand in `open`, outermost
// first. What an unknown key holds is passed over, however deep.
class RecordReader : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, RecordReader> {
public:
    RecordReader(Target record, const char* recordName) : next(record), name(recordName) {}

    bool Null() { return take(Nothing{}); }
    bool Bool(bool value) { return take(value); }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool) { return take(Number{{text, size}}); }
    bool String(const char* text, rapidjson::SizeType size, bool) { return take(std::string_view(text, size)); }

    bool StartObject() {
        return enter([this](auto& target) { startObject(target); });
    }

    bool StartArray() {
        return enter([this](auto& target) { startList(target); });
    }

    bool Key(const char* text, rapidjson::SizeType size, bool) {
        if (ignoredLevels > 0) return true;
        const auto choose = [&](auto* object) { next = member(*object, {text, size}); };
        std::visit(choose, open.back().object);
        return true;
    }

    bool EndObject(rapidjson::SizeType) { return leave(); }
    bool EndArray(rapidjson::SizeType) { return leave(); }

private:
    struct Level {
        Target object;
        std::string_view key{};  // the member being read
        unsigned fieldsSeen = 0; // one bit a field, in order
    };

    template <class Value>
    bool take(const Value& value) {
        if (ignoredLevels > 0) return true;
        const auto set = [&](auto* target) {
            if constexpr (requires { assign(*target, value); }) {
                if (const auto* wrong = assign(*target, value)) refuse(wrong);
            } else if constexpr (!std::same_as<decltype(target), Ignored*>) {
                refuse(mismatch(*target));
            }
        };
        std::visit(set, nextTarget());
        return true;
    }

    bool enter(const auto& start) {
        if (ignoredLevels > 0) {
            ++ignoredLevels;
        } else {
            std::visit([&](auto* target) { start(*target); }, nextTarget());
        }
        return true;
    }

    bool leave() {
        if (ignoredLevels > 0) {
            --ignoredLevels;
        } else {
            const auto ended = open.back();
            open.pop_back();
            std::visit([&](auto* object) { end(*object, ended.fieldsSeen); }, ended.object);
        }
        return true;
    }

    // A list has no keys: each value in it is for a new element.
    Target nextTarget() {
        if (open.empty()) return next;
        auto* const* list = std::get_if<Profiles*>(&open.back().object);
        return list != nullptr ? &(*list)->emplace_back() : next;
    }

    // A repeated key starts afresh.
    template <class T>
    requires Record<T> || Map<T>
    void startObject(T& object) {
        object = T{};
        open.push_back({.object = &object});
    }

    template <class T>
    void startObject(std::optional<T>& object) {
        startObject(object.emplace());
    }

    template <class Value>
    void startObject(PathMap<Value>& map) {
        auto& growing = std::get<Growing<Value>>(growingMaps);
        growing = {.map = &map, .entries = {}};
        open.push_back({.object = &growing});
    }
    void startObject(Ignored&) { ++ignoredLevels; }
    void startObject(const auto& target) { refuse(mismatch(target)); }

    void startList(Profiles& list) {
        list.clear();
        open.push_back({.object = &list});
    }

    void startList(Ignored&) { ++ignoredLevels; }
    void startList(const auto& target) { refuse(mismatch(target)); }

    template <Record T>
    Target member(T& record, std::string_view key) {
        Target found = &ignored;
        unsigned bit = 1;
        eachField(record, [&](std::string_view fieldName, auto& field) {
            if (fieldName == key) {
                found = &field;
                open.back().key = fieldName;
                open.back().fieldsSeen |= bit;
            }
            bit <<= 1U;
        });
        return found;
    }

    Target member(Rules& rules, std::string_view key) {
        open.back().key = key;
        if (holdsSurrogate(key)) refuse(notUnicode);
        const auto entry = rules.try_emplace(std::string(key)).first;
        open.back().key = entry->first;
        return &entry->second;
    }

    template <class Value>
    Target member(Growing<Value>& growing, std::string_view key) {
        lastPath = key; // for a complaint; the parser's own text does not last
        open.back().key = lastPath;
        if (holdsSurrogate(key)) refuse(notUnicode);
        return &growing.entries.add(key);
    }

    template <class T>
    Target member(std::map<Uuid, T>& map, std::string_view key) {
        open.back().key = key;
        const auto id = Uuid::parse(key);
        if (!id) refuse(mismatch(Uuid{}));
        lastId = id->text();
        open.back().key = lastId;
        return &map.try_emplace(map.end(), *id)->second;
    }

    Target member(auto&, std::string_view) { return &ignored; }

    template <class Value>
    void end(Growing<Value>& growing, unsigned) const {
        *growing.map = growing.entries.finish();
    }

    template <class T>
    void end(T& object, unsigned fieldsSeen) const {
        if constexpr (Record<T>) {
            eachField(object, [&](std::string_view fieldName, auto& field) {
                const bool optional = Optional<std::remove_reference_t<decltype(field)>>;
                if (!optional && (fieldsSeen & 1U) == 0) refuse("has no " + quoted(fieldName));
                fieldsSeen >>= 1U;
            });
        }
    }

    [[noreturn]] void refuse(const std::string& complaint) const { throw SyncError(place() + ' ' + complaint); }

    // Of the value being read, such as: "port" of profile 1
    [[nodiscard]] std::string place() const {
        std::string text;
        for (auto level = open.rbegin(); level != open.rend(); ++level) {
            if (level != open.rbegin()) text += " of ";
            if (auto* const* list = std::get_if<Profiles*>(&level->object)) {
                return text + "profile " + std::to_string((*list)->size());
            }
            text += quoted(level->key);
        }
        return open.empty() ? name : text;
    }

    std::vector<Level> open;
    Target next;
    std::string name; // of the whole
    std::string lastId;
    std::string lastPath;
    std::tuple<Growing<Fingerprint>, Growing<RemoteDate>> growingMaps; // one at a time is read
    Ignored ignored;
    std::size_t ignoredLevels = 0;
};

// Numbers stay texts until the record's type is known: RapidJSON's own conversion reads beyond its tables on long
// fractions. Parsing does not recurse, so that no nesting overflows the stack.
constexpr unsigned parseFlags = rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseIterativeFlag;

template <Record T>
T decodeRecord(std::string_view json, const char* name) {
    if (!isValidUtf8(json)) throw SyncError(std::string(name) + " is not valid UTF-8");
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const auto skipped = json.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    const auto document = json.substr(skipped);

    T record;
    RecordReader handler(&record, name);
    rapidjson::MemoryStream input(document.data(), document.size());
    rapidjson::Reader reader;
    const auto result = reader.Parse<parseFlags>(input, handler);
    const auto fail = [&](std::size_t offset, std::string_view reason) {
        throw SyncError("byte " + std::to_string(skipped + offset) + " is not valid JSON: " + std::string(reason));
    };
    if (result.IsError()) {
        std::string_view reason = rapidjson::GetParseError_En(result.Code());
        reason.remove_suffix(1); // its full stop
        fail(result.Offset(), reason);
    }
    // A NUL byte looks like the end of the text to the parser.
    if (input.Tell() != document.size()) fail(input.Tell(), "A NUL character");
    return record;
}

} // namespace

std::string encode(const SavedState& state) {
    // What entries take is guessed; memory that stays unused is never touched.
    constexpr std::size_t forFile = 160;
    constexpr std::size_t forDate = 96;
    std::size_t size = 0;
    for (const auto& [id, files] : state.baselines) size += files.size() * forFile;
    if (state.remoteDates) {
        for (const auto& [id, dates] : *state.remoteDates) size += dates.size() * forDate;
    }
    return encodeRecord(state, size);
}

SavedState decodeSavedState(std::string_view json) { return decodeRecord<SavedState>(json, "the saved state"); }

std::string encode(const ProfileExport& exported) { return encodeRecord(exported); }

ProfileExport decodeProfileExport(std::string_view json) {
    auto exported = decodeRecord<ProfileExport>(json, "the export");
    if (exported.version != ProfileExport::currentVersion) {
        throw SyncError("version " + std::to_string(exported.version) + " of the export is not known here");
    }
    return exported;
}

std::string encode(const Profile& profile) { return encodeRecord(profile); }

Profile decodeProfile(std::string_view json) { return decodeRecord<Profile>(json, "the profile"); }

} // namespace zembrastel
