// The functions of <platform/application.h>: journal and faults. What they mean is in Applications.
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalHandle;
using simulated::journalText;
using simulated::SimulatedTv;

extern "C" {

int app_control_create(app_control_h* handle) {
    return contractCall(__func__, "",
                        [&](SimulatedTv& tv) { return tv.applications().create(handle); });
}

int app_control_destroy(app_control_h handle) {
    SimulatedTv& tv = SimulatedTv::current();
    const bool fails = tv.enter(__func__, journalHandle(handle));
    const int result = tv.applications().destroy(handle);
    return fails ? simulated::CALL_FAILED : result;
}

int app_control_set_app_id(app_control_h handle, const char* id) {
    return contractCall(__func__, journalHandle(handle, id),
                        [&](SimulatedTv& tv) { return tv.applications().setAppId(handle, id); });
}

int app_control_add_extra_data(app_control_h handle, const char* key, const char* value) {
    return contractCall(__func__, journalHandle(handle, key, value), [&](SimulatedTv& tv) {
        return tv.applications().addExtraData(handle, key, value);
    });
}

int app_control_send_launch_request(app_control_h handle, void* reply_cb, void* user_data) {
    return contractCall(__func__, journalHandle(handle), [&](SimulatedTv& tv) {
        return tv.applications().send(handle, reply_cb, user_data);
    });
}

int app_manager_is_running(const char* app_id, bool* running) {
    return contractCall(__func__, journalText(app_id), [&](SimulatedTv& tv) {
        if (app_id == nullptr || running == nullptr) {
            return simulated::CALL_FAILED;
        }
        *running = tv.applications().isRunning(app_id);
        return 0;
    });
}

int aul_app_is_running(const char* app_id) {
    // Has no way to tell a failure: what is not known does not run.
    SimulatedTv& tv = SimulatedTv::current();
    const bool fails = tv.enter(__func__, journalText(app_id));
    return !fails && app_id != nullptr && tv.applications().isRunning(app_id) ? 1 : 0;
}

}  // extern "C"
