// The manager as an object: the singleton, its members' beginning and end, and the lifetime of the
// device records, which outlives their place in the list where something still compares with them.
#include "MMDeviceMgr.h"

#include "MMLiveObjects.h"
#include "MMLogger.h"

CMMDeviceMgr* CMMDeviceMgr::m_pInstance = nullptr;

CMMDeviceMgr::CMMDeviceMgr()
    : m_pDevList(nullptr),
      m_nEnableTimerId(0),
      m_nDemoTimerId(0),
      m_pDeviceNotifyCB(nullptr),
      m_pDeviceNotifyUserData(nullptr),
      m_pDeviceRemovedCB(nullptr),
      m_pDeviceRemovedUserData(nullptr),
      m_pDeviceEventCB(nullptr),
      m_pDeviceEventUserData(nullptr),
      m_nExt4FsDeviceCount(0),
      m_nFatFsDeviceCount(0),
      m_nExFatFsDeviceCount(0),
      m_nNtfsFsDeviceCount(0),
      m_nFsType6DeviceCount(0),
      m_bActivated(false),
      m_bStandby(false),
      m_bNotificationShown(false),
      m_hAppControl(nullptr),
      m_hScanHandle(nullptr),
      m_eNotifactiontype(-1),
      m_pDeviceInfo(nullptr),
      m_pDisplayedDeviceInfo(nullptr),
      m_pRetiredDeviceInfo(nullptr),
      m_pDroppedList(nullptr) {
    CMMLiveObjects<CMMDeviceMgr>::Add(this);
}

CMMDeviceMgr::~CMMDeviceMgr() {
    CMMLiveObjects<CMMDeviceMgr>::Remove(this);
    while (g_source_remove_by_user_data(this)) {
    }
    m_pDeviceInfo = nullptr;
    m_SetDisplayedDevice(nullptr);
    m_DropDeviceList();
    m_FreeDroppedRecords();
}

CMMDeviceMgr* CMMDeviceMgr::GetInstance() {
    MM_INFO("Instance :%p", static_cast<void*>(m_pInstance));
    if (m_pInstance == nullptr) {
        m_pInstance = new CMMDeviceMgr();
        if (!m_pInstance->Create()) {
            MM_WARN("Create CMMDeviceMgr instance fail");
            DestroyInstance();
        }
    }
    MM_INFO("Instance :%p", static_cast<void*>(m_pInstance));
    return m_pInstance;
}

void CMMDeviceMgr::DestroyInstance() {
    delete m_pInstance;
    m_pInstance = nullptr;
}

void CMMDeviceMgr::SetDeviceEventCallback(void (*pCallback)(void*, CMMDeviceInfo*, bool),
                                          void* pUserData) {
    m_pDeviceEventCB = pCallback;
    m_pDeviceEventUserData = pUserData;
}

void CMMDeviceMgr::SetActivated(bool bActivated) {
    m_bActivated = bActivated;
}

void CMMDeviceMgr::SetStandby(bool bStandby) {
    m_bStandby = bStandby;
}

bool CMMDeviceMgr::IsStandby() {
    return m_bStandby;
}

/// End a record that has left the list. Nobody is left pointing at it: the current device becomes none,
/// and the displayed one is kept until the display moves on, so that the same stick is recognised.
void CMMDeviceMgr::m_DestroyRecord(CMMDeviceInfo* pDeviceInfo) {
    if (pDeviceInfo == m_pDeviceInfo) {
        m_pDeviceInfo = nullptr;
    }
    if (pDeviceInfo == m_pDisplayedDeviceInfo) {
        m_pRetiredDeviceInfo = pDeviceInfo;
        return;
    }
    delete pDeviceInfo;
}

void CMMDeviceMgr::m_SetDisplayedDevice(CMMDeviceInfo* pDeviceInfo) {
    m_pDisplayedDeviceInfo = pDeviceInfo;
    if (m_pRetiredDeviceInfo != pDeviceInfo) {
        delete m_pRetiredDeviceInfo;
        m_pRetiredDeviceInfo = nullptr;
    }
}

/// Forget the list as it stands: its records are kept aside, since the current and the displayed device
/// may be among them.
void CMMDeviceMgr::m_DropDeviceList() {
    m_pDroppedList = g_list_concat(m_pDevList, m_pDroppedList);
    m_pDevList = nullptr;
    m_index.Clear();
}

/// Free the records of lists dropped earlier, except those that are still pointed at.
void CMMDeviceMgr::m_FreeDroppedRecords() {
    GList* pKept = nullptr;
    for (GList* pNode = m_pDroppedList; pNode != nullptr; pNode = pNode->next) {
        auto* pRecord = static_cast<CMMDeviceInfo*>(pNode->data);
        if (pRecord == m_pDeviceInfo || pRecord == m_pDisplayedDeviceInfo) {
            pKept = g_list_prepend(pKept, pRecord);
        } else {
            delete pRecord;
        }
    }
    g_list_free(m_pDroppedList);
    m_pDroppedList = pKept;
}
