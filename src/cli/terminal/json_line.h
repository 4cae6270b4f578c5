// One line of --json output: a JSON object whose first key, "event", names its kind.
//
// Programs rely on the keys: docs/JSON.md documents all of them, and a test compares it with the output of the
// commands. "version" at the end grows when a key is removed or changes its meaning; new keys do not change it.
#pragma once

#include "model/profile.h"

#include <cstdint>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>

namespace zembrastel::cli {

inline constexpr std::uint64_t jsonVersion = 1;

class JsonLine {
public:
    explicit JsonLine(std::string_view event);
    // The line of an event that is about a profile: begins with its name and id.
    [[nodiscard]] static JsonLine forProfile(std::string_view event, const Profile& profile) {
        return JsonLine(event, profile);
    }
    JsonLine(const JsonLine&) = delete;
    JsonLine& operator=(const JsonLine&) = delete;

    // Bytes that are not UTF-8 become \xHH.
    JsonLine& text(std::string_view key, std::string_view value);
    JsonLine& number(std::string_view key, std::uint64_t value);
    JsonLine& flag(std::string_view key, bool value);

    // An object: `write(*this)` adds its members.
    template <class Write>
    JsonLine& object(std::string_view key, const Write& write) {
        name(key);
        writer.StartObject();
        write(*this);
        writer.EndObject();
        return *this;
    }

    // A list of objects: `write(*this, element)` adds the members of each.
    template <class Range, class Write>
    JsonLine& list(std::string_view key, const Range& elements, const Write& write) {
        name(key);
        writer.StartArray();
        for (const auto& element : elements) {
            writer.StartObject();
            write(*this, element);
            writer.EndObject();
        }
        writer.EndArray();
        return *this;
    }

    // Ends the object. Has no line feed; control characters and invisible ones are \uXXXX.
    [[nodiscard]] std::string finished();

private:
    JsonLine(std::string_view event, const Profile& profile);
    void name(std::string_view key);

    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
};

// An existing JSON object as such a line.
[[nodiscard]] std::string asJsonLine(std::string_view event, std::string_view object);

} // namespace zembrastel::cli
