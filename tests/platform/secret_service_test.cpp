#include "platform/secret_service.h"

#include "platform/child_process.h"
#include "platform/descriptor.h"
#include "platform/uuid.h"
#include "support/private_secret_service.h"

#include <csignal>
#include <fcntl.h>
#include <gio/gio.h>
#include <iostream>
#include <libsecret/secret.h>
#include <map>
#include <memory>
#include <unistd.h>

namespace zembrastel {
namespace {

using namespace std::string_literals;

constexpr const char* serviceName = "org.freedesktop.secrets";
constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";
constexpr const char* keyringInterface = "org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface";
constexpr const char* loginCollection = "/org/freedesktop/secrets/collection/login";
constexpr std::string_view loginPassword = "test";

constexpr const char* lockedMessage = "The secret store is locked and was not unlocked";
constexpr const char* noServiceMessage = "No secret service is running";
constexpr const char* noBusMessage = "No secret service is running, since there is no session bus";

using Variant = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

void require(GError* error) {
    if (error != nullptr) throw std::runtime_error(error->message);
}

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr) throw std::runtime_error(std::string(name) + " is not set");
    return value;
}

Variant callService(const char* interface, const char* method, GVariant* arguments) {
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    require(error);
    Variant answer(
        g_dbus_connection_call_sync(
            bus, serviceName, "/org/freedesktop/secrets", interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
            -1, nullptr, &error),
        g_variant_unref);
    g_object_unref(bus);
    require(error);
    return answer;
}

void lock(const char* collection) {
    const gchar* paths[] = {collection};
    callService(serviceInterface, "Lock", g_variant_new("(@ao)", g_variant_new_objv(paths, 1)));
}

// A collection's password as the keyring takes it without a prompt.
GVariant* masterPassword(std::string_view text) {
    const Variant opened =
        callService(serviceInterface, "OpenSession", g_variant_new("(sv)", "plain", g_variant_new_string("")));
    const gchar* session = nullptr;
    g_variant_get_child(opened.get(), 1, "&o", &session);
    const auto bytes = [](std::string_view from) {
        return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, from.data(), from.size(), 1);
    };
    return g_variant_new("(o@ay@ays)", session, bytes(""), bytes(text), "text/plain");
}

void unlockLogin() {
    callService(
        keyringInterface, "UnlockWithMasterPassword",
        g_variant_new("(o@(oayays))", loginCollection, masterPassword(loginPassword)));
}

void setDefaultCollection(const std::string& collection) {
    callService(serviceInterface, "SetAlias", g_variant_new("(so)", "default", collection.c_str()));
}

// The keyring unlocks a collection without a password whenever it is asked to, with no prompt.
std::string makeCollectionWithoutPassword() {
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Collection.Label", g_variant_new_string("Open"));
    const Variant made = callService(
        keyringInterface, "CreateWithMasterPassword",
        g_variant_new("(a{sv}@(oayays))", &properties, masterPassword("")));
    const gchar* path = nullptr;
    g_variant_get(made.get(), "(&o)", &path);
    return path;
}

// Blocks until the service's name has an owner on the bus, or has none.
void awaitService(bool wanted) {
    std::optional<bool> present;
    GMainContext* context = g_main_context_new();
    g_main_context_push_thread_default(context);
    const guint watch = g_bus_watch_name(
        G_BUS_TYPE_SESSION, serviceName, G_BUS_NAME_WATCHER_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, const gchar*, gpointer state) {
            *static_cast<std::optional<bool>*>(state) = true;
        },
        [](GDBusConnection*, const gchar*, gpointer state) { *static_cast<std::optional<bool>*>(state) = false; },
        &present, nullptr);
    while (present != wanted) g_main_context_iteration(context, TRUE);
    g_bus_unwatch_name(watch);
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
}

// The running keyring: at first the one that came with the private bus, after a restart a child of this program.
class Keyring {
public:
    static void stop() {
        if (own()) {
            own()->terminate();
            own()->wait();
            own()->collect();
            own().reset();
        } else {
            kill(std::stoi(environment("TEST_SECRET_SERVICE_PID")), SIGTERM);
        }
        awaitService(false);
    }

    static void start(std::vector<std::string> arguments = {"--foreground", "--components=secrets", "--unlock"}) {
        const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
        own() = std::make_unique<ChildProcess>(ChildProcess::Command{
            .executable = "/usr/bin/gnome-keyring-daemon",
            .arguments = std::move(arguments),
            .output = nowhere.get(),
            .errors = nowhere.get()});
        own()->start();
        (void)own()->writeInput(loginPassword); // read only when unlocking
        own()->closeInput();
        awaitService(true);
    }

private:
    static std::unique_ptr<ChildProcess>& own() {
        static std::unique_ptr<ChildProcess> process;
        return process;
    }
};

// What another program sees of the matching items.
struct Seen {
    std::string label;
    std::string secret;
    std::map<std::string, std::string> attributes;
};

