// Reads the records from JSON.
#include "model/error.h"
#include "model/saved_state.h"
#include "model/saved_state_fields.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <simdjson.h>
#include <system_error>
#include <utility>

namespace zembrastel {
namespace {

using Value = simdjson::ondemand::value;
using Object = simdjson::ondemand::object;

// The complaint about a value of another type than expected.
constexpr const char* mismatch(const bool&) { return "is not true or false"; }
constexpr const char* mismatch(const OptIn&) { return "is not true or false"; }
constexpr const char* mismatch(const std::int64_t&) { return "is not a whole number"; }
constexpr const char* mismatch(const std::uint64_t&) { return "is not a whole number from 0 up"; }
constexpr const char* mismatch(const double&) { return "is not a number"; }
constexpr const char* mismatch(const std::string_view&) { return "is not a text"; }
constexpr const char* mismatch(const Uuid&) { return "is not a UUID"; }
constexpr const char* mismatch(const KeyHash&) { return "is not the SHA-256 of a key"; }
constexpr const char* mismatch(const TransferProtocol&) { return "is not a known protocol"; }
constexpr const char* mismatch(const std::vector<Profile>&) { return "is not a list"; }
constexpr const char* mismatch(const auto&) { return "is not an object"; }

constexpr const char* notUnicode = "is not valid Unicode";

// A value of the wrong type or range. The place grows while the exception passes outwards, for example to: "port" of
// profile 1
struct Misfit {
    std::string complaint;
    std::string place{};
    bool placed = false; // the place is complete

    void isIn(const std::string& outer) {
        if (!placed) place += place.empty() ? outer : " of " + outer;
    }
};

// Text that is not JSON, with the parser's position.
struct Malformed {
    simdjson::error_code error;
};

// True if the text is one value that follows all rules of JSON. Of any depth, since nothing recurses.
bool isJson(std::string_view text) {
    constexpr unsigned rules = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(text.data(), text.size());
    rapidjson::BaseReaderHandler<> nothing;
    const bool followed = !rapidjson::Reader().Parse<rules>(stream, nothing).IsError();
    return followed && stream.Tell() == text.size(); // a NUL would pass for the end
}

// A map whose contents are checked, but not built.
template <class T>
struct Checked {};

// A saved state of which only the profiles are built. The requirements are the same.
struct ProfilesOfState {
    std::vector<Profile> profiles;
    std::map<Uuid, Checked<Fingerprint>> baselines;
    std::optional<std::map<Uuid, Checked<RemoteDate>>> remoteDates;
};

void eachField(ProfilesOfState& state, const auto& visit) {
    visit("profiles", state.profiles);
    visit("baselines", state.baselines);
    visit("remoteDates", state.remoteDates);
}

template <class T>
T valid(simdjson::simdjson_result<T>&& result) {
    if (result.error() != simdjson::SUCCESS) throw Malformed{result.error()};
    return std::move(result).value_unsafe();
}

// The value as the type of its place. `target` selects the text of the complaint.
template <class T>
T wanted(simdjson::simdjson_result<T>&& result, const auto& target) {
    if (result.error() == simdjson::INCORRECT_TYPE) throw Misfit{mismatch(target)};
    return valid(std::move(result));
}

// The parser may let half a surrogate pair through, which UTF-8 cannot express and which could not be saved again.
bool holdsSurrogate(std::string_view text) {
    constexpr unsigned char firstSurrogate = 0xA0; // of the bytes that follow ED
    for (auto lead = text.find('\xED'); lead != std::string_view::npos; lead = text.find('\xED', lead + 1)) {
        if (static_cast<unsigned char>(text[lead + 1]) >= firstSurrogate) return true;
    }
    return false;
}

std::string_view unicode(simdjson::simdjson_result<std::string_view>&& result) {
    if (result.error() == simdjson::STRING_ERROR) throw Misfit{notUnicode};
    const auto text = wanted(std::move(result), std::string_view());
    if (holdsSurrogate(text)) throw Misfit{notUnicode};
    return text;
}

// The key as it is in the text, which avoids copying the many keys without escapes.
std::optional<std::string_view> plainKey(simdjson::ondemand::field& field) {
    const char* const begin = field.key().raw();
    const auto* const end = static_cast<const char*>(::rawmemchr(begin, '"')); // the parser has found the closing quote
    const auto length = static_cast<std::size_t>(end - begin);
    return std::memchr(begin, '\\', length) == nullptr ? std::optional(std::string_view(begin, length)) : std::nullopt;
}

// Skips a value but checks it. The parser itself would only count its brackets.
void pass(Value value) {
    if (!isJson(valid(simdjson::to_json_string(value)))) throw Malformed{simdjson::TAPE_ERROR};
}

// Calls `visit(key, value)` for each member.
void eachMember(Object&& object, const auto& visit) {
    for (auto member : object) {
        auto field = valid(std::move(member));
        std::string_view key;
        try {
            const auto plain = plainKey(field);
            key = plain ? *plain : unicode(field.unescaped_key());
        } catch (Misfit& misfit) {
            misfit.isIn("a key");
            throw;
        }
        visit(key, field.value());
    }
}

// Each `read` assigns its target: of a repeated key the last counts. The recursion is as deep as the records.
class RecordReader {
public:
    static void readMember(std::string_view key, Value value, auto& target) {
        try {
            read(value, target);
        } catch (Misfit& misfit) {
            misfit.isIn(quotedName(key));
            throw;
        }
    }

