// Every function of the platform works, and each one that is ordered to fail fails: with an error or with
// null, and with nothing written to where its result would have gone.
#include <libintl.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include <platform/i18n.h>
#include <platform/log.h>
#include <platform/tv_context.h>
#include <platform/usage_statistics.h>
#include <platform/watchdog.h>

#include "LanguageGuard.h"
#include "SimulatedTv.h"

namespace {

using simulated::CallJournal;
using simulated::Fault;
using simulated::SimulatedTv;

/// A program that has made all the handles there are.
class FaultableTest : public ::testing::TestWithParam<std::pair<std::string, Fault>> {
protected:
    FaultableTest() {
        simulated::UsbDevice device;
        device.mountpath = "/mnt";
        device.partlabel = "LABEL";
        tv.ports().insert(device);
        usb_device_get_device_list(8, &list);
        usb_device_list_get_first(list, &device_);
        app_control_create(&app);
        init_notification_data_manager("portmeld", 0);
        device_power_subscribe_wakeup(power, nullptr);
        device_power_subscribe_poweroff(power, nullptr);
        device_power_subscribe_state_changed(power, nullptr);
        tv.applications().setRunning("app", true);
        tv.settings().set("number", 5);
        tv.settings().set("yes", true);
        tv.settings().set("text", "value");
    }

    static int power(int, void*) { return 0; }
    static bool walk(usb_device_s* device, void*) {
        free_usb_device_h(device);
        return true;
    }

    /// What a function that returns a number says, when everything it could have written is as before.
    template <class Value>
    static bool worked(int result, const Value& value, const Value& before) {
        EXPECT_EQ(result == 0, value != before);
        return result == 0;
    }
    bool property(int (*get)(usb_device_s*)) const { return get(device_) >= 0; }
    bool property(const char* (*get)(usb_device_s*)) const { return get(device_) != nullptr; }
    bool ofNode(char* (*get)(keynode_s*)) {
        static char* (*getter)(keynode_s*);
        static bool found;
        getter = get;
        found = false;
        const auto take = [](keynode_s* node, void*) { found = getter(node) != nullptr; };
        vconf_notify_key_changed("node", take, nullptr);
        tv.settings().set("node", "x");
        tv.settle();
        return found;
    }

    bool works(const std::string& function) { return calls().at(function)(); }
    std::map<std::string, std::function<bool()>> calls();
    void addUsbCalls(std::map<std::string, std::function<bool()>>& calls);
    void addServiceCalls(std::map<std::string, std::function<bool()>>& calls);

