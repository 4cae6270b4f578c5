// The FTP password of each profile, in the desktop's secret service.
//
// Stateless. The calls block (see secret_service.h): any thread except the main context. Each throws SyncError,
// "Keychain: " and the reason. Nothing is retried, and a failed save keeps the earlier password.
#pragma once

#include "model/error.h"
#include "platform/uuid.h"

#include <string>
#include <string_view>

namespace zembrastel {

// The secret service itself failed: none runs, it is locked, or it refused. The message has the service's own text.
class SecretServiceFailed : public SyncError {
public:
    using SyncError::SyncError;
};

struct PasswordStore {
    // "service" attribute of every item; "account" is the profile id's text.
    static constexpr const char* service = "org.zembrastel.Zembrastel.ftp-passwords";

    // Stores or replaces. An existing item keeps its label and the attributes that the user gave it.
    static void save(const std::string& password, const Uuid& id);

    // A missing password is an error.
    [[nodiscard]] static std::string read(const Uuid& id);

    // Removing a missing password is no error.
    static void remove(const Uuid& id);
};

// The message of a failed call: the service's own text as a sentence, or the error's number if it has none.
[[nodiscard]] std::string keychainMessage(int status, std::string_view words);

// The text with dots in place of the password. An empty password changes nothing.
[[nodiscard]] std::string withoutPassword(std::string text, std::string_view password);

} // namespace zembrastel
