// What a test can ask of the content scan.
#include <platform/content_scan.h>

#include "Probe.h"

namespace {

bool told(void* userData, CCSFDeviceCheckHandle* handle, csf_event_e event, const char* json) {
    JsonMembers members;
    printEvent("scan", members.with("user", pointer(userData))
                           .with("handle", pointer(handle))
                           .with("what", number(event))
                           .with("json", text(std::string(json))));
    return true;
}

}  // namespace

ProbeCommands scanCommands() {
    return {
        {"scan", 1, 1,  // FOLDER -> handle, or null when it was refused; events "scan"
         [](const Words& words) {
             CCSFDeviceCheckHandle* handle = nullptr;
             void* const user = pointer(std::string("7"));
             const int status = csf_check_device_v2(words[1].c_str(), told, user, &handle);
             return status == 0 ? pointer(handle) : nothing();
         }},
        {"scan-stop", 1, 1,  // HANDLE -> status
         [](const Words& words) {
             return number(csf_stop_checking_device_v2(
                 static_cast<CCSFDeviceCheckHandle*>(pointer(words[1]))));
         }},
    };
}
