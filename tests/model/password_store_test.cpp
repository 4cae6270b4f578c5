#include "model/password_store.h"

#include "platform/secret_service.h"
#include "support/local_site.h"
#include "support/private_secret_service.h"

namespace zembrastel {
namespace {

using testing::failureOf;

class PasswordStoreTest : public PrivateSecretService {
protected:
    std::string readFailure() const {
        return failureOf([&] { return PasswordStore::read(id); });
    }

    const Uuid id = Uuid::random();
    const SecretItem item{PasswordStore::service, id.text()};
};

TEST(KeychainMessage, MessageIsOneSentenceForAnyServiceError) {
    EXPECT_EQ(keychainMessage(2, "The store is locked.\n"), "Keychain: The store is locked.");
    EXPECT_EQ(keychainMessage(19, " . "), "Keychain: access failed (19).");
}

TEST_F(PasswordStoreTest, SecondPasswordReplacesTheFirst) {
    const auto missing = "Keychain: No password is stored for this profile; it must be entered again.";
    EXPECT_EQ(readFailure(), missing);
    EXPECT_NO_THROW(PasswordStore::remove(id));
    PasswordStore::save("first", id);
    PasswordStore::save("p\u00E4ss \"w\u00F6rd\\ \U0001F511", id);
    EXPECT_EQ(PasswordStore::read(id), "p\u00E4ss \"w\u00F6rd\\ \U0001F511");
    PasswordStore::remove(id);
    EXPECT_EQ(readFailure(), missing) << "an older copy came back";
}

TEST_F(PasswordStoreTest, InvalidBytesNeverBecomeAPassword) {
    const auto save = [&] { PasswordStore::save("caf\xE9", id); };
    EXPECT_EQ(failureOf(save), "Keychain: The password is not valid text.");
    EXPECT_FALSE(findSecret(item));
    addSecret(item, "made elsewhere", "caf\xE9");
    EXPECT_EQ(readFailure(), "Keychain: The stored password is not valid text; it must be entered again.");
}

} // namespace
} // namespace zembrastel
