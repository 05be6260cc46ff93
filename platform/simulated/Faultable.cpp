// The functions of the platform that can be told to fail, and how each of them does. Those without
// a result, and making a timer, cannot.
#include "CallJournal.h"

namespace simulated {

const std::vector<std::pair<std::string, Fault>>& CallJournal::faultable() {
    static const std::vector<std::pair<std::string, Fault>> functions = {
        // log
        {"__dlog_print", Fault::Fails},
        // settings
        {"vconf_get_bool", Fault::Fails},
        {"vconf_get_int", Fault::Fails},
        {"vconf_get_str", Fault::ReturnsNull},
        {"vconf_notify_key_changed", Fault::Fails},
        {"vconf_ignore_key_changed", Fault::Fails},
        {"vconf_keynode_get_name", Fault::ReturnsNull},
        {"vconf_keynode_get_str", Fault::ReturnsNull},
        // texts
        {"appcore_set_i18n", Fault::Fails},
        {"bindtextdomain", Fault::ReturnsNull},
        {"dgettext", Fault::ReturnsNull},
        // watchdog
        {"smart_deadlock_register_watchdog_service", Fault::Fails},
        {"smart_deadlock_watchdog_notify", Fault::Fails},
        // USB
        {"usb_device_init", Fault::Fails},
        {"usb_device_fini", Fault::Fails},
        {"usb_set_connected_cb", Fault::Fails},
        {"usb_unset_connected_cb", Fault::Fails},
        {"usb_device_get_device_list", Fault::Fails},
        {"usb_device_list_get_first", Fault::Fails},
        {"usb_device_list_get_next", Fault::Fails},
        {"usb_device_free_device_list", Fault::Fails},
        {"usb_device_get_class", Fault::Fails},
        {"usb_device_get_sub_class", Fault::Fails},
        {"usb_device_get_protocol", Fault::Fails},
        {"usb_device_get_vendor_id", Fault::Fails},
        {"usb_device_get_product_id", Fault::Fails},
        {"usb_device_get_bus", Fault::Fails},
        {"usb_device_get_address", Fault::Fails},
        {"usb_device_get_number", Fault::Fails},
        {"usb_device_get_manufacturer", Fault::ReturnsNull},
        {"usb_device_get_product", Fault::ReturnsNull},
        {"usb_device_get_devname", Fault::ReturnsNull},
        {"usb_device_get_devpath", Fault::ReturnsNull},
        {"usb_device_get_mountpath", Fault::ReturnsNull},
        {"usb_device_get_serial", Fault::ReturnsNull},
        {"usb_device_get_partlabel", Fault::ReturnsNull},
        {"usb_mass_storage_get_filesystem_type", Fault::Fails},
        {"usb_mass_storage_get_disk_type", Fault::Fails},
        {"usb_mass_storage_foreach", Fault::Fails},
        // power
        {"device_power_subscribe_wakeup", Fault::Fails},
        {"device_power_subscribe_poweroff", Fault::Fails},
        {"device_power_subscribe_state_changed", Fault::Fails},
        {"device_power_unsubscribe_wakeup", Fault::Fails},
        {"device_power_unsubscribe_poweroff", Fault::Fails},
        {"device_power_unsubscribe_state_changed", Fault::Fails},
        // notification
        {"init_notification_data_manager", Fault::Fails},
        {"add_notification_data", Fault::Fails},
        {"register_notification_button_callback", Fault::Fails},
        {"register_notification_timeout_callback", Fault::Fails},
        {"register_notofication_hide_callback", Fault::Fails},
        {"close_notification_data_manager", Fault::Fails},
        // TV context
        {"tvcontext_init", Fault::Fails},
        {"tvcontext_query_state", Fault::Fails},
        {"tvcontext_fini", Fault::Fails},
        // content scan
        {"csf_check_device_v2", Fault::Fails},
        {"csf_stop_checking_device_v2", Fault::Fails},
        // applications
        {"app_control_create", Fault::Fails},
        {"app_control_destroy", Fault::Fails},
        {"app_control_set_app_id", Fault::Fails},
        {"app_control_add_extra_data", Fault::Fails},
        {"app_control_send_launch_request", Fault::Fails},
        {"app_manager_is_running", Fault::Fails},
        {"aul_app_is_running", Fault::Fails},
        // usage statistics
        {"CKPILogService::SetKPILogServiceconfInfo", Fault::Fails},
        {"CKPILogService::SendKPILog", Fault::Fails},
    };
    return functions;
}

}  // namespace simulated
