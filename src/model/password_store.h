// The FTP password of each profile, in the desktop's secret service.
//
// No state; the calls block (see secret_service.h) and may come from any thread but the main context. Each throws
// SyncError, "Keychain: " and the service's own words; nothing is retried, and a failed save leaves the earlier
// password in place.
#pragma once

#include "platform/uuid.h"

#include <string>
#include <string_view>

namespace zembrastel {

struct PasswordStore {
    // "service" attribute of every item; "account" is the profile id's text.
    static constexpr const char* service = "org.zembrastel.Zembrastel.ftp-passwords";

    // Stores or replaces. An item that is there keeps its label and the attributes the user gave it.
    static void save(const std::string& password, const Uuid& id);

    // A missing password is an error.
    [[nodiscard]] static std::string read(const Uuid& id);

    // Removing a missing password is none.
    static void remove(const Uuid& id);
};

// The message of a failed call: the service's own words as a sentence, or the number of its error when it had none.
[[nodiscard]] std::string keychainMessage(int status, std::string_view words);

} // namespace zembrastel
