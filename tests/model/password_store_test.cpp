#include "model/password_store.h"

#include "model/error.h"
#include "platform/secret_service.h"
#include "support/private_secret_service.h"

namespace zembrastel {
namespace {

class PasswordStoreTest : public PrivateSecretService {
protected:
    const Uuid id = Uuid::random();
};

template <class Call>
std::string failure(Call call) {
    try {
        call();
    } catch (const SyncError& error) {
        return error.what();
    }
    return "no failure";
}

TEST(KeychainMessage, ReadsAsOneSentenceWhateverTheServiceSays) {
    EXPECT_EQ(keychainMessage(2, "The store is locked"), "Keychain: The store is locked.");
    EXPECT_EQ(keychainMessage(2, "The store is locked.\n"), "Keychain: The store is locked.");
    EXPECT_EQ(keychainMessage(-1, ""), "Keychain: access failed (-1).");
    EXPECT_EQ(keychainMessage(19, " . "), "Keychain: access failed (19).");
}

TEST_F(PasswordStoreTest, SecondPasswordReplacesTheFirst) {
    PasswordStore::save("first", id);
    PasswordStore::save("p\u00E4ss \"w\u00F6rd\\ \U0001F511", id);
    EXPECT_EQ(PasswordStore::read(id), "p\u00E4ss \"w\u00F6rd\\ \U0001F511");
    PasswordStore::remove(id);
    EXPECT_FALSE(findSecret({PasswordStore::service, id.text()})) << "an older copy came back";
}

TEST_F(PasswordStoreTest, MissingPasswordIsAnErrorToReadAndNoneToRemove) {
    const auto missing = "Keychain: No password is stored for this profile; it must be entered again.";
    EXPECT_EQ(failure([&] { (void)PasswordStore::read(id); }), missing);
    EXPECT_NO_THROW(PasswordStore::remove(id));
}

TEST_F(PasswordStoreTest, BytesThatAreNoTextNeverBecomeAPassword) {
    EXPECT_EQ(failure([&] { PasswordStore::save("caf\xE9", id); }), "Keychain: The password is not valid text.");
    EXPECT_FALSE(findSecret({PasswordStore::service, id.text()}));
    addSecret({PasswordStore::service, id.text()}, "made elsewhere", "caf\xE9");
    EXPECT_EQ(
        failure([&] { (void)PasswordStore::read(id); }),
        "Keychain: The stored password is not valid text; it must be entered again.");
}

} // namespace
} // namespace zembrastel
