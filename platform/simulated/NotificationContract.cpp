// The functions of <platform/notification.h>: journal and faults. What they mean is in Screen.
#include "ContractCall.h"

using simulated::contractCall;
using simulated::journalTexts;
using simulated::SimulatedTv;

extern "C" {

int init_notification_data_manager(const char* sender, int flags) {
    return contractCall(__func__, journalTexts(sender, flags),
                        [&](SimulatedTv& tv) { return tv.screen().init(sender, flags); });
}

int add_notification_data(NotificationRecord* record) {
    return contractCall(__func__, record != nullptr ? journalTexts(record->nItemType) : "null",
                        [&](SimulatedTv& tv) { return tv.screen().add(record); });
}

int register_notification_button_callback(notification_button_callback_fn cb, void* user_data) {
    return contractCall(__func__, "", [&](SimulatedTv& tv) {
        return tv.screen().setButtonCallback(cb, user_data);
    });
}

int register_notification_timeout_callback(notification_timeout_callback_fn cb, void* user_data) {
    return contractCall(__func__, "", [&](SimulatedTv& tv) {
        return tv.screen().setTimeoutCallback(cb, user_data);
    });
}

int register_notofication_hide_callback(notification_hide_callback_fn cb, void* user_data) {
    return contractCall(
        __func__, "", [&](SimulatedTv& tv) { return tv.screen().setHideCallback(cb, user_data); });
}

int close_notification_data_manager(void) {
    return contractCall(__func__, "", [](SimulatedTv& tv) { return tv.screen().close(); });
}

}  // extern "C"
