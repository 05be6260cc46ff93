// The seams of EntrySeams.h, and the functions that the linker hands over.
#include "EntrySeams.h"

#include <glib.h>

#include "MMDeviceMgr.h"
#include "SimulatedTv.h"

std::function<void()> EntrySeams::mainLoop;
bool EntrySeams::managerRefused = false;

void EntrySeams::reset() {
    mainLoop = nullptr;
    managerRefused = false;
}

extern "C" {
void __wrap_g_main_loop_run(GMainLoop* loop);
CMMDeviceMgr* __real__ZN12CMMDeviceMgr11GetInstanceEv();
CMMDeviceMgr* __wrap__ZN12CMMDeviceMgr11GetInstanceEv();

void __wrap_g_main_loop_run(GMainLoop*) {
    simulated::SimulatedTv::current().journal().called("g_main_loop_run", "");
    if (EntrySeams::mainLoop) {
        EntrySeams::mainLoop();
    }
}

CMMDeviceMgr* __wrap__ZN12CMMDeviceMgr11GetInstanceEv() {
    return EntrySeams::managerRefused ? nullptr : __real__ZN12CMMDeviceMgr11GetInstanceEv();
}
}
