#include "platform/secret_service.h"

#include "platform/uuid.h"
#include "support/file_tree.h"
#include "support/private_secret_service.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "support/wait_for.h"

#include <algorithm>
#include <gio/gio.h>
#include <iostream>
#include <libsecret/secret.h>

namespace zembrastel {
namespace {

using namespace std::string_literals;
using testing::Program;
using Words = std::vector<std::string>;

const auto locked = "The secret store is locked and was not unlocked"s;
const auto noService = "No secret service is running"s;
const auto noBus = "No secret service is running, since there is no session bus"s;

// Another program on the bus; what it prints.
std::string shell(const std::string& script) {
    const auto [status, output] = testing::runProgram({"/bin/sh", "-c", script});
    EXPECT_EQ(status, 0) << script;
    return output;
}

std::string callService(const std::string& method, const std::string& arguments) {
    return shell(
        "gdbus call --session -d org.freedesktop.secrets -o /org/freedesktop/secrets -m org.freedesktop.Secret.Service."
        + method + " " + arguments);
}

void lock(const std::string& collection) {
    callService("Lock", "\"['/org/freedesktop/secrets/collection/" + collection + "']\"");
}

// The keyring after a restart; the first one came with the private bus.
std::optional<Program> ownKeyring;

void stopKeyring() {
    if (ownKeyring)
        ownKeyring->kill();
    else
        shell("kill $TEST_SECRET_SERVICE_PID");
    const auto ask = "gdbus call --session -d org.freedesktop.DBus -o / -m org.freedesktop.DBus.NameHasOwner "
                     "org.freedesktop.secrets";
    ASSERT_TRUE(testing::eventually([ask] { return shell(ask) == "(false,)\n"; }));
}

// In place of the one that may run, with its usual store unlocked or as other switches and variables say.
void startKeyring(const std::string& switches = "--unlock", const Words& variables = {}) {
    stopKeyring();
    ownKeyring.emplace(
        Words{
            "/bin/sh", "-c",
            "printf test > $HOME/password; exec gnome-keyring-daemon --foreground --components=secrets " + switches
                + " < $HOME/password 2> /dev/null"},
        variables);
    shell("gdbus wait --session --timeout 20 org.freedesktop.secrets");
}

// A line for each matching item, with all but its secret.
std::string lookUp(const SecretItem& item) {
    return callService(
        "SearchItems", "\"{'service': '" + item.service + "', 'account': '" + item.account
                           + R"('}" | grep -o "/org[^']*" | while read path; do gdbus call --session )"
                             "-d org.freedesktop.secrets -o $path -m org.freedesktop.DBus.Properties.GetAll "
                             "org.freedesktop.Secret.Item; done");
}

// Items that another program made, with an attribute and a schema of its own.
const SecretSchema* notes() {
    static const SecretSchema* const schema = secret_schema_new(
        "org.example.Notes", SECRET_SCHEMA_NONE, "service", SECRET_SCHEMA_ATTRIBUTE_STRING, "account",
        SECRET_SCHEMA_ATTRIBUTE_STRING, "note", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return schema;
}

void storeElsewhere(const SecretItem& item, const char* secret) {
    ASSERT_TRUE(secret_password_store_sync(
        notes(), nullptr, "Made elsewhere", secret, nullptr, nullptr, "service", item.service.c_str(), "account",
        item.account.c_str(), "note", "mine", nullptr));
}

std::string takeElsewhere(const SecretItem& item) {
    gchar* secret = secret_password_lookup_sync(notes(), nullptr, nullptr, "account", item.account.c_str(), nullptr);
    const std::string taken = secret == nullptr ? "nothing" : secret;
    secret_password_free(secret);
    secret_password_clear_sync(notes(), nullptr, nullptr, "account", item.account.c_str(), nullptr);
    return taken;
}

template <class Call>
std::string failure(Call attempt) {
    try {
        attempt();
    } catch (const SecretServiceError& error) {
        return error.what();
    }
    return "no failure";
}

class SecretServiceTest : public PrivateSecretService {
protected:
    static SecretItem freshItem() { return {"org.example.test", Uuid::random().text()}; }

    void TearDown() override {
        startKeyring();
        secret_service_disconnect();
    }

    const SecretItem item = freshItem();
};

TEST_F(SecretServiceTest, SecretComesBackByteForByte) {
    for (const std::string& secret :
         {"plain"s, ""s, "p\u00E4ss \U0001F511"s, "\xFF\x01 \n"s, "a\0b"s, std::string(5000, 'x')}) {
        const SecretItem one = freshItem();
        addSecret(one, "label", secret);
        EXPECT_EQ(findSecret(one), secret);
    }
}

TEST_F(SecretServiceTest, NoOldCopyOfAPasswordSurvives) {
    storeElsewhere(item, "old");
    EXPECT_TRUE(updateSecret(item, "newer"));
    EXPECT_EQ(findSecret(item), "newer");
    EXPECT_EQ(std::ranges::count(lookUp(item), '\n'), 1);
    addSecret(item, "A label", "old");
    EXPECT_TRUE(updateSecret(item, "new"));
    const auto items = lookUp(item);
    EXPECT_EQ(std::ranges::count(items, '\n'), 2) << items;
    for (const auto* part : {"'Label': <'A label'>", "'Label': <'Made elsewhere'>", "'note': 'mine'"}) {
        EXPECT_NE(items.find(part), std::string::npos) << part << " in " << items;
    }
    EXPECT_EQ(takeElsewhere(item), "new");
    EXPECT_EQ(findSecret(item), "new");
    storeElsewhere(item, "other");
    EXPECT_TRUE(removeSecret(item));
    EXPECT_EQ(lookUp(item), "");
}

TEST_F(SecretServiceTest, MissingItemIsNoErrorAndOthersStay) {
    const SecretItem other = freshItem();
    addSecret(other, "label", "other");
    EXPECT_FALSE(findSecret(item));
    EXPECT_FALSE(updateSecret(item, "new"));
    EXPECT_FALSE(removeSecret(item));
    EXPECT_EQ(findSecret(other), "other");
}

TEST_F(SecretServiceTest, LockedStoreNeverReadsAsEmpty) {
    addSecret(item, "label", "secret");
    lock("login");
    EXPECT_EQ(failure([&] { return findSecret(item); }), locked);
    EXPECT_EQ(failure([&] { return updateSecret(item, "new"); }), locked);
    EXPECT_EQ(failure([&] { return removeSecret(item); }), locked);
    EXPECT_EQ(failure([&] { return addSecret(item, "label", "new"); }), locked);
    EXPECT_EQ(failure([&] { return findSecret(freshItem()); }), locked);
    startKeyring();
    EXPECT_EQ(findSecret(item), "secret");
    EXPECT_EQ(std::ranges::count(lookUp(item), '\n'), 1);
}

TEST_F(SecretServiceTest, UnlockedStoreIsSearchedAgain) {
    // The keyring unlocks a collection without a password whenever it is asked to, with no prompt.
    const testing::TemporaryFolder data;
    testing::writeTree(data / "keyrings", {{"open.keyring", "[keyring]\ndisplay-name=Open\n"}, {"default", "open"}});
    startKeyring("", {"XDG_DATA_HOME=" + data.path().string()});
    lock("open");
    EXPECT_FALSE(findSecret(item));
    addSecret(item, "label", "secret");
    lock("open");
    EXPECT_EQ(findSecret(item), "secret");
    lock("open");
    EXPECT_TRUE(updateSecret(item, "new"));
    // Items of a locked collection count although another one is the default.
    callService("SetAlias", "default /org/freedesktop/secrets/collection/session");
    lock("open");
    EXPECT_TRUE(removeSecret(item));
}

TEST_F(SecretServiceTest, RestartedServiceIsFoundAgainAndAMissingOneNamed) {
    addSecret(item, "label", "secret");
    startKeyring();
    EXPECT_EQ(findSecret(item), "secret");
    stopKeyring();
    EXPECT_EQ(failure([&] { return findSecret(item); }), noService);
    EXPECT_EQ(failure([&] { return addSecret(item, "label", "new"); }), noService);
    startKeyring();
    EXPECT_TRUE(updateSecret(item, "new"));
    startKeyring();
    EXPECT_EQ(findSecret(item), "new");
}

TEST_F(SecretServiceTest, ServiceWithoutACollectionIsNamed) {
    const testing::TemporaryFolder data;
    startKeyring("", {"XDG_DATA_HOME=" + data.path().string()});
    EXPECT_FALSE(findSecret(item));
    EXPECT_EQ(
        failure([&] { return addSecret(item, "label", "new"); }),
        "The secret service has no collection to keep passwords in");
}

// Prints what a search on this bus says.
void searchOn(const std::string& bus) {
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.c_str(), 1);
    std::cerr << failure([] { return findSecret({"org.example.test", "account"}); }) << '|';
}

// In a process of its own, since a process keeps to the bus that it met first.
TEST_F(SecretServiceTest, MissingBusIsNamedAndLosingItDoesNotEndTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto lose = [] {
        searchOn("unix:path=/nonexistent");
        Program bus(Words{
            "/bin/sh", "-c",
            "exec '" ZEMBRASTEL_SOURCE_DIR
            "/tests/support/with_user_name' dbus-daemon --nofork --nopidfile --print-address "
            "--config-file=\"$HOME/bus.conf\" 2> /dev/null"});
        const auto address = bus.readLine(std::chrono::seconds(20));
        searchOn(address);
        GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        bool closed = false;
        const auto notice =
            +[](GDBusConnection*, gboolean, GError*, gpointer state) { *static_cast<bool*>(state) = true; };
        g_signal_connect(connection, "closed", G_CALLBACK(notice), &closed);
        bus.kill();
        while (!closed) g_main_context_iteration(nullptr, TRUE); // where GLib would end the program
        g_object_unref(connection);
        searchOn(address);
        std::exit(0);
    };
    EXPECT_EXIT(lose(), ::testing::ExitedWithCode(0), "^" + noBus + "[|]" + noService + "[|]" + noBus + "[|]$");
}

} // namespace
} // namespace zembrastel
