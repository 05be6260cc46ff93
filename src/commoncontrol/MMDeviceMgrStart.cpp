// Start-up and end of the manager: its subscriptions to the platform, the deferred start 30 s later, and
// the settings that it reads and watches.
#include <cstdlib>
#include <memory>

#include <platform/power.h>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMNames.h"

namespace {

// The TV is busy with its own start for that long, and sticks that are in anyway can wait.
constexpr unsigned START_UP_DELAY_MS = 30000;

struct SFree {
    void operator()(char* pText) const { std::free(pText); }
};

}  // namespace

bool CMMDeviceMgr::Create() {
    usb_device_init();
    init_notification_data_manager(MMNames::SELF, 0);
    register_notification_button_callback(m_OnButtonClickCB, this);
    register_notification_timeout_callback(m_OnNotificationTimeOutCB, this);
    register_notofication_hide_callback(m_OnNotificationHideCB, this);
    g_timeout_add(START_UP_DELAY_MS, m_DeviceInitializeTimerCB, this);

    const int nWakeup = device_power_subscribe_wakeup(m_WakeupChangedCB, this);
    const int nPowerOff = device_power_subscribe_poweroff(m_PoweroffChangedCB, this);
    const int nStateChange = device_power_subscribe_state_changed(m_PowerStateChangedCB, this);
    MM_INFO(
        "power_subscribe result_wakeup=%d, result_power_off=%d, result_state_change=%d, this=%p",
        nWakeup, nPowerOff, nStateChange, static_cast<void*>(this));

    m_RegisterUseModeCallback();
    m_RegisterRemovedDLNADeviceNameCallback();
    return true;
}

void CMMDeviceMgr::Destroy() {
    MM_INFO("CMMUsbStorage start....\n");
    if (m_pDevList != nullptr) {
        m_DeviceListClean(MM_DEVICE_LIST_USB);
    }
    usb_device_fini();
    usb_unset_connected_cb();
    close_notification_data_manager();
    if (m_hAppControl != nullptr) {
        app_control_destroy(m_hAppControl);
        m_hAppControl = nullptr;
    }
    m_pDeviceNotifyCB = nullptr;
    m_pDeviceNotifyUserData = nullptr;
    m_pDeviceRemovedCB = nullptr;
    m_pDeviceRemovedUserData = nullptr;
    m_pDeviceEventCB = nullptr;
    m_pDeviceEventUserData = nullptr;
    const int nWakeup = device_power_unsubscribe_wakeup(m_WakeupChangedCB);
    MM_INFO("power_unsubscribe_wakeup res=%d", nWakeup);
    device_power_unsubscribe_poweroff(m_PoweroffChangedCB);
    device_power_unsubscribe_state_changed(m_PowerStateChangedCB);
    MM_INFO("finish....\n");
}

gboolean CMMDeviceMgr::m_DeviceInitializeTimerCB(void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        return FALSE;
    }
    pMgr->m_bActivated = true;
    if (pMgr->m_hAppControl == nullptr && app_control_create(&pMgr->m_hAppControl) != 0) {
        MM_WARN("app_control_create fail");
        return FALSE;
    }
    pMgr->m_DeviceInit();
    return FALSE;
}

int CMMDeviceMgr::m_DeviceInit() {
    if (m_pDevList != nullptr) {
        m_DeviceListClean(MM_DEVICE_LIST_USB);
    }
    const bool bInternalDemo = m_CheckInternalDemoStatus();
    const bool bShopMode = m_IsShopMode();
    if (bShopMode && bInternalDemo) {
        m_LaunchInternalDemoPlayer(true);
        MM_INFO("launch internal demo player");
    } else if (bShopMode) {
        usb_mass_storage_foreach(m_OnConnectedUsbForDemoCallback, this);
    }
    usb_set_connected_cb(m_OnDetectUsbCB, this);
    return 0;
}

bool CMMDeviceMgr::m_GetVconfigBool(const std::string& strKey) {
    int nValue = 0;
    return vconf_get_bool(strKey.c_str(), &nValue) == 0 && nValue == 1;
}

int CMMDeviceMgr::m_GetVconfigInt(const std::string& strKey) {
    int nValue = 0;
    return vconf_get_int(strKey.c_str(), &nValue) == 0 ? nValue : 0;
}

bool CMMDeviceMgr::m_GetVconfString(const char* pKey, std::string& strValue) {
    const std::unique_ptr<char, SFree> pValue(vconf_get_str(pKey));
    if (pValue == nullptr) {
        MM_WARN("NULL == pValue");
        strValue.clear();
        return false;
    }
    strValue = pValue.get();
    MM_DEBUG("stored path are %s", strValue.c_str());
    return true;
}

bool CMMDeviceMgr::m_RegisterUseModeCallback() {
    const int nResult = vconf_notify_key_changed(MMNames::KEY_USE_MODE, m_UseModeChangedCB, this);
    MM_INFO("RegisterUseModeCb added : %d", nResult);
    return true;
}

bool CMMDeviceMgr::m_RegisterRemovedDLNADeviceNameCallback() {
    const int nResult = vconf_notify_key_changed(MMNames::KEY_REMOVED_DLNA_DEVICE,
                                                 m_RemovedDLNADeviceNameChangedCB, this);
    MM_INFO("m_RegisterRemovedDLNADeviceNameCallback added : %d", nResult);
    return true;
}

void CMMDeviceMgr::m_UseModeChangedCB(keynode_s* /*pNode*/, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("m_UseModeChangedCB: pThis is NULL");
        return;
    }
    pMgr->m_LaunchAllDemoPlayer(false);
}
