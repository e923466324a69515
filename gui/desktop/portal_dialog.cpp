#include "gui/desktop/portal_dialog.hpp"

#include <gio/gio.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

#include "gui/desktop/portal_request.hpp"

namespace vanta::gui {
namespace {

constexpr char kService[] = "org.freedesktop.portal.Desktop";
constexpr char kObject[] = "/org/freedesktop/portal/desktop";
constexpr char kChooser[] = "org.freedesktop.portal.FileChooser";
constexpr char kRequest[] = "org.freedesktop.portal.Request";
/// Milliseconds. A portal may have to be started; one that is not there is known at once.
constexpr int kPatienceMs = 10000;
/// What has been asked for and cancelled is waited for no longer.
constexpr int kFarewellMs = 100;
/// Older ones give files where folders were asked for.
constexpr guint32 kFirstVersionWithFolders = 3;

/// Empty if there is none that could be used without starting it.
std::string busAddress() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address) return address;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (!runtime || !*runtime) return {};
    const std::string socket = std::string(runtime) + "/bus";
    std::error_code error;
    if (!std::filesystem::exists(socket, error)) return {};
    gchar* escaped = g_dbus_address_escape_value(socket.c_str());
    const std::string address = std::string("unix:path=") + escaped;
    g_free(escaped);
    return address;
}

}  // namespace

/// Everything is asked for without waiting, and answered in a context of its own. Answers that come after the
/// dialog has gone find it still here, as each holds it.
class PortalDialog::Conversation : public std::enable_shared_from_this<Conversation> {
public:
    explicit Conversation(FileQuestion question) : question_(std::move(question)) {}
    ~Conversation();

    void begin();
    void end();
    void iterate();

    State state = State::Open;
    std::string path;

private:
    using Handle = std::shared_ptr<Conversation>;
    using Step = void (Conversation::*)(GObject*, GAsyncResult*);

    /// For a callback that comes exactly once.
    gpointer hold() {
        ++pending_;
        return new Handle(shared_from_this());
    }
    template <Step step>
    static void answered(GObject* source, GAsyncResult* result, gpointer held) {
        const std::unique_ptr<Handle> self(static_cast<Handle*>(held));
        --(*self)->pending_;
        ((**self).*step)(source, result);
    }
    GVariant* reply(GAsyncResult* result);
    void call(const char* object, const char* interface, const char* method, GVariant* arguments,
              const char* replyType, GAsyncReadyCallback answer);
    guint subscribe(const char* sender, const char* interface, const char* signal, const char* object,
                    const char* firstArgument, GDBusSignalCallback callback);

    void connected(GObject*, GAsyncResult* result);
    void versionKnown(GObject*, GAsyncResult* result);
    void asked(GObject*, GAsyncResult* result);
    void flushed(GObject*, GAsyncResult*) {}
    void listenTo(const std::string& request);
    static void responded(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                          GVariant* arguments, gpointer self);
    static void ownerChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                             GVariant* arguments, gpointer self);
    void unavailable() {
        if (state == State::Open) state = State::Unavailable;
    }

    FileQuestion question_;
    GMainContext* context_ = g_main_context_new();
    GCancellable* cancel_ = g_cancellable_new();
    GDBusConnection* connection_ = nullptr;
    guint response_ = 0;
    guint owner_ = 0;
    std::string request_;  ///< empty until it has been made
    int pending_ = 0;      ///< callbacks that are to come
};

void PortalDialog::Conversation::begin() {
    const std::string address = busAddress();
    if (address.empty()) return unavailable();
    g_main_context_push_thread_default(context_);
    g_dbus_connection_new_for_address(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, cancel_, &answered<&Conversation::connected>, hold());
    g_main_context_pop_thread_default(context_);
}

void PortalDialog::Conversation::iterate() {
    g_main_context_push_thread_default(context_);
    while (g_main_context_iteration(context_, FALSE)) {
    }
    g_main_context_pop_thread_default(context_);
    if (connection_ && g_dbus_connection_is_closed(connection_)) unavailable();
}

