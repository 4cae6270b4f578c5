#include "model/records/published_contents.h"

#include "platform/descriptor.h"
#include "platform/files.h"

#include <cstring>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <system_error>
#include <type_traits>
#include <unistd.h>

namespace zembrastel {
namespace {

constexpr std::string_view formatName = "zembrastel contents 1\n";
constexpr std::uint64_t leastToTidy = std::uint64_t{1} << 20;

std::filesystem::path fileFor(const std::filesystem::path& stateFolder, const Uuid& profile) {
    return stateFolder / ("contents-" + profile.text() + ".hashes");
}

template <class T>
std::string_view rawBytes(const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

// Takes a value from the beginning of the bytes. False if they are too few.
template <class T>
bool takeValue(std::string_view& bytes, T& value) {
    if (bytes.size() < sizeof value) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes.remove_prefix(sizeof value);
    return true;
}

// All that decides which server's copy an entry is about.
std::string headerFor(const Profile& profile) {
    std::string place;
    for (const auto* text : {&profile.host, &profile.username, &profile.remoteFolder, &profile.localFolder}) {
        place += rawBytes(text->size());
        place += *text;
    }
    place += rawBytes(profile.port);
    return std::string(formatName).append(rawBytes(hashOf(place)));
}

// The length of the rest, the rest, and its checksum.
void appendEntry(std::string& to, std::string_view path, const PublishedContent& content) {
    std::string entry;
    const auto& [size, modified, inode] = content.fingerprint;
    const double date = content.date.time_since_epoch().count();
    for (const auto bytes :
         {rawBytes(size), rawBytes(modified), rawBytes(inode), rawBytes(date), rawBytes(content.hash)}) {
        entry += bytes;
    }
    entry += path;
    to += rawBytes(static_cast<std::uint32_t>(entry.size()));
    to += entry;
    to += rawBytes(hashOf(entry).low);
}

using VisitEntry = std::function<void(std::string_view path, const PublishedContent& content)>;

// True if the entry is whole.
bool readEntry(std::string_view& bytes, const VisitEntry& visit) {
    std::uint32_t length = 0;
    if (!takeValue(bytes, length) || bytes.size() < length) return false;
    std::string_view entry = bytes.substr(0, length);
    const auto checksum = hashOf(entry).low;
    bytes.remove_prefix(length);
    std::uint64_t written = 0;
    if (!takeValue(bytes, written) || written != checksum) return false;
    PublishedContent content;
    auto& [size, modified, inode] = content.fingerprint;
    double date = 0;
    if (!takeValue(entry, size) || !takeValue(entry, modified) || !takeValue(entry, inode) || !takeValue(entry, date)
        || !takeValue(entry, content.hash)) {
        return false;
    }
    content.date = RemoteDate(RemoteDate::duration(date));
    visit(entry, content);
    return true;
}

// The entries up to the first damaged one, in the order in which they were added. False if the file is damaged, or is
// not one of this format and place.
bool readEntries(std::string_view bytes, std::string_view header, const VisitEntry& visit) {
    if (!bytes.starts_with(header)) return false;
    bytes.remove_prefix(header.size());
    while (!bytes.empty()) {
        if (!readEntry(bytes, visit)) return false;
    }
    return true;
}

bool appendTo(const std::filesystem::path& file, std::string_view bytes) {
    const Descriptor opened(::open(file.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC));
    return opened && ::write(opened.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

} // namespace

PublishedContents::PublishedContents(const std::filesystem::path& stateFolder, const Profile& profile)
    : file(fileFor(stateFolder, profile.id)), header(headerFor(profile)) {}

PublishedContentMap PublishedContents::find(const std::map<std::string, Fingerprint, std::less<>>& versions) const {
    PublishedContentMap found;
    try {
        const auto bytes = readFile(file);
        if (!bytes) return found;
        readEntries(*bytes, header, [&](std::string_view path, const PublishedContent& content) {
            const auto version = versions.find(path);
            if (version == versions.end() || version->second != content.fingerprint) return;
            found.insert_or_assign(version->first, content);
        });
    } catch (const std::filesystem::filesystem_error&) {
        // The files are sent.
    }
    return found;
}

// Brings the file into a state to which entries can be added: it is whole and mostly up to date.
void PublishedContents::tidy(const FileMap& baseline) {
    const auto bytes = readFile(file).value_or("");
    PublishedContentMap valid;
    std::size_t all = 0;
    const bool whole = readEntries(bytes, header, [&](std::string_view path, const PublishedContent& content) {
        ++all;
        const auto* recorded = baseline.find(path);
        if (recorded != nullptr && *recorded == content.fingerprint) valid.insert_or_assign(std::string(path), content);
    });
    std::uint64_t size = bytes.size();
    if (!whole || all > 2 * valid.size()) {
        std::string kept = header;
        for (const auto& [path, content] : valid) appendEntry(kept, path, content);
        writeAtomically(file, kept);
        size = kept.size();
    }
    tidyAbove = 2 * size + leastToTidy;
}

void PublishedContents::add(const PublishedContentMap& entries, const FileMap& baseline) {
    if (entries.empty()) return;
    try {
        std::error_code missing;
        const auto size = std::filesystem::file_size(file, missing);
        if (missing || size > tidyAbove) tidy(baseline);
        std::string added;
        for (const auto& [path, content] : entries) appendEntry(added, path, content);
        if (!appendTo(file, added)) tidyAbove = 0; // part of it may have been written
    } catch (const std::filesystem::filesystem_error&) {
        tidyAbove = 0; // the files are sent
    }
}

void PublishedContents::remove(const std::filesystem::path& stateFolder, const Uuid& profile) noexcept {
    std::error_code ignored; // entries that stay match no file
    std::filesystem::remove(fileFor(stateFolder, profile), ignored);
}

} // namespace zembrastel
