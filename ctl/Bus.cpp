// Calls are made without blocking the thread and waited for on the default main context: an interruption
// is seen at once, and signals come in between.
#include "Bus.h"

#include <utility>

#include "Failure.h"
#include "Interruption.h"

namespace ctl {

namespace {

constexpr const char* NAME = "com.norvane.portmeld";
constexpr const char* PATH = "/com/norvane/portmeld";
constexpr const char* INTERFACE = "com.norvane.portmeld";

constexpr const char* BUS_NAME = "org.freedesktop.DBus";
constexpr const char* BUS_PATH = "/org/freedesktop/DBus";

constexpr const char* HOW_TO_START = "start it, for example with \"systemctl start portmeld@USER\"";

std::string secondsText(double seconds) {
    g_autofree char* text = g_strdup_printf("%g s", seconds);
    return text;
}

/// What the peer or the library says, without the error's name on the bus in front.
std::string wordsOf(const GError* error) {
    g_autoptr(GError) copy = g_error_copy(error);
    (void)g_dbus_error_strip_remote_error(copy);
    return copy->message;
}

bool isOneOf(const GError* error, GQuark domain, std::initializer_list<int> codes) {
    for (const int code : codes) {
        if (g_error_matches(error, domain, code) != FALSE) {
            return true;
        }
    }
    return false;
}

}  // namespace

/// An operation that GIO carries out; its callback fills this in.
struct Bus::Pending {
    std::unique_ptr<GCancellable, ObjectDeleter> cancellable{g_cancellable_new()};
    bool done = false;
    GObject* connection = nullptr;  ///< owned by who takes it
    Values values;
    GError* error = nullptr;

    Pending() = default;
    ~Pending() { g_clear_error(&error); }
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    static void connected(GObject*, GAsyncResult* result, void* data) {
        auto& self = *static_cast<Pending*>(data);
        GDBusConnection* const made = g_dbus_connection_new_for_address_finish(result, &self.error);
        self.connection = made != nullptr ? G_OBJECT(made) : nullptr;
        self.done = true;
    }

    static void answered(GObject* source, GAsyncResult* result, void* data) {
        auto& self = *static_cast<Pending*>(data);
        self.values.reset(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &self.error));
        self.done = true;
    }

    static gboolean tookTooLong(void* data) {
        g_cancellable_cancel(static_cast<Pending*>(data)->cancellable.get());
        return G_SOURCE_CONTINUE;
    }
};

Bus::Bus(const Options& options)
    : address_(options.bus), clientId_(options.clientId), timeout_(options.timeout) {
    watchForInterruption();
    connect();
    findDaemon();
    subscribe();
}

Bus::~Bus() {
    if (registered_ && !daemonLeft_ && g_dbus_connection_is_closed(connection_.get()) == FALSE) {
        disconnect();
    }
    for (const unsigned subscription : subscriptions_) {
        g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
    }
}

/// Nobody waits for the answer: a daemon that is stuck must not keep this process.
void Bus::disconnect() {
    const std::unique_ptr<GDBusMessage, ObjectDeleter> message(
        g_dbus_message_new_method_call(daemon_.c_str(), PATH, INTERFACE, "DisConnect"));
    g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED);
    g_dbus_message_set_body(message.get(), g_variant_new("(i)", clientId_));
    (void)g_dbus_connection_send_message(connection_.get(), message.get(),
                                         G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    (void)g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
}

/// Iterates until the operation is done; one that is interrupted is cancelled first.
void Bus::waitFor(Pending& pending) {
    const auto finish = [&] {
        while (!pending.done) {
            (void)g_main_context_iteration(nullptr, TRUE);
        }
    };
    try {
        while (!pending.done) {
            throwIfInterrupted();
            (void)g_main_context_iteration(nullptr, TRUE);
        }
    } catch (...) {
        g_cancellable_cancel(pending.cancellable.get());
        finish();
        g_clear_object(&pending.connection);
        throw;
    }
}