    static void read(Value value, bool& target) { target = wanted(value.get_bool(), target); }
    static void read(Value value, OptIn& target) { read(value, target.on); }

    // A number that the parser refuses has too many digits or is of another kind.
    template <class T>
    static void readNumber(Value value, simdjson::simdjson_result<T>&& number, T& target) {
        const auto error = number.error();
        if (error == simdjson::SUCCESS) {
            target = number.value_unsafe();
            return;
        }
        if (error != simdjson::NUMBER_ERROR && error != simdjson::INCORRECT_TYPE) throw Malformed{error};
        const std::string_view token = value.raw_json_token();
        const auto parsed = std::from_chars(token.data(), token.data() + token.size(), target);
        throw Misfit{parsed.ec == std::errc::result_out_of_range ? "is out of range" : mismatch(target)};
    }

    static void read(Value value, std::int64_t& target) { readNumber(value, value.get_int64(), target); }
    static void read(Value value, std::uint64_t& target) { readNumber(value, value.get_uint64(), target); }
    // The parser misreads some numbers of more than 19 digits. This program writes none.
    static void read(Value value, double& target) {
        constexpr std::size_t longest = 19;
        const std::string_view token = value.raw_json_token(); // including the blanks after it
        if (token.size() <= longest) {
            readNumber(value, value.get_double(), target);
            return;
        }
        const auto parsed = std::from_chars(token.data(), token.data() + token.size(), target);
        if (parsed.ec == std::errc::invalid_argument || !isJson(token)) throw Misfit{mismatch(target)};
        if (parsed.ec != std::errc()) throw Misfit{"is out of range"};
    }

    static void read(Value value, RemoteDate& target) {
        double seconds = 0;
        read(value, seconds);
        target = RemoteDate(RemoteDate::duration(seconds));
    }

    static void read(Value value, std::chrono::sys_seconds& target) {
        std::int64_t seconds = 0;
        read(value, seconds);
        target = std::chrono::sys_seconds(std::chrono::seconds(seconds));
    }

    static void read(Value value, std::string& target) { target = unicode(value.get_string()); }
    static void read(Value value, Exclusions& target) { target = Exclusions(std::string(unicode(value.get_string()))); }

    // The result of `parse` on the text; an error if it is nullopt.
    template <class T>
    static void readText(Value value, T& target, const auto& parse) {
        const auto text = value.get_string();
        const auto parsed = text.error() == simdjson::SUCCESS ? parse(text.value_unsafe()) : std::optional<T>();
        if (!parsed) throw Misfit{mismatch(target)};
        target = *parsed;
    }

    static void read(Value value, Uuid& target) { readText(value, target, Uuid::parse); }
    static void read(Value value, KeyHash& target) { readText(value, target, KeyHash::parse); }
    static void read(Value value, TransferProtocol& target) { readText(value, target, transferProtocol); }

    template <Record T>
    static void read(Value value, T& record) {
        record = T{};
        unsigned seen = 0; // one bit per field, in order
        eachMember(wanted(value.get_object(), record), [&](std::string_view key, Value member) {
            unsigned bit = 1;
            bool known = false;
            eachField(record, [&](std::string_view name, auto& field) {
                if (name == key) {
                    readMember(name, member, field);
                    seen |= bit;
                    known = true;
                }
                bit <<= 1U;
            });
            if (!known) pass(member);
        });
        eachField(record, [&seen](std::string_view name, auto& field) {
            const bool optional = MayBeAbsent<std::remove_reference_t<decltype(field)>>;
            if (!optional && (seen & 1U) == 0) throw Misfit{"has no " + quotedName(name)};
            seen >>= 1U;
        });
    }

