// Generic-password items in the desktop's secret service (org.freedesktop.secrets), found by service and account.
//
// Every call blocks, for as long as a person takes to answer an unlock prompt: never call it on the main context.
// Calls may come from any thread. A locked store is unlocked first, so that a stored item never reads as missing. When
// the service was restarted since the last call, the connection is renewed and the call repeated once.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace zembrastel {

// A call that the secret service did not carry out. what() is the service's own sentence, empty when it gave none.
class SecretServiceError : public std::runtime_error {
public:
    SecretServiceError(int status, const std::string& message) : std::runtime_error(message), code(status) {}

    int code; // the error's number in its own domain
};

struct SecretItem {
    std::string service;
    std::string account;
};

// Sets the secret of the item; its label and further attributes stay. False when there is no such item.
[[nodiscard]] bool updateSecret(const SecretItem& item, const std::string& secret);

// Makes an item with this label in the default collection.
void addSecret(const SecretItem& item, const std::string& label, const std::string& secret);

// The secret's bytes; nothing when there is no such item.
[[nodiscard]] std::optional<std::string> findSecret(const SecretItem& item);

// Deletes every matching item. False when there was none.
bool removeSecret(const SecretItem& item);

} // namespace zembrastel
