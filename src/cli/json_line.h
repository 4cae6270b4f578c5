// One line of --json output: a JSON object whose first key, "event", says what it is about.
//
// Programs rely on these keys. Times are texts in UTC, such as "2026-01-02T15:04:05Z"; paths are relative, "/" between
// components. On standard output come
//   profile list, add, show, set and duplicate
//            the profile as profiles.json has it (an object without "event")
//   profile export   the export itself: "zembrastelProfiles" (its version) and "profiles" (without "event" too)
//   profile remove   "removed": profile, id
//   profile import   "imported", with --dry-run "importable": profile, id, password (was there one), notes, each with
//                    text; "skipped": profile, reason
//   test     "connected": profile, id, items
//   ls       "entry": path, name, directory, and modified where the server gave a date
//   scan     "scan": profile, id, folder, files, bytes, new, changed, deleted;
//            then "difference": path, kind ("new", "changed" or "deleted")
//   why      "why": profile, id, path, synced, reason ("all", "selection", "unselected", "exclusion", "reserved",
//            "link", "kind" or "name"), decider (the rule or path that decides), text
//   check    "review", as review
//   watch    "status": time, profile, id, title, detail, pending (changed files), failed
//            "activity": time, profile, id, text, error
//            "review": time, profile, id, files, each with path, remoteDate, localDate, bothChanged
//   review   "review" as above, with no files when nothing is newer; "downloaded" and "kept": profile, id, path
//   backups  "backups": profile, id, folder, files, versions, bytes;
//            then "backup": path, version (its id), kept (when it was replaced), modified, bytes
//   restore  "restored": profile, id, path, version, kept, replaced (is what stood there a backup now?)
//   doctor   "details": profile, id, text; then "finding": profile, id, subject (see diagnosis.h; "localFolder" too),
//            outcome ("fine", "unknown", "notice" or "wrong"), text, remedy
// and on standard error "error" and "warning": message.
#pragma once

#include <cstdint>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>

namespace zembrastel {

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

    // Ends the object. Without a line feed.
    [[nodiscard]] std::string finished();

private:
    void name(std::string_view key);

    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
};

} // namespace zembrastel
