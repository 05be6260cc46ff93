// The device manager: owns the list of attached devices and does all reacting to USB, power, settings,
// scan and notification events. One class, one source file per subject:
//
//   MMDeviceMgr.cpp                 singleton, lifetime of the manager and of its records
//   MMDeviceMgrStart.cpp            start-up and end, settings and their watches
//   MMDeviceMgrPower.cpp            wake-up, power-off, standby, activation
//   MMDeviceMgrUsbIntake.cpp        USB events, enumeration
//   MMDeviceMgrIdentification.cpp   what a device is: key, names, numbers, capacity
//   MMDeviceMgrList.cpp             the list, its counters and its queries
//   MMDeviceMgrNotification.cpp     pop-ups and what their buttons do
//   MMDeviceMgrScan.cpp             the result of a content scan
//   MMDeviceMgrLaunch.cpp           launching applications
//   MMDeviceMgrDemo.cpp             shop demo
//
// One thread: every callback runs to the end before the next. No call blocks on another process.
#pragma once

#include <ctime>
#include <memory>
#include <string>

#include <glib.h>

#include <platform/application.h>
#include <platform/content_scan.h>
#include <platform/notification.h>
#include <platform/settings.h>
#include <platform/usb.h>

#include "MMDeviceIndex.h"
#include "MMDeviceInfo.h"

/// Kinds of list; only the one of USB devices exists.
enum _MMDeviceListType_E : unsigned { MM_DEVICE_LIST_USB = 1 };

/// Results of the list operations.
enum {
    MM_DEVICE_LIST_DONE = 0,     ///< done, also when there was nothing to do
    MM_DEVICE_LIST_INVALID = 9,  ///< null argument or no list
    MM_DEVICE_LIST_NOT_FOUND = 10
};

/// Kinds of scanned file.
enum { SCAN_FILE_NONE = 0, SCAN_FILE_PHOTO = 1, SCAN_FILE_VIDEO = 2, SCAN_FILE_MUSIC = 3 };

/// What the companion application is told of a device.
enum { LUMET_DEVICE_ADDED = 1, LUMET_DEVICE_REMOVED = 2 };

/// The single media file that a content scan found. One at a time; a field that a later result does
/// not set keeps its earlier value.
struct _stScanFileData {
    int nType = SCAN_FILE_NONE;
    std::string strFileName;  ///< name as shown
    std::string strFilePath;  ///< absolute path
    std::string strTitle;     ///< music
    std::string strArtist;    ///< music
    std::string strAlbum;     ///< music
    std::string strDate;      ///< photo and video: modified, "YYYY-MM-DD"
    std::string strSize;      ///< photo: size with unit
    std::string strSpare;     ///< nothing fills it
    std::string strFormat;    ///< video: extension in upper case
};

/// Length of the list that `pList` is a node of; 0 for null.
int get_list_count(GList* pList);

class CMMDeviceJsonValue;
struct _stMMDeviceState;

class CMMDeviceMgr {
public:
    CMMDeviceMgr();
    virtual ~CMMDeviceMgr();
    CMMDeviceMgr(const CMMDeviceMgr&) = delete;
    CMMDeviceMgr& operator=(const CMMDeviceMgr&) = delete;

    /// The one manager, made and subscribed to the platform on first use. Null only when its creation
    /// failed; the next call tries again.
    static CMMDeviceMgr* GetInstance();

    /// Delete the one manager, if there is one. Call Destroy() on it first.
    static void DestroyInstance();

    /// Subscribe to the platform and arm the start-up timer (30 s), before which no USB event is taken.
    /// Always true: refused subscriptions are logged only.
    bool Create();

    /// Give back what Create() and the start-up timer took from the platform, and empty the list. The two
    /// settings watches and pending timers stay: the process is about to end.
    void Destroy();

    /// Who is told of device events: (user data, record, true attached / false removed). The record is
    /// lent for the call. Null to stop.
    void SetDeviceEventCallback(void (*pCallback)(void*, CMMDeviceInfo*, bool), void* pUserData);

    /// Allow or forbid what a connection starts: pop-up, demo playback, telling the companion application.
    void SetActivated(bool bActivated);

    /// Note that the TV is in standby, or no longer; a power-off notice clears it too.
    void SetStandby(bool bStandby);
    bool IsStandby();

    /// Number of listed devices.
    int GetDeviceCount();

    /// A counter: file-system type 0 FAT, 1 exFAT, 2 EXT4, 3 NTFS; 6 cameras; anything else all five
    /// together. Counters follow insertions and removals only: they survive a cleaned list.
    int GetDeviceCount(int nFsType);

