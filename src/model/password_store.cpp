#include "model/password_store.h"

#include "platform/secret_service.h"
#include "platform/text.h"

namespace zembrastel {
namespace {

constexpr const char* newItemLabel = "Zembrastel FTP password";

SecretItem itemOf(const Uuid& id) { return {PasswordStore::service, id.text()}; }

SyncError ownFailure(std::string_view words) { return SyncError(keychainMessage(0, words)); }

template <class Call>
auto withService(Call call) {
    try {
        return call();
    } catch (const SecretServiceError& error) {
        throw SecretServiceFailed(keychainMessage(error.code, error.what()));
    }
}

} // namespace

std::string keychainMessage(int status, std::string_view words) {
    words = trimmed(words);
    if (words.ends_with('.')) words.remove_suffix(1);
    const std::string number = "access failed (" + std::to_string(status) + ')';
    return "Keychain: " + (words.empty() ? number : std::string(words)) + '.';
}

void PasswordStore::save(const std::string& password, const Uuid& id) {
    if (!isValidUtf8(password)) throw ownFailure("The password is not valid text");
    withService([&] {
        const SecretItem item = itemOf(id);
        if (!updateSecret(item, password)) addSecret(item, newItemLabel, password);
    });
}

std::string PasswordStore::read(const Uuid& id) {
    const std::optional<std::string> secret = withService([&] { return findSecret(itemOf(id)); });
    if (!secret) throw ownFailure("No password is stored for this profile; it must be entered again");
    if (!isValidUtf8(*secret)) throw ownFailure("The stored password is not valid text; it must be entered again");
    return *secret;
}

void PasswordStore::remove(const Uuid& id) {
    withService([&] { return removeSecret(itemOf(id)); });
}

std::string withoutPassword(std::string text, std::string_view password) {
    constexpr std::string_view dots = "••••";
    if (password.empty()) return text;
    for (auto at = text.find(password); at != std::string::npos; at = text.find(password, at + dots.size())) {
        text.replace(at, password.size(), dots);
    }
    return text;
}

} // namespace zembrastel
