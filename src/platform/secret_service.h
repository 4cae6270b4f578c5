// Generic-password items in the desktop's secret service (org.freedesktop.secrets), found by service and account.
//
// Every call may block until the user answers an unlock prompt, so do not call it on the main context. Any thread. A
// locked store is unlocked first, so that a stored item never counts as missing. If the service was restarted since the
// last call, the connection is renewed and the call repeated once.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace zembrastel {

// The secret service refused a call. what() is the service's own sentence, or empty.
class SecretServiceError : public std::runtime_error {
public:
    SecretServiceError(int status, const std::string& message) : std::runtime_error(message), code(status) {}

    int code; // the number in the error's GLib domain
};

struct SecretItem {
    std::string service;
    std::string account;
};

// Sets the secret of the item, and keeps its label and other attributes. False if there is no such item.
[[nodiscard]] bool updateSecret(const SecretItem& item, const std::string& secret);

// Creates an item with this label in the default collection.
void addSecret(const SecretItem& item, const std::string& label, const std::string& secret);

// The secret's bytes; nullopt if there is no such item.
[[nodiscard]] std::optional<std::string> findSecret(const SecretItem& item);

// Deletes every matching item. False if there was none.
bool removeSecret(const SecretItem& item);

} // namespace zembrastel