    /// Copy the record with this key into `pDeviceInfo`. 0 done, 10 not found or null target.
    int GetDeviceInfo(std::string& strKey, CMMDeviceInfo* pDeviceInfo);

    /// The list itself, newest device first; lent, neither to be changed nor freed. Enumerates the
    /// attached devices first when it is empty; null when there are none.
    GList* GetDeviceList();

    /// Copy what the one manager knows into `stState`, without a trace in log or list; see MMDeviceState.h.
    /// False when there is no manager.
    static bool ReadState(_stMMDeviceState& stState);

private:
    friend class CMMDeviceMgrTestAccess;  // tests of operations that no event can reach on its own

    // ---- settings (MMDeviceMgrStart.cpp)
    bool m_GetVconfigBool(const std::string& strKey);
    int m_GetVconfigInt(const std::string& strKey);
    bool m_GetVconfString(const char* pKey, std::string& strValue);
    bool m_RegisterUseModeCallback();
    bool m_RegisterRemovedDLNADeviceNameCallback();
    static void m_UseModeChangedCB(keynode_s* pNode, void* pThis) noexcept;

    // ---- start-up (MMDeviceMgrStart.cpp)
    static gboolean m_DeviceInitializeTimerCB(void* pThis) noexcept;
    int m_DeviceInit();

    // ---- lifetime of records (MMDeviceMgr.cpp)
    void m_DestroyRecord(CMMDeviceInfo* pDeviceInfo);
    void m_SetDisplayedDevice(CMMDeviceInfo* pDeviceInfo);
    void m_DropDeviceList();
    void m_FreeDroppedRecords();

    // ---- power (MMDeviceMgrPower.cpp)
    static int m_WakeupChangedCB(int nReason, void* pThis) noexcept;
    static int m_PoweroffChangedCB(int nOption, void* pThis) noexcept;
    static int m_PowerStateChangedCB(int nState, void* pThis) noexcept;
    static gboolean m_ChangeEnableTimerCB(void* pThis) noexcept;
    static void m_RemoveTimer(unsigned nTimerId);
    void m_StartDemoTimer();

    // ---- USB events (MMDeviceMgrUsbIntake.cpp)
    static void m_OnDetectUsbCB(usb_device_s* pUsbDeviceHnd, char* pcAction, void* pThis) noexcept;
    void m_HandleAttachEvent(usb_device_s* pUsbDeviceHnd, int nClass, bool bMounted);
    void m_ConnectedDevice(usb_device_s* pUsbDeviceHnd);
    void m_DisconnectedDevice(usb_device_s* pUsbDeviceHnd);
    CMMDeviceInfo* m_AddDeviceNode(usb_device_s* pUsbDeviceHnd);
    void m_DeleteDeviceNode(CMMDeviceInfo* pDeviceInfo);
    void m_RequestMassStorageList();
    void m_RequestPTPDeviceList();
    void m_RequestDeviceList(int nClass);
    void m_AddEnumeratedDevice(usb_device_s* pDeviceH);
    void m_ScanUSBStorage();

    // ---- identification (MMDeviceMgrIdentification.cpp)
    int m_GetDeviceClass(usb_device_s* pUsbDeviceHnd);
    std::string m_GetDeviceKey(usb_device_s* pUsbDeviceHnd);
    std::string m_GetDeviceDisplayName(usb_device_s* pUsbDeviceHnd);
    void m_GetUsbStorageInfo(usb_device_s* pUsbDeviceHnd, CMMDeviceInfo* pDeviceNode);
    void m_GetDeviceCapacity(const std::string& strMountPath, CMMDeviceInfo* pDeviceNode);
    void m_CheckDeviceProductName(CMMDeviceInfo* pDeviceInfo);
    bool m_IsMultiHDD();
    void m_PrintDebugLogForUSBInfo(usb_device_s* pUsbDeviceHnd);

    // ---- list (MMDeviceMgrList.cpp)
    int m_DevListUpdate(CMMDeviceInfo* pDeviceInfo, bool bFlagInsert);
    int m_DevInsertNode(CMMDeviceInfo* pNode);
    int m_DevDeleteNode(CMMDeviceInfo* pNode);
    CMMDeviceInfo* m_ListOrDrop(std::unique_ptr<CMMDeviceInfo> pDeviceInfo);
    int* m_FileSystemCounter(int nFsType);
    GList* m_LoggedWalk() const;
    bool m_DeviceIsInList(const std::string& strKey);
    CMMDeviceInfo* m_SearchDevice(const std::string& strKey);
    void m_DeviceListClean(_MMDeviceListType_E eListType);
    int m_GetValidIndex(const _stUsedIndexes& stUsed, int nMaxIndex);
    void m_NotifyClient(CMMDeviceInfo* pDeviceInfo);

