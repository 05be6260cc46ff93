// Operations and members of the device manager that no event of the platform can reach on its own.
// Everything else is tested through the platform's doors.
#pragma once

#include <string>
#include <vector>

#include "MMDeviceMgr.h"

class CMMDeviceMgrTestAccess {
public:
    explicit CMMDeviceMgrTestAccess(CMMDeviceMgr& mgr) : mgr_(mgr) {}

    // lifetime
    CMMDeviceInfo* currentDevice() { return mgr_.m_pDeviceInfo; }
    CMMDeviceInfo* displayedDevice() { return mgr_.m_pDisplayedDeviceInfo; }
    CMMDeviceInfo* retiredDevice() { return mgr_.m_pRetiredDeviceInfo; }
    unsigned droppedRecords() { return g_list_length(mgr_.m_pDroppedList); }

    // state
    bool activated() { return mgr_.m_bActivated; }
    bool notificationShown() { return mgr_.m_bNotificationShown; }
    std::string shownNotification() { return mgr_.m_strShownNotification; }
    int notificationType() { return mgr_.m_eNotifactiontype; }
    void setNotificationType(int type) { mgr_.m_eNotifactiontype = type; }
    const _stScanFileData& scanFile() { return mgr_.m_stScanFileData; }
    GList* list() { return mgr_.m_pDevList; }

    // list
    int update(CMMDeviceInfo* record, bool insert) { return mgr_.m_DevListUpdate(record, insert); }
    int insert(CMMDeviceInfo* record) { return mgr_.m_DevInsertNode(record); }
    int remove(CMMDeviceInfo* record) { return mgr_.m_DevDeleteNode(record); }
    void clean(int type) { mgr_.m_DeviceListClean(static_cast<_MMDeviceListType_E>(type)); }
    int validIndex(const std::vector<int>& used, int max) {
        CMMIndexCounts counts;
        for (const int number : used) {
            counts.Add(number);
        }
        return mgr_.m_GetValidIndex(counts.All(), max);
    }
    void notifyClient(CMMDeviceInfo* record) { mgr_.m_NotifyClient(record); }
    bool isInList(const std::string& key) { return mgr_.m_DeviceIsInList(key); }
    CMMDeviceInfo* search(const std::string& key) { return mgr_.m_SearchDevice(key); }

    // extension points without a setter
    void setNotifyCallback(void (*callback)(void*), void* data) {
        mgr_.m_pDeviceNotifyCB = callback;
        mgr_.m_pDeviceNotifyUserData = data;
    }
    void setRemovedCallback(void (*callback)(void*, std::string), void* data) {
        mgr_.m_pDeviceRemovedCB = callback;
        mgr_.m_pDeviceRemovedUserData = data;
    }

    // operations that nothing calls, or that are called with sound arguments only
    void scanUsbStorage() { mgr_.m_ScanUSBStorage(); }
    bool enableLumet() { return mgr_.m_EnableLumet(); }
    bool vconfigBool(const std::string& key) { return mgr_.m_GetVconfigBool(key); }
    bool vconfString(const char* key, std::string& value) {
        return mgr_.m_GetVconfString(key, value);
    }
    void connectedDevice(usb_device_s* handle) { mgr_.m_ConnectedDevice(handle); }
    void attachEvent(usb_device_s* handle, int usbClass, bool mounted) {
        mgr_.m_HandleAttachEvent(handle, usbClass, mounted);
    }
    CMMDeviceInfo* addDeviceNode(usb_device_s* handle) { return mgr_.m_AddDeviceNode(handle); }
    void disconnectedDevice(usb_device_s* handle) { mgr_.m_DisconnectedDevice(handle); }
    void usbStorageInfo(usb_device_s* handle, CMMDeviceInfo* record) {
        mgr_.m_GetUsbStorageInfo(handle, record);
    }
    void checkProductName(CMMDeviceInfo* record) { mgr_.m_CheckDeviceProductName(record); }
    bool isMultiHdd() { return mgr_.m_IsMultiHDD(); }
    bool isSameDevice() { return mgr_.m_IsSameDeviceWithDisplayedDevice(); }
    void launchAddNotification() { mgr_.m_LaunchAddNotification(); }
    void launchLumet(CMMDeviceInfo* record, int action) { mgr_.m_LaunchLumet(record, action); }
    void launchFolian() { mgr_.m_LaunchFolian(); }
    void launchPlayer() { mgr_.m_LaunchPlayer(); }
    std::string launchString() { return mgr_.m_GetLaunchString(); }
    std::string sizeText(int* size) { return mgr_.m_GetSizeStr(size); }
    std::string timeText(std::time_t* time) { return mgr_.m_GetTimeStr(time); }
    bool fileName(const std::string& name, std::string& base, std::string& extension) {
        return mgr_.m_GetFileName(name, base, extension);
    }

    // callbacks, for calls with a user data that is null or dead
    static gboolean startUpTimer(void* user) {
        return CMMDeviceMgr::m_DeviceInitializeTimerCB(user);
    }
    static gboolean enableTimer(void* user) { return CMMDeviceMgr::m_ChangeEnableTimerCB(user); }
    static gboolean demoTimer(void* user) {
        return CMMDeviceMgr::m_LaunchAllDemoPlayerTimerCB(user);
    }
    static int wakeup(void* user) { return CMMDeviceMgr::m_WakeupChangedCB(1, user); }
    static int poweroff(void* user) { return CMMDeviceMgr::m_PoweroffChangedCB(1, user); }
    static int powerState(void* user) { return CMMDeviceMgr::m_PowerStateChangedCB(2, user); }
    static void useMode(void* user) { CMMDeviceMgr::m_UseModeChangedCB(nullptr, user); }
    static void dlnaName(void* user) {
        CMMDeviceMgr::m_RemovedDLNADeviceNameChangedCB(nullptr, user);
    }
    static void button(void* user) { CMMDeviceMgr::m_OnButtonClickCB(0, 0, user); }
    static void hide(void* user) { CMMDeviceMgr::m_OnNotificationHideCB(nullptr, user); }
    static void timeout(void* user) { CMMDeviceMgr::m_OnNotificationTimeOutCB(0, user); }
    static bool scan(void* user) {
        return CMMDeviceMgr::m_OnScanDeviceCB(user, nullptr, CSF_EVENT_SINGLE_MEDIA, "{}");
    }
    static void usb(usb_device_s* handle, char* action, void* user) {
        CMMDeviceMgr::m_OnDetectUsbCB(handle, action, user);
    }
    static bool demoWalk(usb_device_s* handle, void* user) {
        return CMMDeviceMgr::m_OnConnectedUsbForDemoCallback(handle, user);
    }

private:
    CMMDeviceMgr& mgr_;
};
