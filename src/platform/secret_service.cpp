#include "platform/secret_service.h"

#include <gio/gio.h>
#include <libsecret/secret.h>
#include <memory>
#include <vector>

namespace zembrastel {
namespace {

// libsecret has a type of the same name.
using StoredItem = ::SecretItem;

struct Unref {
    template <class Object>
    void operator()(Object* object) const {
        g_object_unref(object);
    }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(SecretValue* value) const { secret_value_unref(value); }
    void operator()(GList* list) const { g_list_free(list); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Unref>;

// No process owns the service's name on the bus, or another one than before does.
class ServiceMissing : public SecretServiceError {
public:
    explicit ServiceMissing(int status) : SecretServiceError(status, "No secret service is running") {}
};

SecretServiceError storeLocked() { return {SECRET_ERROR_IS_LOCKED, "The secret store is locked and was not unlocked"}; }

SecretServiceError busMissing(int status) {
    return {status, "No secret service is running, since there is no session bus"};
}

// Receives the error of a call.
class Failure {
public:
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() { g_clear_error(&error); }

    [[nodiscard]] GError** slot() { return &error; }

    // Throws the error, if there is one, as the exception that it means here.
    void check() const {
        if (error == nullptr) return;
        if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)) throw ServiceMissing(error->code);
        if (g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED)) throw storeLocked();
        g_dbus_error_strip_remote_error(error); // users need not see the name of the remote exception
        throw SecretServiceError(error->code, error->message);
    }

    // The same for storing, where a missing object can only be the collection.
    void checkStore() const {
        if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD)) {
            throw SecretServiceError(error->code, "The secret service has no collection to keep passwords in");
        }
        check();
    }

    // The same where any error means that there is no bus.
    void checkBus() const {
        if (error != nullptr) throw busMissing(error->code);
    }

private:
    GError* error = nullptr;
};

struct Connection {
    Owned<GDBusConnection> bus;
    Owned<SecretService> service;
};

Connection connect() {
    Connection connection;
    Failure busFailure;
    connection.bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, busFailure.slot()));
    busFailure.checkBus();
    g_dbus_connection_set_exit_on_close(connection.bus.get(), FALSE); // losing the bus must not end the program
    if (g_dbus_connection_is_closed(connection.bus.get()) != FALSE) throw busMissing(G_IO_ERROR_CLOSED);
    Failure failure;
    connection.service.reset(secret_service_get_sync(SECRET_SERVICE_NONE, nullptr, failure.slot()));
    failure.check();
    return connection;
}

// After a failure the service's address and the session for encrypted transfer are discarded: both change with a
// restart of the service.
template <class Operation>
auto attempt(Operation operation) {
    try {
        return operation(connect().service.get());
    } catch (const SecretServiceError&) {
        secret_service_disconnect();
        throw;
    }
}

template <class Operation>
auto onService(Operation operation) {
    try {
        return attempt(operation);
    } catch (const ServiceMissing&) { // or restarted, and at another address
        return attempt(operation);
    }
}

// Matches by the two attributes only, so that items of other tools are found as well.
const SecretSchema* schema() {
    static const SecretSchema generic = [] {
        SecretSchema built{};
        built.name = "org.freedesktop.Secret.Generic";
        built.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        built.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        built.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return built;
    }();
    return &generic;
}

Owned<GHashTable> attributesOf(const SecretItem& item) {
    return Owned<GHashTable>(
        secret_attributes_build(schema(), "service", item.service.c_str(), "account", item.account.c_str(), nullptr));
}

Owned<SecretValue> valueOf(const std::string& secret) {
    return Owned<SecretValue>(secret_value_new(secret.data(), static_cast<gssize>(secret.size()), "text/plain"));
}

using Items = std::vector<Owned<StoredItem>>;

bool isLocked(const Owned<StoredItem>& item) { return secret_item_get_locked(item.get()) != FALSE; }

// Never prompts: a locked item is returned without its secret, or not at all.
Items search(SecretService* service, const SecretItem& item) {
    const auto flags = static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
    const Owned<GHashTable> attributes = attributesOf(item);
    Failure failure;
    const Owned<GList> found(
        secret_service_search_sync(service, schema(), attributes.get(), flags, nullptr, failure.slot()));
    Items items;
    for (const GList* node = found.get(); node != nullptr; node = node->next) {
        items.emplace_back(static_cast<StoredItem*>(node->data));
    }
    failure.check();
    return items;
}

// nullopt if there is none.
Owned<SecretCollection> defaultCollection(SecretService* service) {
    Failure failure;
    Owned<SecretCollection> collection(secret_collection_for_alias_sync(
        service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, failure.slot()));
    failure.check();
    return collection;
}

// Asks the user to unlock these items and collections. A refusal, or a missing prompter, is no error.
void unlock(SecretService* service, GList* objects) {
    Failure failure;
    const gint unlocked = secret_service_unlock_sync(service, objects, nullptr, nullptr, failure.slot());
    failure.check();
    if (unlocked <= 0) throw storeLocked();
}

// The matching items, unlocked. A locked collection may hide its items, so an empty result is reliable only after
// unlocking.
Items find(SecretService* service, const SecretItem& item) {
    Items items = search(service, item);
    Owned<GList> locked;
    const auto add = [&locked](gpointer object) { locked.reset(g_list_prepend(locked.release(), object)); };
    for (const auto& candidate : items) {
        if (isLocked(candidate)) add(candidate.get());
    }
    if (!items.empty() && locked == nullptr) return items;
    const Owned<SecretCollection> collection = defaultCollection(service);
    if (collection != nullptr && secret_collection_get_locked(collection.get()) != FALSE) add(collection.get());
    if (locked == nullptr) return items;

    unlock(service, locked.get());
    items = search(service, item);
    for (const auto& candidate : items) {
        if (isLocked(candidate)) throw storeLocked();
    }
    return items;
}

} // namespace

bool updateSecret(const SecretItem& item, const std::string& secret) {
    return onService([&](SecretService* service) {
        const Items items = find(service, item);
        const Owned<SecretValue> value = valueOf(secret);
        for (const auto& found : items) {
            Failure failure;
            secret_item_set_secret_sync(found.get(), value.get(), nullptr, failure.slot());
            failure.check();
        }
        return !items.empty();
    });
}

void addSecret(const SecretItem& item, const std::string& label, const std::string& secret) {
    onService([&](SecretService* service) {
        const Owned<GHashTable> attributes = attributesOf(item);
        const Owned<SecretValue> value = valueOf(secret);
        Failure failure;
        secret_service_store_sync(
            service, schema(), attributes.get(), SECRET_COLLECTION_DEFAULT, label.c_str(), value.get(), nullptr,
            failure.slot());
        failure.checkStore();
    });
}

std::optional<std::string> findSecret(const SecretItem& item) {
    return onService([&](SecretService* service) -> std::optional<std::string> {
        const Items items = find(service, item);
        if (items.empty()) return std::nullopt;
        const Owned<SecretValue> value(secret_item_get_secret(items.front().get()));
        if (value == nullptr) throw SecretServiceError(0, "The secret service did not hand out the secret it holds");
        gsize size = 0;
        const gchar* bytes = secret_value_get(value.get(), &size);
        return std::string(bytes, size);
    });
}

bool removeSecret(const SecretItem& item) {
    return onService([&](SecretService* service) {
        const Items items = find(service, item);
        for (const auto& found : items) {
            Failure failure;
            secret_item_delete_sync(found.get(), nullptr, failure.slot());
            failure.check();
        }
        return !items.empty();
    });
}

} // namespace zembrastel