void Bus::connect() {
    if (address_.empty()) {
        g_autoptr(GError) error = nullptr;
        g_autofree char* address =
            g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
        if (address == nullptr) {
            throw Failure(Status::NoDaemon, "the system bus is not to be found: " + wordsOf(error) +
                                                "; name a bus with --bus");
        }
        address_ = address;
    }
    Pending pending;
    constexpr auto FLAGS =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    g_dbus_connection_new_for_address(address_.c_str(), FLAGS, nullptr, pending.cancellable.get(),
                                      Pending::connected, &pending);
    const unsigned timer =
        g_timeout_add(static_cast<unsigned>(timeout_ * 1000), Pending::tookTooLong, &pending);
    try {
        waitFor(pending);
    } catch (...) {
        g_source_remove(timer);
        throw;
    }
    g_source_remove(timer);
    if (pending.connection != nullptr) {
        connection_.reset(G_DBUS_CONNECTION(pending.connection));
        return;
    }
    if (isOneOf(pending.error, G_IO_ERROR, {G_IO_ERROR_CANCELLED, G_IO_ERROR_TIMED_OUT})) {
        throw Failure(Status::TimedOut, "the bus at " + address_ + " took no connection within " +
                                            secondsText(timeout_) + "; is it stopped?");
    }
    if (isOneOf(pending.error, G_IO_ERROR, {G_IO_ERROR_PERMISSION_DENIED}) ||
        isOneOf(pending.error, G_DBUS_ERROR, {G_DBUS_ERROR_ACCESS_DENIED})) {
        throw Failure(Status::NoPermission, "the bus at " + address_ + " refuses this user: " +
                                                wordsOf(pending.error) + "; try as root");
    }
    throw Failure(Status::NoDaemon, "there is no bus at " + address_ + ": " +
                                        wordsOf(pending.error) +
                                        "; start one, or name another with --bus");
}

/// Fills in "(s)", the daemon's unique name, or an error.
void Bus::askForOwner(Pending& pending) {
    g_dbus_connection_call(connection_.get(), BUS_NAME, BUS_PATH, BUS_NAME, "GetNameOwner",
                           g_variant_new("(s)", NAME), G_VARIANT_TYPE("(s)"),
                           G_DBUS_CALL_FLAGS_NONE, static_cast<int>(timeout_ * 1000),
                           pending.cancellable.get(), Pending::answered, &pending);
    waitFor(pending);
}

void Bus::findDaemon() {
    Pending pending;
    askForOwner(pending);
    if (isOneOf(pending.error, G_DBUS_ERROR, {G_DBUS_ERROR_NAME_HAS_NO_OWNER})) {
        throw Failure(Status::NoDaemon, std::string("portmeld does not run: nobody owns ") + NAME +
                                            " on " + address_ + "; " + HOW_TO_START);
    }
    if (pending.error != nullptr) {
        explain("GetNameOwner", pending.error);
    }
    const char* owner = nullptr;
    g_variant_get(pending.values.get(), "(&s)", &owner);
    daemon_ = owner;
}

/// Whether the process that was found at the beginning still owns the name.
bool Bus::daemonIsStillThere() {
    Pending pending;
    askForOwner(pending);
    const char* owner = nullptr;
    if (pending.values != nullptr) {
        g_variant_get(pending.values.get(), "(&s)", &owner);
    }
    return owner != nullptr && daemon_ == owner;
}

/// By the unique name of the daemon: nobody else's signals are taken for its own. They are sent to this
/// connection alone, which needs no rule on the bus.
void Bus::subscribe() {
    subscriptions_[0] = g_dbus_connection_signal_subscribe(
        connection_.get(), daemon_.c_str(), INTERFACE, nullptr, PATH, nullptr,
        G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, signalled, this, nullptr);
    subscriptions_[1] = g_dbus_connection_signal_subscribe(
        connection_.get(), BUS_NAME, BUS_NAME, "NameOwnerChanged", BUS_PATH, NAME,
        G_DBUS_SIGNAL_FLAGS_NONE, ownerChanged, this, nullptr);
}

void Bus::signalled(GDBusConnection*,
                    const char*,
                    const char*,
                    const char*,
                    const char* signal,
                    GVariant* parameters,
                    void* self) {
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(s)")) != FALSE) {
        const char* text = nullptr;
        g_variant_get(parameters, "(&s)", &text);
        static_cast<Bus*>(self)->signals_.push_back({signal, text});
    }
}