void PortalDialog::Conversation::end() {
    g_main_context_push_thread_default(context_);
    const bool isAsking = connection_ && !request_.empty() && state == State::Open;
    state = State::Cancelled;
    g_cancellable_cancel(cancel_);
    if (isAsking) {
        g_dbus_connection_call(connection_, kService, request_.c_str(), kRequest, "Close", nullptr, nullptr,
                               G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
        g_dbus_connection_flush(connection_, nullptr, &answered<&Conversation::flushed>, hold());
    }
    for (int waited = 0; pending_ > 0 && waited < kFarewellMs; ++waited) {
        while (g_main_context_iteration(context_, FALSE)) {
        }
        if (pending_ > 0) ::poll(nullptr, 0, 1);
    }
    for (const guint subscription : {response_, owner_}) {
        if (subscription) g_dbus_connection_signal_unsubscribe(connection_, subscription);
    }
    response_ = owner_ = 0;
    // The subscriptions let go of us in the context.
    while (g_main_context_iteration(context_, FALSE)) {
    }
    g_main_context_pop_thread_default(context_);
}

PortalDialog::Conversation::~Conversation() {
    if (connection_) g_object_unref(connection_);
    g_object_unref(cancel_);
    g_main_context_unref(context_);
}

/// Null, and the end of the conversation, where there was an error.
GVariant* PortalDialog::Conversation::reply(GAsyncResult* result) {
    GVariant* values = g_dbus_connection_call_finish(connection_, result, nullptr);
    if (!values) unavailable();
    return values;
}

void PortalDialog::Conversation::call(const char* object, const char* interface, const char* method,
                                      GVariant* arguments, const char* replyType,
                                      GAsyncReadyCallback answer) {
    g_dbus_connection_call(connection_, kService, object, interface, method, arguments,
                           G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, kPatienceMs, cancel_, answer,
                           hold());
}

guint PortalDialog::Conversation::subscribe(const char* sender, const char* interface, const char* signal,
                                            const char* object, const char* firstArgument,
                                            GDBusSignalCallback callback) {
    return g_dbus_connection_signal_subscribe(
        connection_, sender, interface, signal, object, firstArgument, G_DBUS_SIGNAL_FLAGS_NONE, callback,
        new Handle(shared_from_this()), [](gpointer held) { delete static_cast<Handle*>(held); });
}

void PortalDialog::Conversation::connected(GObject*, GAsyncResult* result) {
    connection_ = g_dbus_connection_new_for_address_finish(result, nullptr);
    if (!connection_) return unavailable();
    if (state != State::Open) return;
    owner_ = subscribe("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                       "/org/freedesktop/DBus", kService, &Conversation::ownerChanged);
    call(kObject, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kChooser, "version"), "(v)",
         &answered<&Conversation::versionKnown>);
}

void PortalDialog::Conversation::versionKnown(GObject*, GAsyncResult* result) {
    GVariant* values = reply(result);
    if (!values) return;
    GVariant* version = nullptr;
    g_variant_get(values, "(v)", &version);
    const bool isKnown = g_variant_is_of_type(version, G_VARIANT_TYPE_UINT32);
    const guint32 number = isKnown ? g_variant_get_uint32(version) : 0;
    g_variant_unref(version);
    g_variant_unref(values);
    const bool fits = question_.kind != FileQuestion::Kind::Folder || number >= kFirstVersionWithFolders;
    if (!isKnown || !fits) return unavailable();
    if (state != State::Open) return;

    static std::atomic<int> count = 0;
    const std::string token = fmt::format("vanta{}_{}", getpid(), ++count);
    std::string sender = g_dbus_connection_get_unique_name(connection_) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    // Before the request is made, as an answer may come at once.
    listenTo(fmt::format("{}/request/{}/{}", kObject, sender, token));
    call(kObject, kChooser, portalMethod(question_), portalArguments(question_, token), "(o)",
         &answered<&Conversation::asked>);
}

void PortalDialog::Conversation::listenTo(const std::string& request) {
    if (response_) g_dbus_connection_signal_unsubscribe(connection_, response_);
    request_ = request;
    response_ =
        subscribe(kService, kRequest, "Response", request_.c_str(), nullptr, &Conversation::responded);
}

void PortalDialog::Conversation::asked(GObject*, GAsyncResult* result) {
    GVariant* values = reply(result);
    if (!values) return;
    const gchar* request = nullptr;
    g_variant_get(values, "(&o)", &request);
    // Portals of old choose a name of their own.
    if (state == State::Open && request_ != request) listenTo(request);
    g_variant_unref(values);
}

void PortalDialog::Conversation::responded(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                           const gchar*, GVariant* arguments, gpointer held) {
    Conversation& self = **static_cast<Handle*>(held);
    constexpr guint32 kChosen = 0;
    if (self.state != State::Open || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ua{sv})"))) return;
    guint32 response = 0;
    GVariant* results = nullptr;
    g_variant_get(arguments, "(u@a{sv})", &response, &results);
    if (response == kChosen) {
        self.path = pathOf(results);
        self.state = State::Accepted;
    } else {
        // 1 for Cancel, and 2 from desktops whose dialog was closed otherwise, by Escape say.
        self.state = State::Cancelled;
    }
    g_variant_unref(results);
}

void PortalDialog::Conversation::ownerChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                                              const gchar*, GVariant* arguments, gpointer held) {
    const gchar* now = nullptr;
    g_variant_get(arguments, "(&s&s&s)", nullptr, nullptr, &now);
    if (!*now) (*static_cast<Handle*>(held))->unavailable();
}

PortalDialog::PortalDialog(const FileQuestion& question)
    : conversation_(std::make_shared<Conversation>(question)) {
    conversation_->begin();
}

PortalDialog::~PortalDialog() {
    conversation_->end();
}

DesktopDialog::State PortalDialog::poll() {
    conversation_->iterate();
    return conversation_->state;
}

std::string PortalDialog::chosenPath() const {
    return conversation_->path;
}

}  // namespace vanta::gui
