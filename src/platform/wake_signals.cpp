#include "platform/wake_signals.h"

#include "platform/descriptor.h"

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <condition_variable>
#include <gio/gio.h>
#include <mutex>
#include <netdb.h>
#include <sys/socket.h>
#include <thread>
#include <utility>

namespace zembrastel {
namespace {

constexpr guint gatheringMilliseconds = 500;
constexpr std::chrono::milliseconds patience{500};

struct ReleaseObject {
    void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GSource* source) const { g_source_unref(source); }
};

template <class Object>
using OwnedObject = std::unique_ptr<Object, ReleaseObject>;

// True if the kernel has a route to this numeric address: connecting a datagram socket looks for one.
bool hasRouteTo(const char* address) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address, "21", &hints, &found) != 0) return false;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(found, &::freeaddrinfo);
    const Descriptor probe(::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return probe && ::connect(probe.get(), found->ai_addr, found->ai_addrlen) == 0;
}

bool isAddress(const std::string& host) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return ::inet_pton(AF_INET, host.c_str(), bytes.data()) == 1
           || ::inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

} // namespace

bool hasNetworkFor(const std::string& host) {
    if (isAddress(host)) return hasRouteTo(host.c_str());
    if (host == "localhost") return true;
    // Addresses for documentation stand for any host on the internet.
    return hasRouteTo("192.0.2.1") || hasRouteTo("2001:db8::1");
}

// The thread holds it too, and may outlive the object that started it.
class WakeSignals::Listener {
public:
    explicit Listener(std::function<void()> called) : report(std::move(called)) {}

    static void start(const std::shared_ptr<Listener>& listener) {
        listener->thread = std::thread([listener] { listener->listen(); });
    }

    void stop() {
        std::unique_lock lock(mutex);
        stopping = true;
        g_cancellable_cancel(cancellable.get());
        g_main_context_wakeup(context.get());
        const bool inTime = changed.wait_for(lock, patience, [this] { return ended; });
        lock.unlock();
        inTime ? thread.join() : thread.detach();
    }

private:
    struct UnrefCancellable {
        void operator()(GCancellable* object) const { g_object_unref(object); }
    };

    void listen() {
        g_main_context_push_thread_default(context.get());
        const OwnedObject<GDBusConnection> bus = listenToSleep();
        if (!isStopping()) listenToNetwork();
        while (!isStopping()) g_main_context_iteration(context.get(), TRUE);
        leave(bus.get());
        g_main_context_pop_thread_default(context.get());
        const std::lock_guard lock(mutex);
        ended = true;
        changed.notify_all();
    }

    [[nodiscard]] bool isStopping() {
        const std::lock_guard lock(mutex);
        return stopping;
    }

    OwnedObject<GDBusConnection> listenToSleep() {
        OwnedObject<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, cancellable.get(), nullptr));
        if (bus == nullptr) return nullptr;
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE); // losing the bus must not end the program
        const auto prepareForSleep = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                                        GVariant* values, gpointer self) {
            gboolean goingToSleep = TRUE;
            if (g_variant_is_of_type(values, G_VARIANT_TYPE("(b)")) != FALSE) {
                g_variant_get(values, "(b)", &goingToSleep);
            }
            if (goingToSleep == FALSE) static_cast<Listener*>(self)->gather();
        };
        subscription = g_dbus_connection_signal_subscribe(
            bus.get(), "org.freedesktop.login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
            "/org/freedesktop/login1", nullptr, G_DBUS_SIGNAL_FLAGS_NONE, prepareForSleep, this, nullptr);
        return bus;
    }

    void listenToNetwork() {
        monitor = g_network_monitor_get_default();
        connectivity = g_network_monitor_get_connectivity(monitor);
        // Which of them arrives depends on GIO's network backend.
        const auto networkChanged = +[](GNetworkMonitor* source, gboolean, gpointer self) {
            static_cast<Listener*>(self)->take(g_network_monitor_get_connectivity(source));
        };
        const auto connectivityChanged = +[](GNetworkMonitor* source, GParamSpec*, gpointer self) {
            static_cast<Listener*>(self)->take(g_network_monitor_get_connectivity(source));
        };
        g_signal_connect(monitor, "network-changed", G_CALLBACK(networkChanged), this);
        g_signal_connect(monitor, "notify::connectivity", G_CALLBACK(connectivityChanged), this);
    }

    // Only if more can be reached than before: routes also change without that, above all with containers.
    void take(GNetworkConnectivity now) {
        if (std::exchange(connectivity, now) < now) gather();
    }

    void gather() {
        if (std::exchange(gathering, true)) return;
        const OwnedObject<GSource> timer(g_timeout_source_new(gatheringMilliseconds));
        const auto due = [](gpointer self) -> gboolean {
            static_cast<Listener*>(self)->reportOnce();
            return G_SOURCE_REMOVE;
        };
        g_source_set_callback(timer.get(), due, this, nullptr);
        g_source_attach(timer.get(), context.get());
    }

    // Under the lock, so that no call begins after stop().
    void reportOnce() {
        gathering = false;
        const std::lock_guard lock(mutex);
        if (!stopping) report();
    }

    void leave(GDBusConnection* bus) {
        if (monitor != nullptr) g_signal_handlers_disconnect_by_data(monitor, this);
        if (bus != nullptr) g_dbus_connection_signal_unsubscribe(bus, subscription);
    }

    const std::function<void()> report;
    const std::unique_ptr<GCancellable, UnrefCancellable> cancellable{g_cancellable_new()};
    const OwnedObject<GMainContext> context{g_main_context_new()};
    std::mutex mutex;
    std::condition_variable changed;
    bool stopping = false;
    bool ended = false;
    std::thread thread;
    // Used by the thread only.
    guint subscription = 0;
    GNetworkMonitor* monitor = nullptr;
    GNetworkConnectivity connectivity = G_NETWORK_CONNECTIVITY_LOCAL;
    bool gathering = false;
};

WakeSignals::WakeSignals(std::function<void()> report) : listener(std::make_shared<Listener>(std::move(report))) {
    Listener::start(listener);
}

WakeSignals::~WakeSignals() { listener->stop(); }

} // namespace zembrastel
