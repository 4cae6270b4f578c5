// The two JSON texts that are read: all that is remembered, and one profile.
#include "model/saved_state.h"

#include "promise.h"
#include "targets.h"

#include <filesystem>

namespace zembrastel::fuzz {
namespace {

template <class Record, class Decode>
void checkRoundTrip(const Record& record, Decode decode) {
    const std::string text = encode(record);
    const Record again = decode(text);
    promise(again == record, "what is saved is what is loaded");
    promise(encode(again) == text, "saving again changes no byte");
}

} // namespace

void savedState(std::string_view input) {
    const auto state = unlessRefused([&] { return decodeSavedState(std::string(input)); });
    if (state) checkRoundTrip(*state, decodeSavedState);
}

void profileJson(std::string_view input) {
    const auto profile = unlessRefused([&] { return decodeProfile(std::string(input)); });
    if (!profile) return;
    checkRoundTrip(*profile, decodeProfile);
    const auto valid = unlessRefused([&] { return profile->validated(); });
    if (!valid) return;
    promise(valid->validated() == *valid, "a valid profile stays as it is");
    promise(valid->port > 0 && valid->port < 65536, "a port is one");
    promise(std::filesystem::path(valid->localFolder).is_absolute(), "a local folder is a whole path");
    promise(
        (valid->host + valid->username + valid->remoteFolder).find_first_of(std::string_view("\r\n\0", 3))
            == std::string::npos,
        "no setting of the server breaks a line");
    checkRoundTrip(*valid, decodeProfile);
}

} // namespace zembrastel::fuzz
