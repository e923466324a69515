#include "tests/gui/fake_portal.hpp"

#include <gio/gio.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include <fmt/format.h>

namespace vanta::test {
namespace {

constexpr char kDescription[] = R"(<node>
  <interface name="org.freedesktop.portal.FileChooser">
    <method name="OpenFile"><arg type="s"/><arg type="s"/><arg type="a{sv}"/><arg type="o" direction="out"/></method>
    <method name="SaveFile"><arg type="s"/><arg type="s"/><arg type="a{sv}"/><arg type="o" direction="out"/></method>
    <property name="version" type="u" access="read"/>
  </interface>
  <interface name="org.freedesktop.portal.Request"><method name="Close"/></interface>
</node>)";
constexpr char kObject[] = "/org/freedesktop/portal/desktop";

}  // namespace

class FakePortal::Service {
public:
    explicit Service(Behaviour behaviour);
    ~Service();

    void stop();
    std::string method() const { return locked(method_); }
    std::string arguments() const { return locked(arguments_); }
    bool wasClosed() const { return closed_; }

private:
    std::string locked(const std::string& text) const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return text;
    }
    void run();
    static void called(GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar* method,
                       GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self);
    static GVariant* property(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                              GError**, gpointer self);
    void asked(const std::string& sender, const std::string& method, GVariant* arguments,
               GDBusMethodInvocation* invocation);

    Behaviour behaviour_;
    GTestDBus* bus_;
    GMainContext* context_;
    GMainLoop* loop_;
    GDBusConnection* connection_ = nullptr;
    GDBusNodeInfo* description_ = nullptr;
    std::atomic<bool> ready_ = false;
    std::atomic<bool> closed_ = false;
    mutable std::mutex mutex_;
    std::string method_;
    std::string arguments_;
    std::thread thread_;
};

FakePortal::Service::Service(Behaviour behaviour)
    : behaviour_(std::move(behaviour)),
      bus_(g_test_dbus_new(G_TEST_DBUS_NONE)),
      context_(g_main_context_new()),
      loop_(g_main_loop_new(context_, FALSE)) {
    g_test_dbus_up(bus_);
    thread_ = std::thread([this] { run(); });
    while (!ready_) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

FakePortal::Service::~Service() {
    stop();
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
    g_test_dbus_stop(bus_);
    g_object_unref(bus_);
}

void FakePortal::Service::stop() {
    if (!thread_.joinable()) return;
    g_main_loop_quit(loop_);
    thread_.join();
}

void FakePortal::Service::run() {
    g_main_context_push_thread_default(context_);
    connection_ = g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(bus_),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    description_ = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    static const GDBusInterfaceVTable kChooser{&Service::called, &Service::property, nullptr, {}};
    g_dbus_connection_register_object(connection_, kObject, description_->interfaces[0], &kChooser, this,
                                      nullptr, nullptr);
    g_variant_unref(g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                "org.freedesktop.DBus", "RequestName",
                                                g_variant_new("(su)", "org.freedesktop.portal.Desktop", 0u),
                                                nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    ready_ = true;
    g_main_loop_run(loop_);
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
    g_dbus_node_info_unref(description_);
    g_main_context_pop_thread_default(context_);
}

GVariant* FakePortal::Service::property(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                        const gchar*, GError**, gpointer self) {
    return g_variant_new_uint32(static_cast<Service*>(self)->behaviour_.version);
}

void FakePortal::Service::called(GDBusConnection*, const gchar* sender, const gchar*, const gchar*,
                                 const gchar* method, GVariant* arguments, GDBusMethodInvocation* invocation,
                                 gpointer self) {
    auto& portal = *static_cast<Service*>(self);
    if (std::string(method) == "Close") {
        portal.closed_ = true;
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        portal.asked(sender, method, arguments, invocation);
    }
}

void FakePortal::Service::asked(const std::string& sender, const std::string& method, GVariant* arguments,
                                GDBusMethodInvocation* invocation) {
    GVariant* options = g_variant_get_child_value(arguments, 2);
    const gchar* token = "";
    g_variant_lookup(options, "handle_token", "&s", &token);
    std::string client = sender.substr(1);
    std::replace(client.begin(), client.end(), '.', '_');
    const std::string request =
        fmt::format("{}/request/{}/{}", kObject, client, behaviour_.namesRequests ? "its_own" : token);
    g_variant_unref(options);
    gchar* printed = g_variant_print(arguments, FALSE);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        method_ = method;
        arguments_ = printed;
    }
    g_free(printed);
    static const GDBusInterfaceVTable kRequest{&Service::called, nullptr, nullptr, {}};
    g_dbus_connection_register_object(connection_, request.c_str(), description_->interfaces[1], &kRequest,
                                      this, nullptr, nullptr);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", request.c_str()));
    if (!behaviour_.answers) return;
    GVariantBuilder uris;
    g_variant_builder_init(&uris, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& uri : behaviour_.uris) g_variant_builder_add(&uris, "s", uri.c_str());
    GVariantBuilder results;
    g_variant_builder_init(&results, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&results, "{sv}", "uris", g_variant_builder_end(&uris));
    // One of old takes its time, or nobody could hear of its name before.
    if (behaviour_.namesRequests) std::this_thread::sleep_for(std::chrono::milliseconds(200));
    g_dbus_connection_emit_signal(connection_, sender.c_str(), request.c_str(),
                                  "org.freedesktop.portal.Request", "Response",
                                  g_variant_new("(ua{sv})", behaviour_.response, &results), nullptr);
}

FakePortal::FakePortal(Behaviour behaviour) : service_(std::make_unique<Service>(std::move(behaviour))) {}

FakePortal::~FakePortal() = default;

std::string FakePortal::method() const {
    return service_->method();
}

std::string FakePortal::arguments() const {
    return service_->arguments();
}

bool FakePortal::wasClosed() const {
    return service_->wasClosed();
}

void FakePortal::vanish() {
    service_->stop();
}

}  // namespace vanta::test
