// The functions of <platform/content_scan.h>: journal and faults. What they mean is in Scanner.
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalHandle;
using simulated::journalText;
using simulated::SimulatedTv;

extern "C" {

int csf_check_device_v2(const char* mount_path,
                        csf_check_callback_fn cb,
                        void* user_data,
                        CCSFDeviceCheckHandle** handle) {
    return contractCall(__func__, journalText(mount_path), [&](SimulatedTv& tv) {
        return tv.scanner().check(mount_path, cb, user_data, handle);
    });
}

int csf_stop_checking_device_v2(CCSFDeviceCheckHandle* handle) {
    return contractCall(__func__, journalHandle(handle),
                        [&](SimulatedTv& tv) { return tv.scanner().stop(handle); });
}

}  // extern "C"
