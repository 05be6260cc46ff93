// Watching names with GIO, on each connection anew.
#include "BusNames.h"

#include <utility>

#include "SessionBus.h"

namespace machine {

namespace {

/// How long the bus may think about who owns a name, in seconds.
constexpr unsigned PATIENCE = 10;

}  // namespace

BusNames& BusNames::get() {
    static BusNames names;
    return names;
}

BusNames::BusNames()
    : listening_(SessionBus::get().listen([this](GDBusConnection*) { connectionChanged(); })) {}

BusNames::~BusNames() {
    SessionBus::get().forget(listening_);
    for (auto& [name, watch] : watches_) {
        if (watch.id != 0) {
            g_bus_unwatch_name(watch.id);
        }
        if (watch.timer != 0) {
            g_source_remove(watch.timer);
        }
    }
}

BusNames::Owner BusNames::ownerOf(const std::string& name) {
    if (g_dbus_is_name(name.c_str()) == FALSE || g_dbus_is_unique_name(name.c_str()) != FALSE) {
        return Owner::Nobody;
    }
    const auto [found, isNew] = watches_.try_emplace(name);
    if (isNew) {
        begin(name, found->second);
    }
    return found->second.owner;
}

void BusNames::whenKnown(const std::string& name, std::function<void(Owner)> then) {
    const Owner owner = ownerOf(name);
    if (owner != Owner::Unknown) {
        then(owner);
        return;
    }
    Watch& watch = watches_.at(name);
    watch.waiting.push_back(std::move(then));
    if (watch.timer == 0) {
        watch.timer = g_timeout_add_seconds(PATIENCE, waitedTooLong, &watch);
    }
}

void BusNames::begin(const std::string& name, Watch& watch) {
    GDBusConnection* const connection = SessionBus::get().connection();
    if (connection != nullptr) {
        watch.owner = Owner::Unknown;
        watch.id =
            g_bus_watch_name_on_connection(connection, name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
                                           appeared, vanished, &watch, nullptr);
    }
}

void BusNames::connectionChanged() {
    // All are forgotten before anybody is told of one: who is told of it may ask after another.
    for (auto& [name, watch] : watches_) {
        if (watch.id != 0) {
            g_bus_unwatch_name(std::exchange(watch.id, 0));
        }
        watch.owner = Owner::Nobody;
    }
    for (auto& [name, watch] : watches_) {
        if (SessionBus::get().connection() != nullptr) {
            begin(name, watch);
        } else {
            settle(watch, Owner::Nobody);
        }
    }
}

void BusNames::appeared(GDBusConnection*, const char*, const char*, void* watch) {
    settle(*static_cast<Watch*>(watch), Owner::Somebody);
}

void BusNames::vanished(GDBusConnection*, const char*, void* watch) {
    settle(*static_cast<Watch*>(watch), Owner::Nobody);
}

int BusNames::waitedTooLong(void* watch) {
    static_cast<Watch*>(watch)->timer = 0;
    settle(*static_cast<Watch*>(watch), Owner::Unknown);
    return G_SOURCE_REMOVE;
}

void BusNames::settle(Watch& watch, Owner owner) {
    watch.owner = owner;
    if (watch.timer != 0) {
        g_source_remove(std::exchange(watch.timer, 0));
    }
    // Who waited may ask again, and so wait again.
    const auto told = std::exchange(watch.waiting, {});
    for (const auto& then : told) {
        then(owner);
    }
}

}  // namespace machine