    // ---- notifications (MMDeviceMgrNotification.cpp)
    void m_LaunchAddNotification();
    void m_LaunchRemoveNotification(const std::string& strName, int nDeviceClass);
    void m_ShowRemoveNotification(const std::string& strName, int nDeviceClass);
    bool m_IsSameDeviceWithDisplayedDevice();
    bool m_IsDistractionFreeMode();
    bool m_IsTVContextDistractionMode();
    static void m_RemovedDLNADeviceNameChangedCB(keynode_s* pNode, void* pThis) noexcept;
    static void m_OnButtonClickCB(int nItemType, int nButtonIndex, void* pThis) noexcept;
    static void m_OnNotificationHideCB(char* pText, void* pThis) noexcept;
    static void m_OnNotificationTimeOutCB(int nItemType, void* pThis) noexcept;

    // ---- content scan (MMDeviceMgrScan.cpp)
    static bool m_OnScanDeviceCB(void* pThis,
                                 CCSFDeviceCheckHandle* pHandle,
                                 csf_event_e eEvent,
                                 const char* pJson) noexcept;
    void m_TakeScanResult(CMMDeviceJsonValue& jsonValue);
    std::string m_GetSizeStr(int* pSize);
    std::string m_GetTimeStr(std::time_t* pTime);
    bool m_GetFileName(const std::string& strName, std::string& strBase, std::string& strExtension);

    // ---- launching (MMDeviceMgrLaunch.cpp)
    void m_LaunchPlayer();
    std::string m_GetLaunchString();
    void m_LaunchFolian();
    void m_LaunchLumet(CMMDeviceInfo* pNode, int nAction);
    void m_SendLumetLaunch(CMMDeviceInfo* pNode, const char* pDeviceAction);
    void m_SetExtraData(CMMDeviceInfo* pNode);
    void m_AddExtraData(const char* pKey, const std::string& strValue);
    void m_AddExtraData(const char* pKey, int nValue);
    void m_SendLaunchRequest(const char* pAppId);
    static bool m_IsAppRunning(const char* pAppId);
    bool m_EnableLumet();

    // ---- demo (MMDeviceMgrDemo.cpp)
    bool m_IsShopMode();
    bool m_CheckInternalDemoStatus();
    bool m_CheckDemoFile(const std::string& strPath);
    void m_LaunchDemoPlayer(const std::string& strPath, bool bCheckDistraction);
    void m_LaunchInternalDemoPlayer(bool bCheckDistraction);
    void m_LaunchAllDemoPlayer(bool bCheckDistraction);
    static gboolean m_LaunchAllDemoPlayerTimerCB(void* pThis) noexcept;
    static bool m_OnConnectedUsbForDemoCallback(usb_device_s* pUsbDeviceHnd, void* pThis) noexcept;

    GList* m_pDevList;                 // CMMDeviceInfo*, owned, newest first
    CMMDeviceIndex m_index;            // of that list
    unsigned m_nEnableTimerId;         // may be stale
    unsigned m_nDemoTimerId;           // may be stale
    void (*m_pDeviceNotifyCB)(void*);  // extension point: nothing sets it
    void* m_pDeviceNotifyUserData;
    void (*m_pDeviceRemovedCB)(void*, std::string);  // extension point: nothing sets it
    void* m_pDeviceRemovedUserData;
    void (*m_pDeviceEventCB)(void*, CMMDeviceInfo*, bool);
    void* m_pDeviceEventUserData;
    int m_nExt4FsDeviceCount;
    int m_nFatFsDeviceCount;
    int m_nExFatFsDeviceCount;
    int m_nNtfsFsDeviceCount;
    int m_nFsType6DeviceCount;  // cameras
    bool m_bActivated;          // connections may start something
    bool m_bStandby;
    bool m_bNotificationShown;             // a removal notice is on screen
    std::string m_strShownNotification;    // whose
    app_control_h m_hAppControl;           // for every launch; null before the start-up timer
    CCSFDeviceCheckHandle* m_hScanHandle;  // of the last scan, which may be long over
    int m_eNotifactiontype;                // last connection pop-up: 1 browse, 0 play, -1 none yet
    _stScanFileData m_stScanFileData;
    CMMDeviceInfo* m_pDeviceInfo;           // what the pop-up or launch is about; not owned
    CMMDeviceInfo* m_pDisplayedDeviceInfo;  // of the last browse pop-up; only compared

    CMMDeviceInfo*
        m_pRetiredDeviceInfo;  // owned: the displayed record, once it was to be destroyed
    GList* m_pDroppedList;     // owned: records of lists dropped by wake-ups

    static CMMDeviceMgr* m_pInstance;
};
