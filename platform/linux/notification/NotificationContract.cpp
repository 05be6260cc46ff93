// The functions of <platform/notification.h>. What they mean is in Popups.
#include <memory>

#include <platform/notification.h>

#include "NotificationServer.h"
#include "Popups.h"
#include "SessionBus.h"

namespace {

constexpr int DONE = 0;
constexpr int FAILED = -1;

struct Service {
    machine::NotificationServer& server = machine::NotificationServer::get();
    machine::NotificationCallbacks callbacks;
    std::unique_ptr<machine::Popups> popups;  ///< while the daemon is connected
};

Service& service() {
    static Service service;
    return service;
}

}  // namespace

extern "C" {

int init_notification_data_manager(const char* /*sender*/, int /*flags*/) {
    Service& here = service();
    if (here.popups == nullptr) {
        here.popups = std::make_unique<machine::Popups>(here.server, here.callbacks);
    }
    return DONE;
}

int add_notification_data(NotificationRecord* record) {
    Service& here = service();
    if (here.popups == nullptr || record == nullptr) {
        return FAILED;
    }
    if (!here.server.isThere()) {
        machine::SessionBus::get().retry();
        here.popups->refuse(*record);
        return FAILED;
    }
    here.popups->show(*record);
    return DONE;
}

int register_notification_button_callback(notification_button_callback_fn cb, void* user_data) {
    service().callbacks.button = cb;
    service().callbacks.buttonData = user_data;
    return DONE;
}

int register_notification_timeout_callback(notification_timeout_callback_fn cb, void* user_data) {
    service().callbacks.timeout = cb;
    service().callbacks.timeoutData = user_data;
    return DONE;
}

int register_notofication_hide_callback(notification_hide_callback_fn cb, void* user_data) {
    service().callbacks.hide = cb;
    service().callbacks.hideData = user_data;
    return DONE;
}

int close_notification_data_manager(void) {
    service().popups.reset();
    service().callbacks = {};
    return DONE;
}

}  // extern "C"
