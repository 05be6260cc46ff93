// The poorest implementation of the platform contract that there can be: every service fails, only the
// log says something, on standard error. With it the daemon's library proves that it needs nothing but
// the contract.
#include <cstdarg>
#include <cstdio>

#include <platform/application.h>
#include <platform/content_scan.h>
#include <platform/i18n.h>
#include <platform/log.h>
#include <platform/notification.h>
#include <platform/power.h>
#include <platform/settings.h>
#include <platform/tv_context.h>
#include <platform/usage_statistics.h>
#include <platform/usb.h>
#include <platform/watchdog.h>

// clang-format off
extern "C" {

int __dlog_print(int, int, const char*, const char* fmt, ...) {
    va_list arguments;
    va_start(arguments, fmt);
    const int written = std::vfprintf(stderr, fmt, arguments);
    va_end(arguments);
    (void)std::fputc('\n', stderr);
    return written;
}

int vconf_get_bool(const char*, int*) { return -1; }
int vconf_get_int(const char*, int*) { return -1; }
char* vconf_get_str(const char*) { return nullptr; }
int vconf_notify_key_changed(const char*, vconf_callback_fn, void*) { return -1; }
int vconf_ignore_key_changed(const char*, vconf_callback_fn) { return -1; }
char* vconf_keynode_get_name(keynode_s*) { return nullptr; }
char* vconf_keynode_get_str(keynode_s*) { return nullptr; }

int appcore_set_i18n(const char*, const char*) { return -1; }

int smart_deadlock_register_watchdog_service(int) { return -1; }
int smart_deadlock_watchdog_notify(void) { return -1; }

int device_power_subscribe_wakeup(device_power_callback_fn, void*) { return -1; }
int device_power_subscribe_poweroff(device_power_callback_fn, void*) { return -1; }
int device_power_subscribe_state_changed(device_power_callback_fn, void*) { return -1; }
int device_power_unsubscribe_wakeup(device_power_callback_fn) { return -1; }
int device_power_unsubscribe_poweroff(device_power_callback_fn) { return -1; }
int device_power_unsubscribe_state_changed(device_power_callback_fn) { return -1; }

int tvcontext_init(void) { return -1; }
int tvcontext_query_state(int*) { return -1; }
int tvcontext_fini(void) { return -1; }

int init_notification_data_manager(const char*, int) { return -1; }
int add_notification_data(NotificationRecord*) { return -1; }
int register_notification_button_callback(notification_button_callback_fn, void*) { return -1; }
int register_notification_timeout_callback(notification_timeout_callback_fn, void*) { return -1; }
int register_notofication_hide_callback(notification_hide_callback_fn, void*) { return -1; }
int close_notification_data_manager(void) { return -1; }

int csf_check_device_v2(const char*, csf_check_callback_fn, void*, CCSFDeviceCheckHandle**) { return -1; }
int csf_stop_checking_device_v2(CCSFDeviceCheckHandle*) { return -1; }

int app_control_create(app_control_h*) { return -1; }
int app_control_destroy(app_control_h) { return -1; }
int app_control_set_app_id(app_control_h, const char*) { return -1; }
int app_control_add_extra_data(app_control_h, const char*, const char*) { return -1; }
int app_control_send_launch_request(app_control_h, void*, void*) { return -1; }
int app_manager_is_running(const char*, bool*) { return -1; }
int aul_app_is_running(const char*) { return 0; }

int usb_device_init(void) { return -1; }
int usb_device_fini(void) { return -1; }
int usb_set_connected_cb(usb_connected_callback_fn, void*) { return -1; }
int usb_unset_connected_cb(void) { return -1; }
int usb_device_get_device_list(int, usb_device_list_s**) { return -1; }
int usb_device_list_get_first(usb_device_list_s*, usb_device_s**) { return -1; }
int usb_device_list_get_next(usb_device_list_s*, usb_device_s**) { return -1; }
int usb_device_free_device_list(usb_device_list_s*) { return -1; }
int usb_device_get_class(usb_device_s*) { return -1; }
int usb_device_get_sub_class(usb_device_s*) { return -1; }
int usb_device_get_protocol(usb_device_s*) { return -1; }
int usb_device_get_vendor_id(usb_device_s*) { return -1; }
int usb_device_get_product_id(usb_device_s*) { return -1; }
int usb_device_get_bus(usb_device_s*) { return -1; }
int usb_device_get_address(usb_device_s*) { return -1; }
int usb_device_get_number(usb_device_s*) { return -1; }
const char* usb_device_get_manufacturer(usb_device_s*) { return nullptr; }
const char* usb_device_get_product(usb_device_s*) { return nullptr; }
const char* usb_device_get_devname(usb_device_s*) { return nullptr; }
const char* usb_device_get_devpath(usb_device_s*) { return nullptr; }
const char* usb_device_get_mountpath(usb_device_s*) { return nullptr; }
const char* usb_device_get_serial(usb_device_s*) { return nullptr; }
const char* usb_device_get_partlabel(usb_device_s*) { return nullptr; }
int usb_mass_storage_get_filesystem_type(usb_device_s*) { return -1; }
int usb_mass_storage_get_disk_type(usb_device_s*) { return -1; }
int usb_mass_storage_foreach(usb_foreach_callback_fn, void*) { return -1; }
void free_usb_device_h(usb_device_s*) {}

}  // extern "C"

bool CStringUtil::CombinateStrings(char* out, int, const char*, const char*, const char*, const char*,
                                   const char*) {
    *out = '\0';
    return false;
}

CKPILogService::CKPILogService() = default;
CKPILogService::~CKPILogService() = default;
int CKPILogService::SetKPILogServiceconfInfo(KPI_APP_TYPE) { return -1; }
int CKPILogService::SendKPILog(KPI_LOG_TYPE, std::string, std::string, std::string) { return -1; }
// clang-format on
