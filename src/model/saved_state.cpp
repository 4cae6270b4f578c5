#include "model/saved_state.h"

#include "model/error.h"
#include "model/saved_state_fields.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace zembrastel {
namespace {

using Profiles = decltype(SavedState::profiles);

// Text that is built from many small pieces. std::string::append() costs more than the pieces it appends.
class GrowingText {
public:
    void reserve(std::size_t size) { text.reserve(size); }

    void add(char byte) {
        *room(1) = byte;
        ++length;
    }

    void add(std::string_view piece) {
        std::memcpy(room(piece.size()), piece.data(), piece.size());
        length += piece.size();
    }

    template <class T>
    void addNumber(T number) {
        constexpr std::size_t most = 32; // the shortest that is read back as the same number has at most 24
        char* const begin = room(most);
        length += static_cast<std::size_t>(std::to_chars(begin, begin + most, number).ptr - begin);
    }

    [[nodiscard]] std::string take() {
        text.resize(std::exchange(length, 0));
        return std::move(text);
    }

private:
    char* room(std::size_t size) {
        // Small enough to be in the processor's cache when it is written to.
        constexpr std::size_t growth = 16384;
        if (text.size() - length < size) text.resize(length + std::max(size, growth));
        return text.data() + length;
    }

    std::string text; // its used length:
    std::size_t length = 0;
};

// Renders records as compact JSON. Hand-written, since each save writes the whole state: RapidJSON's writer took two to
// three times as long for 100,000 files.
class JsonText {
public:
    template <Record T>
    void write(const T& record) {
        begin('{');
        eachField(record, [this](std::string_view key, const auto& field) { this->writeField(key, field); });
        end('}');
    }

    GrowingText text;

private:
    void begin(char bracket) {
        text.add(bracket);
        first = true;
    }

    void end(char bracket) {
        text.add(bracket);
        first = false;
    }

    void separate() {
        if (!first) text.add(',');
        first = false;
    }

    template <class T>
    void writeField(std::string_view key, const T& field) {
        if constexpr (Optional<const T>) {
            if (field) writeField(key, *field);
        } else if constexpr (Maybe<T, OptIn>) {
            if (field) writeField(key, field.on);
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
        text.add(':');
    }

    void write(const std::string& value) { write(std::string_view(value)); }
    void write(std::string_view value) {
        if (isPlain(value)) {
            text.add('"');
            text.add(value);
            text.add('"');
        } else {
            writeEscaped(value);
        }
    }

    void writeEscaped(std::string_view value) {
        if (!isValidUtf8(value)) throw SyncError(quotedName(value) + " is not valid UTF-8");
        text.add('"');
        for (auto rest = value; !rest.empty();) {
            const auto plain = static_cast<std::size_t>(std::ranges::find_if(rest, needsEscape) - rest.begin());
            text.add(rest.substr(0, plain));
            rest.remove_prefix(plain);
            if (rest.empty()) break;
            escape(rest.front());
            rest.remove_prefix(1);
        }
        text.add('"');
    }

    // True if all bytes are ASCII and need no escape, like nearly every path. Tests eight bytes at a time.
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
            text.add('\\');
            text.add(c);
        } else if (c == '\n') { // between the rules of exclusions
            text.add("\\n");
        } else {
            text.add("\\u00");
            text.add(digits[code / 16]);
            text.add(digits[code % 16]);
        }
    }

    void write(double number) {
        if (!std::isfinite(number)) throw SyncError("a time of a file is not a finite number");
        // Dates of servers are whole seconds, which are much faster to write.
        constexpr double wholeBelow = 9007199254740992.0; // 2^53
        const auto whole = std::abs(number) < wholeBelow ? static_cast<std::int64_t>(number) : 0;
        if (whole != 0 && static_cast<double>(whole) == number) { // zero has a sign
            write(whole);
        } else {
            text.addNumber(number);
        }
    }

    void write(bool value) { text.add(value ? "true" : "false"); }
    void write(std::int64_t number) { text.addNumber(number); }
    void write(std::uint64_t number) { text.addNumber(number); }
    void write(RemoteDate date) { write(date.time_since_epoch().count()); }
    void write(std::chrono::sys_seconds instant) { write(std::int64_t{instant.time_since_epoch().count()}); }
    void write(const KeyHash& key) { write(key.text()); }
    void write(const Uuid& id) { write(id.text()); }
    void write(TransferProtocol protocol) { write(rawValue(protocol)); }
    void write(const Exclusions& exclusions) { write(exclusions.text()); }

    bool first = true; // in the open object or array
};

template <Record T>
std::string encodeRecord(const T& record, std::size_t expectedSize = 0) {
    JsonText json;
    json.text.reserve(expectedSize);
    json.write(record);
    return json.text.take();
}

} // namespace

std::string encode(const SavedState& state) {
    // An estimate; unused memory is never touched.
    constexpr std::size_t forFile = 160;
    constexpr std::size_t forDate = 96;
    std::size_t size = 0;
    for (const auto& [id, files] : state.baselines) size += files.size() * forFile;
    if (state.remoteDates) {
        for (const auto& [id, dates] : *state.remoteDates) size += dates.size() * forDate;
    }
    return encodeRecord(state, size);
}

std::string encode(const ProfileExport& exported) { return encodeRecord(exported); }

std::string encode(const Profile& profile) { return encodeRecord(profile); }

} // namespace zembrastel
