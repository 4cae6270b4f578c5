// One line of --json output: a JSON object whose first key, "event", says what it is about.
//
// Programs rely on the keys: docs/JSON.md tells all of them, and a test compares it with what commands print. "version"
// at the end grows when one of them changes its meaning or goes; new ones may come without that.
#pragma once

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
    JsonLine(const JsonLine&) = delete;
    JsonLine& operator=(const JsonLine&) = delete;

    // What is not UTF-8 in a text is spelled out as \xHH.
    JsonLine& text(std::string_view key, std::string_view value);
    JsonLine& number(std::string_view key, std::uint64_t value);
    JsonLine& flag(std::string_view key, bool value);

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

    // Ends the object. Without a line feed, and without control characters or invisible ones: they are \uXXXX.
    [[nodiscard]] std::string finished();

private:
    void name(std::string_view key);

    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
};

// An object that is there as text, as such a line.
[[nodiscard]] std::string asJsonLine(std::string_view event, std::string_view object);

} // namespace zembrastel::cli