    LanguageGuard guard;
    SimulatedTv tv;
    usb_device_list_s* list = nullptr;
    usb_device_s* device_ = nullptr;
    app_control_h app = nullptr;
};

std::map<std::string, std::function<bool()>> FaultableTest::calls() {
    std::map<std::string, std::function<bool()>> calls;
    addUsbCalls(calls);
    addServiceCalls(calls);
    return calls;
}

void FaultableTest::addUsbCalls(std::map<std::string, std::function<bool()>>& calls) {
    calls["usb_device_init"] = [] { return usb_device_init() == 0; };
    calls["usb_device_fini"] = [] { return usb_device_fini() == 0; };
    calls["usb_set_connected_cb"] = [] {
        return usb_set_connected_cb([](usb_device_s*, char*, void*) {}, nullptr) == 0;
    };
    calls["usb_unset_connected_cb"] = [] { return usb_unset_connected_cb() == 0; };
    calls["usb_device_get_device_list"] = [] {
        usb_device_list_s* out = nullptr;
        const int result = usb_device_get_device_list(8, &out);
        return worked<usb_device_list_s*>(result, out, nullptr);
    };
    calls["usb_device_list_get_first"] = [this] {
        usb_device_s* out = nullptr;
        return worked<usb_device_s*>(usb_device_list_get_first(list, &out), out, nullptr);
    };
    calls["usb_device_list_get_next"] = [this] {
        tv.ports().insert({});
        usb_device_list_s* two = nullptr;
        usb_device_s* first = nullptr;
        usb_device_get_device_list(8, &two);
        usb_device_list_get_first(two, &first);
        usb_device_s* out = first;
        return worked<usb_device_s*>(usb_device_list_get_next(two, &out), out, first);
    };
    calls["usb_device_free_device_list"] = [this] {
        return usb_device_free_device_list(list) == 0;
    };
    calls["usb_device_get_class"] = [this] { return property(usb_device_get_class); };
    calls["usb_device_get_sub_class"] = [this] { return property(usb_device_get_sub_class); };
    calls["usb_device_get_protocol"] = [this] { return property(usb_device_get_protocol); };
    calls["usb_device_get_vendor_id"] = [this] { return property(usb_device_get_vendor_id); };
    calls["usb_device_get_product_id"] = [this] { return property(usb_device_get_product_id); };
    calls["usb_device_get_bus"] = [this] { return property(usb_device_get_bus); };
    calls["usb_device_get_address"] = [this] { return property(usb_device_get_address); };
    calls["usb_device_get_number"] = [this] { return property(usb_device_get_number); };
    calls["usb_device_get_manufacturer"] = [this] { return property(usb_device_get_manufacturer); };
    calls["usb_device_get_product"] = [this] { return property(usb_device_get_product); };
    calls["usb_device_get_devname"] = [this] { return property(usb_device_get_devname); };
    calls["usb_device_get_devpath"] = [this] { return property(usb_device_get_devpath); };
    calls["usb_device_get_mountpath"] = [this] { return property(usb_device_get_mountpath); };
    calls["usb_device_get_serial"] = [this] { return property(usb_device_get_serial); };
    calls["usb_device_get_partlabel"] = [this] { return property(usb_device_get_partlabel); };
    calls["usb_mass_storage_get_filesystem_type"] = [this] {
        return property(usb_mass_storage_get_filesystem_type);
    };
    calls["usb_mass_storage_get_disk_type"] = [this] {
        return property(usb_mass_storage_get_disk_type);
    };
    calls["usb_mass_storage_foreach"] = [this] {
        const std::size_t before = tv.journal().count("free_usb_device_h");
        const int result = usb_mass_storage_foreach(walk, nullptr);
        return worked(result, tv.journal().count("free_usb_device_h"), before);
    };
}

void FaultableTest::addServiceCalls(std::map<std::string, std::function<bool()>>& calls) {
    calls["__dlog_print"] = [] { return __dlog_print(2, 4, "PORTMELD", "x") >= 0; };
    calls["vconf_get_bool"] = [] {
        int out = 42;
        return worked(vconf_get_bool("yes", &out), out, 42);
    };
    calls["vconf_get_int"] = [] {
        int out = 42;
        return worked(vconf_get_int("number", &out), out, 42);
    };
    calls["vconf_get_str"] = [] {
        char* text = vconf_get_str("text");
        const bool found = text != nullptr;
        std::free(text);
        return found;
    };
    calls["vconf_notify_key_changed"] = [] {
        return vconf_notify_key_changed(
                   "key", [](keynode_s*, void*) {}, nullptr) == 0;
    };
    calls["vconf_ignore_key_changed"] = [] {
        return vconf_ignore_key_changed("key", [](keynode_s*, void*) {}) == 0;
    };
    calls["vconf_keynode_get_name"] = [this] { return ofNode(vconf_keynode_get_name); };
    calls["vconf_keynode_get_str"] = [this] { return ofNode(vconf_keynode_get_str); };
    calls["appcore_set_i18n"] = [] { return appcore_set_i18n("portmeld-fault-test", "/") == 0; };
    calls["bindtextdomain"] = [] { return bindtextdomain("portmeld-fault-test", "/") != nullptr; };
    calls["dgettext"] = [] { return dgettext("portmeld-fault-test", "id") != nullptr; };
    calls["smart_deadlock_register_watchdog_service"] = [] {
        return smart_deadlock_register_watchdog_service(60) == 0;
    };
    calls["smart_deadlock_watchdog_notify"] = [] { return smart_deadlock_watchdog_notify() == 0; };
    calls["device_power_subscribe_wakeup"] = [] {
        return device_power_subscribe_wakeup(power, nullptr) == 0;
    };
    calls["device_power_subscribe_poweroff"] = [] {
        return device_power_subscribe_poweroff(power, nullptr) == 0;
    };
    calls["device_power_subscribe_state_changed"] = [] {
        return device_power_subscribe_state_changed(power, nullptr) == 0;
    };
    calls["device_power_unsubscribe_wakeup"] = [] {
        return device_power_unsubscribe_wakeup(power) == 0;
    };
    calls["device_power_unsubscribe_poweroff"] = [] {
        return device_power_unsubscribe_poweroff(power) == 0;
    };
    calls["device_power_unsubscribe_state_changed"] = [] {
        return device_power_unsubscribe_state_changed(power) == 0;
    };
    calls["init_notification_data_manager"] = [] {
        return init_notification_data_manager("portmeld", 0) == 0;
    };
    calls["add_notification_data"] = [this] {
        NotificationRecord record{};
        const int result = add_notification_data(&record);
        return worked<bool>(result, tv.screen().popup() != nullptr, false);
    };
    calls["register_notification_button_callback"] = [] {
        return register_notification_button_callback([](int, int, void*) {}, nullptr) == 0;
    };
    calls["register_notification_timeout_callback"] = [] {
        return register_notification_timeout_callback([](int, void*) {}, nullptr) == 0;
    };
    calls["register_notofication_hide_callback"] = [] {
        return register_notofication_hide_callback([](char*, void*) {}, nullptr) == 0;
    };
    calls["close_notification_data_manager"] = [] {
        return close_notification_data_manager() == 0;
    };
    calls["tvcontext_init"] = [] { return tvcontext_init() == 0; };
    calls["tvcontext_query_state"] = [] {
        int out = 42;
        tvcontext_init();
        return worked(tvcontext_query_state(&out), out, 42);
    };
    calls["tvcontext_fini"] = [] {
        tvcontext_init();
        return tvcontext_fini() == 0;
    };
    calls["csf_check_device_v2"] = [] {
        CCSFDeviceCheckHandle* out = nullptr;
        const auto take = [](void*, CCSFDeviceCheckHandle*, csf_event_e, const char*) {
            return true;
        };
        const int result = csf_check_device_v2("/nowhere", take, nullptr, &out);
        return worked<CCSFDeviceCheckHandle*>(result, out, nullptr);
    };
    calls["csf_stop_checking_device_v2"] = [] { return csf_stop_checking_device_v2(nullptr) == 0; };
    calls["app_control_create"] = [] {
        app_control_h out = nullptr;
        return worked<app_control_h>(app_control_create(&out), out, nullptr);
    };
    calls["app_control_destroy"] = [this] { return app_control_destroy(app) == 0; };
    calls["app_control_set_app_id"] = [this] { return app_control_set_app_id(app, "id") == 0; };
    calls["app_control_add_extra_data"] = [this] {
        return app_control_add_extra_data(app, "key", "value") == 0;
    };
    calls["app_control_send_launch_request"] = [this] {
        app_control_set_app_id(app, "id");
        const int result = app_control_send_launch_request(app, nullptr, nullptr);
        return worked<std::size_t>(result, tv.applications().launches().size(), 0);
    };
    calls["app_manager_is_running"] = [] {
        bool out = false;
        return worked(app_manager_is_running("app", &out), out, false);
    };
    calls["aul_app_is_running"] = [] { return aul_app_is_running("app") != 0; };
    calls["CKPILogService::SetKPILogServiceconfInfo"] = [] {
        return CKPILogService().SetKPILogServiceconfInfo(KPI_APP_USB) == 0;
    };
    calls["CKPILogService::SendKPILog"] = [this] {
        const int result = CKPILogService().SendKPILog(KPI_LOG_USB_33, "", "", "");
        return worked<std::size_t>(result, tv.small().usage.size(), 0);
    };
}

TEST_P(FaultableTest, WorksWhenNothingIsOrdered) {
    ASSERT_EQ(calls().count(GetParam().first), 1U) << "this test does not know it";
    EXPECT_TRUE(works(GetParam().first));
    tv.settle();
    EXPECT_TRUE(tv.journal().breaches().empty());
}

TEST_P(FaultableTest, FailsWhenOrdered) {
    const auto& [function, fault] = GetParam();
    tv.journal().order(function, fault, 1);
    EXPECT_FALSE(works(function));
    EXPECT_EQ(tv.journal().fault(function), std::nullopt) << "the order was carried out";
    EXPECT_TRUE(tv.journal().breaches().empty());
}

INSTANTIATE_TEST_SUITE_P(EveryFunction,
                         FaultableTest,
                         ::testing::ValuesIn(CallJournal::faultable()),
                         [](const auto& function) {
                             std::string name = function.param.first;
                             for (char& c : name) {
                                 c = g_ascii_isalnum(c) ? c : '_';
                             }
                             return name;
                         });

}  // namespace
