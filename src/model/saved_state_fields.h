// The fields of the saved state's records, with their JSON keys, for reading and writing.
//
// For the two files that read and write it. `eachField(record, visit)` calls `visit(key, field)` for each field. A
// reader requires the key unless the field is optional.
#pragma once

#include "model/saved_state.h"
#include "platform/text.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace zembrastel {

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
    visit("trustedKey", profile.trustedKey);
    visit("compareContents", profile.compareContents);
}

void eachField(Maybe<TrustedKey> auto& trusted, const auto& visit) {
    visit("sha256", trusted.key);
    visit("host", trusted.host);
    visit("port", trusted.port);
    visit("since", trusted.since);
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

// A field that a record may lack.
template <class T>
concept MayBeAbsent = Optional<T> || Maybe<T, OptIn>;

// For a message.
inline std::string quotedName(std::string_view text) { return '"' + printable(text) + '"'; }

} // namespace zembrastel
