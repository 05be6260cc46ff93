// The functions of <platform/tv_context.h>: what a setting says the viewer is doing, and whether he
// told his notification server that he wants no disturbance.
#include <platform/settings.h>
#include <platform/tv_context.h>

#include "notification/NotificationServer.h"

namespace {

/// The bits of the contract as an integer, written by whoever knows what the viewer does.
constexpr const char* STATE_KEY = "memory/tv_context/state";

}  // namespace

extern "C" {

/// The first call begins to look for the server, whose answer is there only later.
int tvcontext_init(void) {
    machine::NotificationServer::get();
    return 0;
}

int tvcontext_query_state(int* state) {
    if (state == nullptr) {
        return -1;
    }
    int bits = 0;
    if (vconf_get_int(STATE_KEY, &bits) != 0) {
        bits = 0;
    }
    if (machine::NotificationServer::get().inhibited()) {
        bits |= TVCONTEXT_DISTRACTION_FREE_BIT_7;
    }
    *state = bits;
    return 0;
}

int tvcontext_fini(void) {
    return 0;
}

}  // extern "C"