void Bus::ownerChanged(GDBusConnection*,
                       const char*,
                       const char*,
                       const char*,
                       const char*,
                       GVariant* parameters,
                       void* self) {
    auto& bus = *static_cast<Bus*>(self);
    const char* owner = nullptr;
    g_variant_get(parameters, "(&s&s&s)", nullptr, nullptr, &owner);
    bus.daemonLeft_ = bus.daemonLeft_ || bus.daemon_ != owner;
}

Values Bus::call(const char* method, GVariant* parameters, const char* answer) {
    Pending pending;
    g_dbus_connection_call(connection_.get(), daemon_.c_str(), PATH, INTERFACE, method, parameters,
                           G_VARIANT_TYPE(answer), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                           static_cast<int>(timeout_ * 1000), pending.cancellable.get(),
                           Pending::answered, &pending);
    waitFor(pending);
    if (pending.error != nullptr) {
        explain(method, pending.error);
    }
    return std::move(pending.values);
}

Values Bus::callAsClient(const char* method, std::optional<int> argument, const char* answer) {
    registered_ = true;
    return call(
        method,
        argument ? g_variant_new("(ii)", clientId_, *argument) : g_variant_new("(i)", clientId_),
        answer);
}

/// Turns an error of a call into words and an exit status.
void Bus::explain(const std::string& method, const GError* error) {
    const bool unanswered = isOneOf(error, G_DBUS_ERROR, {G_DBUS_ERROR_NO_REPLY});
    if (unanswered && !daemonIsStillThere()) {
        daemonLeft_ = true;
        throw Failure(Status::DaemonEnded,
                      "portmeld ended instead of answering " + method +
                          "; whatever it knew is lost, its log tells why, and if no service " +
                          "manager does, " + HOW_TO_START);
    }
    if (unanswered || isOneOf(error, G_IO_ERROR, {G_IO_ERROR_TIMED_OUT}) ||
        isOneOf(error, G_DBUS_ERROR, {G_DBUS_ERROR_TIMEOUT, G_DBUS_ERROR_TIMED_OUT})) {
        throw Failure(Status::TimedOut, "no answer to " + method + " within " +
                                            secondsText(timeout_) +
                                            "; portmeld is busy or stopped: try again, or with a " +
                                            "longer --timeout");
    }
    if (isOneOf(error, G_DBUS_ERROR, {G_DBUS_ERROR_ACCESS_DENIED})) {
        throw Failure(Status::NoPermission,
                      "the bus does not let this user call " + method + ": " + wordsOf(error) +
                          "; root and members of the group portmeld may, after a new log-in");
    }
    if (isOneOf(error, G_DBUS_ERROR,
                {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER})) {
        daemonLeft_ = true;
        throw Failure(Status::NoDaemon, "portmeld left the bus before " + method +
                                            " reached it; try again, or " + HOW_TO_START);
    }
    if (isOneOf(error, G_IO_ERROR, {G_IO_ERROR_CLOSED})) {
        throw Failure(Status::NoDaemon, "the bus at " + address_ + " ended before it answered " +
                                            method + "; try again when it is back");
    }
    throw Failure(Status::Failed, "portmeld refused " + method + ": " + wordsOf(error) +
                                      "; do its version and this program's fit together?");
}

std::vector<Bus::Signal> Bus::takeSignals() {
    return std::exchange(signals_, {});
}

void Bus::waitForSignals(double seconds) {
    bool over = false;
    const auto end = [](void* data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return G_SOURCE_REMOVE;
    };
    // Taken off in any case, also when it has not come.
    const std::unique_ptr<GSource, void (*)(GSource*)> timer(
        g_timeout_source_new(static_cast<unsigned>(seconds * 1000)), [](GSource* source) {
            g_source_destroy(source);
            g_source_unref(source);
        });
    g_source_set_callback(timer.get(), end, &over, nullptr);
    g_source_attach(timer.get(), nullptr);
    while (!over && signals_.empty()) {
        throwIfInterrupted();
        if (daemonLeft_) {
            throw Failure(Status::NoDaemon, std::string("portmeld left the bus; ") + HOW_TO_START);
        }
        if (g_dbus_connection_is_closed(connection_.get()) != FALSE) {
            throw Failure(Status::NoDaemon,
                          "the bus at " + address_ + " ended; try again when it is back");
        }
        (void)g_main_context_iteration(nullptr, TRUE);
    }
}

}  // namespace ctl