const SecretSchema* otherSchema() {
    static const SecretSchema schema = [] {
        SecretSchema built{};
        built.name = "org.example.Notes";
        for (std::size_t i = 0; const char* name : {"service", "account", "note"}) {
            built.attributes[i++] = {name, SECRET_SCHEMA_ATTRIBUTE_STRING};
        }
        return built;
    }();
    return &schema;
}

Seen look(::SecretItem* item) {
    Seen seen;
    gchar* label = secret_item_get_label(item);
    seen.label = label;
    g_free(label);
    SecretValue* secret = secret_item_get_secret(item);
    seen.secret = secret_value_get_text(secret);
    secret_value_unref(secret);
    GHashTable* attributes = secret_item_get_attributes(item);
    GHashTableIter iterator;
    gpointer key = nullptr;
    gpointer value = nullptr;
    g_hash_table_iter_init(&iterator, attributes);
    while (g_hash_table_iter_next(&iterator, &key, &value) != FALSE) {
        seen.attributes[static_cast<const char*>(key)] = static_cast<const char*>(value);
    }
    g_hash_table_unref(attributes);
    return seen;
}

std::vector<Seen> lookUp(const SecretItem& item) {
    GError* error = nullptr;
    GHashTable* attributes = secret_attributes_build(
        otherSchema(), "service", item.service.c_str(), "account", item.account.c_str(), nullptr);
    const auto flags = static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
    GList* found = secret_service_search_sync(nullptr, nullptr, attributes, flags, nullptr, &error);
    g_hash_table_unref(attributes);
    require(error);
    std::vector<Seen> all;
    for (const GList* node = found; node != nullptr; node = node->next) {
        all.push_back(look(static_cast<::SecretItem*>(node->data)));
    }
    g_list_free_full(found, g_object_unref);
    return all;
}

// Stores the item as another program would, with an attribute and a schema of its own.
void storeElsewhere(const SecretItem& item, const char* secret) {
    GError* error = nullptr;
    secret_password_store_sync(
        otherSchema(), nullptr, "Made elsewhere", secret, nullptr, &error, "service", item.service.c_str(), "account",
        item.account.c_str(), "note", "mine", nullptr);
    require(error);
}

template <class Call>
std::string failure(Call call) {
    try {
        call();
    } catch (const SecretServiceError& error) {
        return error.what();
    }
    return "no failure";
}

class SecretServiceTest : public PrivateSecretService {
protected:
    const SecretItem item = freshItem();

    static SecretItem freshItem() { return {"org.example.test", Uuid::random().text()}; }

    void TearDown() override { unlockLogin(); }
};

TEST_F(SecretServiceTest, SecretComesBackByteForByte) {
    for (const std::string& secret : {"plain"s, ""s, "p\u00E4ss \U0001F511"s, "\xFF\x01 \n"s, std::string(5000, 'x')}) {
        const SecretItem one = freshItem();
        addSecret(one, "label", secret);
        EXPECT_EQ(findSecret(one), secret);
    }
}

TEST_F(SecretServiceTest, ReplacingKeepsOneItemWithItsLabelAndAttributes) {
    storeElsewhere(item, "old");
    EXPECT_TRUE(updateSecret(item, "new"));
    EXPECT_EQ(findSecret(item), "new");
    const std::vector<Seen> items = lookUp(item);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].label, "Made elsewhere");
    EXPECT_EQ(items[0].attributes.at("note"), "mine");
}

TEST_F(SecretServiceTest, NewItemIsFoundByItsTwoAttributesAndLabel) {
    addSecret(item, "A label", "secret");
    const std::vector<Seen> items = lookUp(item);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].label, "A label");
    EXPECT_EQ(items[0].attributes.at("service"), item.service);
    EXPECT_EQ(items[0].attributes.at("account"), item.account);
}

TEST_F(SecretServiceTest, NoCopyOfAnOldSecretSurvives) {
    addSecret(item, "label", "old");
    storeElsewhere(item, "older");
    ASSERT_EQ(lookUp(item).size(), 2U);
    EXPECT_TRUE(updateSecret(item, "new"));
    for (const Seen& copy : lookUp(item)) EXPECT_EQ(copy.secret, "new") << copy.label;
    EXPECT_TRUE(removeSecret(item));
    EXPECT_TRUE(lookUp(item).empty());
}

TEST_F(SecretServiceTest, MissingItemIsNoErrorAndOthersAreLeftAlone) {
    const SecretItem other = freshItem();
    addSecret(other, "label", "other");
    EXPECT_FALSE(findSecret(item));
    EXPECT_FALSE(updateSecret(item, "new"));
    EXPECT_FALSE(removeSecret(item));
    EXPECT_EQ(findSecret(other), "other");
}

