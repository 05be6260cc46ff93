// What a test can ask of the notification service and of the TV context, and what it is told of the
// bus on which the notification server is.
#include <map>
#include <string>

#include <gio/gio.h>

#include <platform/notification.h>
#include <platform/tv_context.h>

#include "Probe.h"
#include "SessionBus.h"

namespace {

using machine::SessionBus;

void buttonPressed(int itemType, int button, void* data) {
    JsonMembers members;
    members.with("type", number(itemType)).with("button", number(button));
    printEvent(static_cast<const char*>(data), members);
}

void timedOut(int itemType, void* data) {
    JsonMembers members;
    members.with("type", number(itemType));
    printEvent(static_cast<const char*>(data), members);
}

void hidden(char*, void* data) {
    JsonMembers members;
    printEvent(static_cast<const char*>(data), members);
}

void* name(const char* text) {
    return const_cast<char*>(text);
}

int registerCallbacks() {
    return register_notification_button_callback(buttonPressed, name("button")) +
           register_notification_timeout_callback(timedOut, name("time-out")) +
           register_notofication_hide_callback(hidden, name("hidden"));
}

/// The record of words like "type=1" and "title=Stick"; what is not named is 0 or null.
int show(const Words& words) {
    std::map<std::string, std::string> values;
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t equals = words[i].find('=');
        values[words[i].substr(0, equals)] = words[i].substr(equals + 1);
    }
    const auto whole = [&](const char* key) {
        return values.count(key) != 0 ? integer(values.at(key)) : 0;
    };
    const auto textOf = [&](const char* key) -> const char* {
        return values.count(key) != 0 ? values.at(key).c_str() : nullptr;
    };
    NotificationRecord record = {};
    record.nWord0 = NOTIFICATION_WORD_0;
    record.nWord4 = NOTIFICATION_WORD_4;
    record.nWord8 = NOTIFICATION_WORD_8;
    record.pSender = textOf("sender");
    record.nItemType = whole("type");
    record.nTimeout = whole("timeout");
    record.pTitle = textOf("title");
    record.pBody = textOf("body");
    record.pSourceIcon = textOf("icon");
    record.nButtonCount = whole("buttons");
    record.pFirstButton = textOf("first");
    record.pSecondButton = textOf("second");
    const int result = add_notification_data(&record);
    // The service keeps copies.
    for (auto& [key, value] : values) {
        value.assign(value.size(), '#');
    }
    return result;
}

/// The bus answers in order: what anybody asked it before is answered as well when this event
/// comes.
void busAnswered(GObject* source, GAsyncResult* result, void* event) {
    g_autoptr(GVariant) id =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
    if (id != nullptr) {
        JsonMembers members;
        printEvent(static_cast<const char*>(event), members);
    }
}

void askBus(GDBusConnection* connection, const char* event) {
    g_dbus_connection_call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "GetId", nullptr, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, busAnswered, name(event));
}

void watchBus() {
    SessionBus::get().listen([](GDBusConnection* connection) {
        if (connection != nullptr) {
            askBus(connection, "bus-connected");
        } else {
            JsonMembers members;
            printEvent("bus-lost", members);
        }
    });
}

Json context() {
    int state = 0;
    tvcontext_init();
    const int result = tvcontext_query_state(&state);
    tvcontext_fini();
    return JsonMembers().with("result", number(result)).with("state", number(state)).done();
}

constexpr std::size_t MOST = 20;

}  // namespace

ProbeCommands notificationCommands() {
    return {
        {"notification-init", 0, 0,
         [](const Words&) { return number(init_notification_data_manager("portmeld", 0)); }},
        {"notification-register", 0, 0, [](const Words&) { return number(registerCallbacks()); }},
        {"notification-close", 0, 0,
         [](const Words&) { return number(close_notification_data_manager()); }},
        {"notification-show", 0, MOST, [](const Words& words) { return number(show(words)); }},
        // Events "bus-connected" and "bus-lost" from now on.
        {"watch-bus", 0, 0,
         [](const Words&) {
             watchBus();
             return nothing();
         }},
        // One event "bus-answered".
        {"ask-bus", 0, 0,
         [](const Words&) {
             askBus(SessionBus::get().connection(), "bus-answered");
             return nothing();
         }},
        {"tv-context", 0, 0, [](const Words&) { return context(); }},
    };
}
