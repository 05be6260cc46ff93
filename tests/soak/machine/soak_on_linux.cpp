// The daemon on the Linux machine, as people run it, that tells what it knows and holds: "state" on standard
// input is answered with one JSON object, "memory" with one of the bytes of each kind, which is empty where
// they cannot be measured. Before either everything that is due is done. The end of standard input ends the main loop.
#include <libintl.h>

#include <cstdio>
#include <stdexcept>

#include <glib.h>

#include "Json.h"
#include "MMDeviceState.h"
#include "MMNames.h"
#include "Resources.h"
#include "Words.h"

/// src/main.cpp, compiled under this name.
int portmeld_main(int argc, char** argv);

extern "C" {
void __real_g_main_loop_run(GMainLoop* loop);
void __wrap_g_main_loop_run(GMainLoop* loop);
}

namespace {

soak::Sources sources;

/// A record is known by its place.
Json place(const CMMDeviceInfo* record) {
    if (record == nullptr) {
        return nothing();
    }
    char name[32];
    (void)std::snprintf(name, sizeof name, "%p", static_cast<const void*>(record));
    return text(std::string(name));
}

Json device(const CMMDeviceInfo* record) {
    return JsonMembers()
        .with("place", place(record))
        .with("key", text(record->GetDeviceKey()))
        .with("class", number(record->GetClass()))
        .with("fileSystem", number(record->GetFileSystemType()))
        .with("mountpath", text(record->GetMountpath()))
        .with("serial", text(record->GetSerial()))
        .with("displayName", text(record->GetDisplayName()))
        .with("index", number(record->GetIndex()))
        .with("announced", truth(record->GetUsbStorageAddAction()))
        .done();
}

Json client(const _stMMClientState& client) {
    return JsonMembers()
        .with("id", number(client.nClientId))
        .with("sender", text(client.strSender))
        .done();
}

std::string stateText() {
    _stMMDeviceState state;
    if (!MMReadDeviceState(state)) {
        throw std::runtime_error("there is no device manager");
    }
    return print(JsonMembers()
                     .with("devices", list(state.vDevices, device))
                     .with("current", place(state.pCurrentDevice))
                     .with("displayed", place(state.pDisplayedDevice))
                     .with("fat", number(state.nFatCount))
                     .with("exFat", number(state.nExFatCount))
                     .with("ext4", number(state.nExt4Count))
                     .with("ntfs", number(state.nNtfsCount))
                     .with("cameras", number(state.nCameraCount))
                     .with("activated", truth(state.bActivated))
                     .with("kind", number(state.nNotificationType))
                     .with("notice", truth(state.bRemovalNotice))
                     .with("noticeName", text(state.strRemovalNotice))
                     .with("scannedName", text(state.strScanFileName))
                     .with("clients", list(state.vClients, client))
                     .with("cancel", text(std::string(dgettext(MMNames::SELF, "COM_SID_CANCEL"))))
                     .with("sources", number(static_cast<std::int64_t>(sources.count())))
                     .done());
}

std::string memoryText() {
    JsonMembers members;
    if (soak::memoryCanBeMeasured()) {
        const soak::Memory memory = soak::measureMemory();
        members.with("in use", number(static_cast<std::int64_t>(memory.inUse)))
            .with("in anonymous pages", number(static_cast<std::int64_t>(memory.anonymous)));
    }
    return print(members.done());
}

std::string answer(const std::string& line) {
    constexpr gboolean WAIT = TRUE;
    while (g_main_context_iteration(nullptr, !WAIT) != FALSE) {
    }
    return line == "memory" ? memoryText() : stateText();
}

}  // namespace

void __wrap_g_main_loop_run(GMainLoop* loop) {
    const CommandInput input(answer, [loop] { g_main_loop_quit(loop); });
    __real_g_main_loop_run(loop);
}

int main(int argc, char** argv) {
    soak::steadyMemory();
    return portmeld_main(argc, argv);
}