TEST_F(SecretServiceTest, LockedStoreNeverReadsAsEmpty) {
    addSecret(item, "label", "secret");
    lock(loginCollection);
    EXPECT_EQ(failure([&] { (void)findSecret(item); }), lockedMessage);
    EXPECT_EQ(failure([&] { (void)updateSecret(item, "new"); }), lockedMessage);
    EXPECT_EQ(failure([&] { removeSecret(item); }), lockedMessage);
    EXPECT_EQ(failure([&] { addSecret(item, "label", "new"); }), lockedMessage);
    EXPECT_EQ(failure([&] { (void)findSecret(freshItem()); }), lockedMessage);
    unlockLogin();
    EXPECT_EQ(findSecret(item), "secret");
    EXPECT_EQ(lookUp(item).size(), 1U);
}

TEST_F(SecretServiceTest, LockedStoreThatLetsItselfBeUnlockedIsSearchedAgain) {
    const std::string collection = makeCollectionWithoutPassword();
    setDefaultCollection(collection);
    addSecret(item, "label", "secret");
    lock(collection.c_str());
    EXPECT_EQ(findSecret(item), "secret");
    lock(collection.c_str());
    EXPECT_TRUE(updateSecret(item, "new"));
    lock(collection.c_str());
    EXPECT_FALSE(findSecret(freshItem()));
    // Items of a locked collection count although another one is the default.
    setDefaultCollection(loginCollection);
    lock(collection.c_str());
    EXPECT_TRUE(removeSecret(item));
}

TEST_F(SecretServiceTest, RestartedServiceIsFoundAgainAndAMissingOneNamed) {
    addSecret(item, "label", "secret");
    Keyring::stop();
    Keyring::start();
    EXPECT_EQ(findSecret(item), "secret");
    Keyring::stop();
    EXPECT_EQ(failure([&] { (void)findSecret(item); }), noServiceMessage);
    EXPECT_EQ(failure([&] { addSecret(item, "label", "new"); }), noServiceMessage);
    Keyring::start();
    EXPECT_TRUE(updateSecret(item, "new"));
    Keyring::stop();
    Keyring::start();
    EXPECT_EQ(findSecret(item), "new");
}

TEST_F(SecretServiceTest, ServiceThatWasNeverSetUpIsNamedAsThat) {
    const std::string dataFolder = environment("XDG_DATA_HOME");
    Keyring::stop();
    setenv("XDG_DATA_HOME", (dataFolder + "/unused").c_str(), 1);
    Keyring::start({"--foreground", "--components=secrets"});
    EXPECT_FALSE(findSecret(item));
    EXPECT_EQ(
        failure([&] { addSecret(item, "label", "new"); }), "The secret service has no collection to keep passwords in");
    Keyring::stop();
    setenv("XDG_DATA_HOME", dataFolder.c_str(), 1);
    Keyring::start();
}

// Each of the following two runs in a process of its own, since a process keeps to the bus that it met first.
class SecretServiceOnAnotherBus : public PrivateSecretService {
protected:
    void SetUp() override {
        PrivateSecretService::SetUp();
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    // Prints what a search says.
    static void search() {
        std::cerr << failure([] { (void)findSecret({"org.example.test", "account"}); }) << '|';
    }
};

void useBus(const std::string& address) { setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1); }

TEST_F(SecretServiceOnAnotherBus, MissingBusIsNamed) {
    const auto withoutBus = [] {
        useBus("unix:path=/nonexistent");
        search();
        std::exit(0);
    };
    EXPECT_EXIT(withoutBus(), testing::ExitedWithCode(0), "^"s + noBusMessage + "[|]$");
}

// A bus without any service, and the pipe on which its daemon says that it is ready.
class EmptyBus {
public:
    EmptyBus() : address("unix:path=" + environment("XDG_RUNTIME_DIR") + "/empty-bus") {
        int ends[2]{};
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        const Descriptor reading(ends[0]);
        {
            const Descriptor writing(ends[1]);
            const Descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
            daemon = std::make_unique<ChildProcess>(ChildProcess::Command{
                .executable = "/usr/bin/dbus-daemon",
                .arguments =
                    {"--nofork", "--nopidfile", "--print-address", "--address=" + address,
                     "--config-file=" + environment("HOME") + "/bus.conf"},
                .output = writing.get(),
                .errors = nowhere.get()});
            daemon->start();
        }
        char byte = 0;
        if (read(reading.get(), &byte, 1) != 1) throw std::runtime_error("no bus");
    }

    void end() const {
        daemon->terminate();
        daemon->wait();
    }

    const std::string address;

private:
    std::unique_ptr<ChildProcess> daemon;
};

TEST_F(SecretServiceOnAnotherBus, LosingTheBusDoesNotEndTheProgram) {
    const auto losing = [] {
        const EmptyBus bus;
        useBus(bus.address);
        search();
        GDBusConnection* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
        bool closed = false;
        g_signal_connect(
            connection, "closed",
            G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer state) { *static_cast<bool*>(state) = true; }),
            &closed);
        bus.end();
        while (!closed) g_main_context_iteration(nullptr, TRUE); // where GLib would end the program
        g_object_unref(connection);
        search();
        std::exit(0);
    };
    EXPECT_EXIT(losing(), testing::ExitedWithCode(0), "^"s + noServiceMessage + "[|]" + noBusMessage + "[|]$");
}

} // namespace
} // namespace zembrastel
