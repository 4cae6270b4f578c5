#include "cli/terminal/json_line.h"

#include "platform/text.h"

namespace zembrastel::cli {

JsonLine::JsonLine(std::string_view event) {
    writer.StartObject();
    text("event", event);
}

JsonLine::JsonLine(std::string_view event, const Profile& profile) : JsonLine(event) {
    text("profile", profile.name).text("id", profile.id.text());
}

void JsonLine::name(std::string_view key) { writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size())); }

JsonLine& JsonLine::text(std::string_view key, std::string_view value) {
    name(key);
    const std::string readable = isValidUtf8(value) ? std::string(value) : printable(value);
    writer.String(readable.data(), static_cast<rapidjson::SizeType>(readable.size()));
    return *this;
}

JsonLine& JsonLine::number(std::string_view key, std::uint64_t value) {
    name(key);
    writer.Uint64(value);
    return *this;
}

JsonLine& JsonLine::flag(std::string_view key, bool value) {
    name(key);
    writer.Bool(value);
    return *this;
}

std::string JsonLine::finished() {
    number("version", jsonVersion);
    writer.EndObject();
    return printableJson({buffer.GetString(), buffer.GetSize()});
}

std::string asJsonLine(std::string_view event, std::string_view object) {
    JsonLine line(event);
    std::string text = line.finished();
    const auto version = text.rfind(',');
    text.insert(version + 1, printableJson(object.substr(1, object.size() - 2)) + ",");
    return text;
}

} // namespace zembrastel::cli
