// The functions of <platform/settings.h>: journal and faults. What they mean is in Settings.
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalHandle;
using simulated::journalText;
using simulated::SimulatedTv;

extern "C" {

int vconf_get_bool(const char* key, int* val) {
    return contractCall(__func__, journalText(key),
                        [&](SimulatedTv& tv) { return tv.settings().getBool(key, val); });
}

int vconf_get_int(const char* key, int* val) {
    return contractCall(__func__, journalText(key),
                        [&](SimulatedTv& tv) { return tv.settings().getInt(key, val); });
}

char* vconf_get_str(const char* key) {
    SimulatedTv& tv = SimulatedTv::current();
    return tv.enter(__func__, journalText(key)) ? nullptr : tv.settings().getString(key);
}

int vconf_notify_key_changed(const char* key, vconf_callback_fn cb, void* user_data) {
    return contractCall(__func__, journalText(key),
                        [&](SimulatedTv& tv) { return tv.settings().watch(key, cb, user_data); });
}

int vconf_ignore_key_changed(const char* key, vconf_callback_fn cb) {
    return contractCall(__func__, journalText(key),
                        [&](SimulatedTv& tv) { return tv.settings().ignore(key, cb); });
}

char* vconf_keynode_get_name(keynode_s* node) {
    SimulatedTv& tv = SimulatedTv::current();
    return tv.enter(__func__, journalHandle(node)) ? nullptr : tv.settings().nodeName(node);
}

char* vconf_keynode_get_str(keynode_s* node) {
    SimulatedTv& tv = SimulatedTv::current();
    return tv.enter(__func__, journalHandle(node)) ? nullptr : tv.settings().nodeText(node);
}

}  // extern "C"
