// Which names on the user's message bus are owned just now. A running application owns the name that its
// id is. Kept in memory by watching, so that the answer is there when it is wanted.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gio/gio.h>

namespace machine {

class BusNames {
public:
    /// Unknown: watching has begun, and the bus has not answered yet.
    enum class Owner { Unknown, Nobody, Somebody };

    /// The one of this process.
    static BusNames& get();

    BusNames();
    ~BusNames();
    BusNames(const BusNames&) = delete;
    BusNames& operator=(const BusNames&) = delete;

    /// Whether a name is owned. The first question begins the watching, which lasts as long as this
    /// object, over the loss of the bus too. Nobody owns what cannot be a name, nor anything while there
    /// is no bus.
    Owner ownerOf(const std::string& name);

    /// Call `then` with whether the name is owned: at once when that is known, else as soon as it is. A
    /// bus that hangs is given ten seconds; then it is Unknown: nobody wants today what he chose yesterday.
    void whenKnown(const std::string& name, std::function<void(Owner owner)> then);

private:
    struct Watch {
        unsigned id = 0;  ///< of g_bus_watch_name_on_connection(), or 0
        Owner owner = Owner::Nobody;
        std::vector<std::function<void(Owner owner)>> waiting;
        unsigned timer = 0;  ///< ends the waiting
    };
    static void appeared(GDBusConnection*, const char* name, const char* owner, void* watch);
    static void vanished(GDBusConnection*, const char* name, void* watch);
    static int waitedTooLong(void* watch);
    static void settle(Watch& watch, Owner owner);
    static void begin(const std::string& name, Watch& watch);
    void connectionChanged();

    std::map<std::string, Watch> watches_;
    unsigned listening_;  // last: the bus may speak at once
};

}  // namespace machine
