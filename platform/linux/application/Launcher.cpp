// The order in which the ways are tried.
#include "Launcher.h"

#include <optional>
#include <string>

#include "BusActivation.h"
#include "BusNames.h"
#include "ChildProcess.h"
#include "DesktopEntry.h"
#include "Journal.h"
#include "SessionBus.h"
#include "TransientUnit.h"

namespace machine {

namespace {

/// The ids that the daemon asks after: the companion application and the two demo players.
constexpr const char* ASKED_AFTER[] = {"org.norvane.lumet", "org.norvane.shopreel",
                                       "org.norvane.floorreel"};

bool refuse(const std::string& id, const std::string& why) {
    report(Priority::Warning, "cannot launch '" + id + "': " + why, {{"PORTMELD_APPLICATION", id}});
    return false;
}

std::string nothingFound(const std::string& id) {
    return "it does not run, and there is no desktop entry '" + id +
           ".desktop' that can be used below the folders of XDG_DATA_HOME and XDG_DATA_DIRS; "
           "install one, and its program";
}

void giveUp(const LaunchRequest& request) {
    refuse(request.applicationId,
           "the message bus does not answer; see whether it hangs, and restart it");
}

void startProgram(const LaunchRequest& request, const DesktopEntry& entry) {
    if (entry.command.empty()) {
        refuse(request.applicationId,
               "it can only be started by the message bus, and there is none; start the daemon "
               "where DBUS_SESSION_BUS_ADDRESS or XDG_RUNTIME_DIR lead to the user's");
        return;
    }
    if (request.environmentEntry().size() >= LaunchRequest::LONGEST_ENVIRONMENT_ENTRY) {
        refuse(request.applicationId,
               "its extra data are too long for the environment; an application that takes so much "
               "must be started by the message bus (DBusActivatable=true)");
        return;
    }
    BusNames::get().whenKnown(SERVICE_MANAGER, [request, entry](BusNames::Owner owner) {
        if (owner == BusNames::Owner::Unknown) {
            giveUp(request);
        } else if (owner == BusNames::Owner::Somebody && canBeActivated(SERVICE_MANAGER)) {
            startUnit(request, entry);
        } else {
            startChild(request, entry);
        }
    });
}

/// An entry may promise a service that nobody has installed, and an application may just have ended.
void handOver(const LaunchRequest& request, const std::optional<DesktopEntry>& entry) {
    if (entry && !entry->command.empty()) {
        activate(request, [request, entry] { startProgram(request, *entry); });
    } else {
        activate(request, nullptr);
    }
}

}  // namespace

void prepareLaunches() {
    for (const char* name : ASKED_AFTER) {
        BusNames::get().ownerOf(name);
    }
    BusNames::get().ownerOf(SERVICE_MANAGER);
}

bool launch(const LaunchRequest& request) {
    const std::string& id = request.applicationId;
    if (id.empty()) {
        return refuse(id, "no application is named; there is none for this kind of file");
    }
    if (!isApplicationId(id)) {
        return refuse(id,
                      "this is no application id; it must be the name of a desktop entry without "
                      "'.desktop'");
    }
    const std::optional<DesktopEntry> entry = findDesktopEntry(id);
    if (!entry && BusNames::get().ownerOf(id) == BusNames::Owner::Nobody) {
        return refuse(id, nothingFound(id));
    }
    if (entry && entry->busActivatable && canBeActivated(id)) {
        handOver(request, entry);
        return true;
    }
    BusNames::get().whenKnown(id, [request, entry](BusNames::Owner owner) {
        if (owner == BusNames::Owner::Unknown) {
            giveUp(request);
        } else if (owner == BusNames::Owner::Somebody && canBeActivated(request.applicationId)) {
            handOver(request, entry);
        } else if (entry) {
            startProgram(request, *entry);
        } else {
            refuse(request.applicationId, nothingFound(request.applicationId));
        }
    });
    return true;
}

}  // namespace machine