    template <class T>
    static void read(Value value, std::optional<T>& target) {
        target.reset();
        if (!valid(value.is_null())) read(value, target.emplace());
    }

    static void read(Value value, std::map<std::string, bool, std::less<>>& rules) {
        rules.clear();
        eachMember(wanted(value.get_object(), rules), [&rules](std::string_view key, Value member) {
            readMember(key, member, rules[std::string(key)]);
        });
    }

    template <class T>
    static void read(Value value, PathMap<T>& map) {
        typename PathMap<T>::Builder entries;
        eachMember(wanted(value.get_object(), map), [&entries](std::string_view key, Value member) {
            readMember(key, member, entries.add(key));
        });
        map = entries.finish();
    }

    // Refuses the same entries as the map itself.
    template <class T>
    static void read(Value value, Checked<T>& map) {
        T entry{};
        eachMember(wanted(value.get_object(), map), [&entry](std::string_view key, Value member) {
            // Only a path of this length can be too deep.
            if (key.size() > maxPathLevels) checkPathLevels(static_cast<std::size_t>(std::ranges::count(key, '/')));
            readMember(key, member, entry);
        });
    }

    template <class T>
    static void read(Value value, std::map<Uuid, T>& map) {
        map.clear();
        eachMember(wanted(value.get_object(), map), [&map](std::string_view key, Value member) {
            const auto id = Uuid::parse(key);
            if (!id) throw Misfit{mismatch(Uuid{}), quotedName(key)};
            readMember(id->text(), member, map[*id]);
        });
    }

    static void read(Value value, std::vector<Profile>& list) {
        list.clear();
        for (auto element : wanted(value.get_array(), list)) {
            try {
                read(valid(std::move(element)), list.emplace_back());
            } catch (Misfit& misfit) {
                misfit.isIn("profile " + std::to_string(list.size()));
                misfit.placed = true;
                throw;
            }
        }
    }

    template <Record T>
    static void readDocument(simdjson::ondemand::document& document, T& record) {
        if (valid(document.is_scalar())) throw Misfit{mismatch(record)};
        read(valid(document.get_value()), record);
        if (document.current_location().error() == simdjson::SUCCESS) throw Malformed{simdjson::TRAILING_CONTENT};
    }
};

// Without its full stop.
std::string reason(simdjson::error_code error) {
    std::string text = simdjson::error_message(error);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

template <Record T>
T decodeRecord(std::string json, const char* name) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const auto skipped = json.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    json.reserve(json.size() + simdjson::SIMDJSON_PADDING);
    const auto* const text = json.data() + skipped;
    const auto length = json.size() - skipped;

    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    const auto begun = parser.iterate(text, length, json.capacity() - skipped).get(document);
    if (begun == simdjson::UTF8_ERROR) throw SyncError(std::string(name) + " is not valid UTF-8");
    if (begun != simdjson::SUCCESS) throw SyncError(std::string(name) + " is not valid JSON: " + reason(begun));
    try {
        T record;
        RecordReader::readDocument(document, record);
        return record;
    } catch (const Misfit& misfit) {
        throw SyncError((misfit.place.empty() ? name : misfit.place) + ' ' + misfit.complaint);
    } catch (const Malformed& malformed) {
        auto location = document.current_location(); // none at the end
        const auto* const reached = location.error() == simdjson::SUCCESS ? location.value_unsafe() : text + length;
        const auto place = "byte " + std::to_string(reached - json.data()) + " of " + name;
        throw SyncError(place + " is not valid JSON: " + reason(malformed.error));
    }
}

} // namespace

SavedState decodeSavedState(std::string json) { return decodeRecord<SavedState>(std::move(json), "the saved state"); }

std::vector<Profile> decodeProfiles(std::string json) {
    return decodeRecord<ProfilesOfState>(std::move(json), "the saved state").profiles;
}

ProfileExport decodeProfileExport(std::string json) {
    auto exported = decodeRecord<ProfileExport>(std::move(json), "the export");
    if (exported.version != ProfileExport::currentVersion) {
        throw SyncError("version " + std::to_string(exported.version) + " of the export is not known here");
    }
    return exported;
}

Profile decodeProfile(std::string json) { return decodeRecord<Profile>(std::move(json), "the profile"); }

} // namespace zembrastel
