// The device list: insertion and removal with their counters, look-up, clean-up, the public queries, and
// the number that tells devices of one product apart.
//
// Look-ups ask the index. Each node that a walk through the list would pass is logged all the same, where
// anybody sees it.
#include <algorithm>

#include "MMDeviceMgr.h"
#include "MMLogger.h"

namespace {

CMMDeviceInfo* RecordOf(GList* pNode) {
    return static_cast<CMMDeviceInfo*>(pNode->data);
}

const std::string& KeyOf(CMMDeviceInfo* pRecord) {
    std::string* pKey = nullptr;
    pRecord->GetDeviceKey(&pKey);
    return *pKey;
}

/// What the log calls the counter of a file-system type that is counted.
const char* CounterName(int nFsType) {
    switch (nFsType) {
        case USB_FILESYSTEM_EXT4:
            return "EXT4";
        case USB_FILESYSTEM_FAT:
            return "fat";
        case USB_FILESYSTEM_EXFAT:
            return "exfat";
        default:
            return "ntfs";
    }
}

/// Asks for the number of cameras, where file-system types ask for those of a file system.
constexpr int COUNT_CAMERAS = 6;

}  // namespace

int get_list_count(GList* pList) {
    return pList != nullptr ? static_cast<int>(g_list_length(g_list_first(pList))) : 0;
}

int CMMDeviceMgr::m_DevListUpdate(CMMDeviceInfo* pDeviceInfo, bool bFlagInsert) {
    if (bFlagInsert) {
        m_DevInsertNode(pDeviceInfo);
    } else {
        m_DevDeleteNode(pDeviceInfo);
    }
    return MM_DEVICE_LIST_DONE;
}

/// Hand a new record to the list. The list refuses one whose key it holds already: that one is deleted,
/// and the listed one is the result.
CMMDeviceInfo* CMMDeviceMgr::m_ListOrDrop(std::unique_ptr<CMMDeviceInfo> pDeviceInfo) {
    m_DevListUpdate(pDeviceInfo.get(), true);
    CMMDeviceInfo* pListed = m_index.Find(KeyOf(pDeviceInfo.get()));
    return pListed == pDeviceInfo.get() ? pDeviceInfo.release() : pListed;
}

int CMMDeviceMgr::m_DevInsertNode(CMMDeviceInfo* pNode) {
    MM_INFO("pUsbDeviceHnd:%p", static_cast<void*>(pNode));
    if (pNode == nullptr) {
        MM_WARN("NULL == pNode");
        return MM_DEVICE_LIST_INVALID;
    }
    const std::string& strKey = KeyOf(pNode);
    MM_INFO("Device Key %s ", strKey.c_str());
    if (m_DeviceIsInList(strKey)) {
        MM_INFO("Device %s is in the list.", strKey.c_str());
        return MM_DEVICE_LIST_DONE;
    }
    const int nFsType = pNode->GetFileSystemType();
    if (int* pCounter = m_FileSystemCounter(nFsType); pCounter != nullptr) {
        ++*pCounter;
        MM_INFO("%s Count : %d", CounterName(nFsType), *pCounter);
    } else {
        MM_WARN("Unknow device type");
    }
    if (pNode->GetClass() == USB_CLASS_STILL_IMAGE) {
        ++m_nFsType6DeviceCount;
    }
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    m_pDevList = g_list_prepend(m_pDevList, pNode);
    m_index.Add(pNode);
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    return MM_DEVICE_LIST_DONE;
}

int CMMDeviceMgr::m_DevDeleteNode(CMMDeviceInfo* pNode) {
    MM_INFO("pNode:%p", static_cast<void*>(pNode));
    if (pNode == nullptr) {
        MM_WARN("NULL == pDeviceInfo");
        return MM_DEVICE_LIST_INVALID;
    }
    if (!m_DeviceIsInList(KeyOf(pNode))) {
        MM_INFO("Device is not in the list.");
        return MM_DEVICE_LIST_DONE;
    }
    int* pCounter = m_FileSystemCounter(pNode->GetFileSystemType());
    if (pCounter != nullptr && *pCounter > 0) {
        --*pCounter;
    }
    if (pNode->GetClass() == USB_CLASS_STILL_IMAGE) {
        --m_nFsType6DeviceCount;  // without a floor: it may go below 0
    }
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    m_pDevList = g_list_remove(m_pDevList, pNode);
    m_index.Remove(pNode);
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    return MM_DEVICE_LIST_DONE;
}

/// The counter of a file-system type; null for a type that is not counted.
int* CMMDeviceMgr::m_FileSystemCounter(int nFsType) {
    switch (nFsType) {
        case USB_FILESYSTEM_EXT4:
            return &m_nExt4FsDeviceCount;
        case USB_FILESYSTEM_FAT:
            return &m_nFatFsDeviceCount;
        case USB_FILESYSTEM_EXFAT:
            return &m_nExFatFsDeviceCount;
        case USB_FILESYSTEM_NTFS:
            return &m_nNtfsFsDeviceCount;
        default:
            return nullptr;
    }
}

/// The list for a walk that is made for its log lines alone; none when nobody sees them.
GList* CMMDeviceMgr::m_LoggedWalk() const {
    return MMInfoIsShown() ? m_pDevList : nullptr;
}

bool CMMDeviceMgr::m_DeviceIsInList(const std::string& strKey) {
    MM_INFO("pcDevName:%s", strKey.c_str());
    const CMMDeviceInfo* pFound = m_index.Find(strKey);
    for (GList* pNode = m_LoggedWalk(); pNode != nullptr; pNode = pNode->next) {
        MM_INFO("pNode:%p", pNode->data);
        if (RecordOf(pNode) == pFound) {
            break;
        }
    }
    return pFound != nullptr;
}

CMMDeviceInfo* CMMDeviceMgr::m_SearchDevice(const std::string& strKey) {
    MM_INFO("m_pDevList:%p,strDeviceKey :%s", static_cast<void*>(m_pDevList), strKey.c_str());
    if (m_pDevList == nullptr) {
        MM_INFO("m_pDevList is null");
        return nullptr;
    }
    CMMDeviceInfo* pFound = m_index.Find(strKey);
    for (GList* pNode = m_LoggedWalk(); pNode != nullptr; pNode = pNode->next) {
        MM_INFO("%p", pNode->data);
        MM_INFO("Device Key:%s", KeyOf(RecordOf(pNode)).c_str());
        if (RecordOf(pNode) == pFound) {
            break;
        }
    }
    if (pFound != nullptr) {
        MM_INFO("Finde device");
    }
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    return pFound;
}

void CMMDeviceMgr::m_DeviceListClean(_MMDeviceListType_E eListType) {
    MM_INFO("m_pDevList:%p,eListType:%u", static_cast<void*>(m_pDevList),
            static_cast<unsigned>(eListType));
    if (eListType != MM_DEVICE_LIST_USB || m_pDevList == nullptr) {
        return;
    }
    m_index.Clear();
    for (GList* pNode = m_pDevList; pNode != nullptr; pNode = pNode->next) {
        m_DestroyRecord(RecordOf(pNode));
    }
    g_list_free(m_pDevList);
    m_pDevList = nullptr;
}

void CMMDeviceMgr::m_NotifyClient(CMMDeviceInfo* pDeviceInfo) {
    if (m_pDeviceNotifyCB != nullptr) {
        m_pDeviceNotifyCB(m_pDeviceNotifyUserData);
    }
    if (m_pDeviceEventCB != nullptr) {
        m_pDeviceEventCB(m_pDeviceEventUserData, pDeviceInfo, true);
    }
}

int CMMDeviceMgr::m_GetValidIndex(const _stUsedIndexes& stUsed, int nMaxIndex) {
    MM_INFO("IndexVector size :%d, MaxIndex:%d", stUsed.nCount, nMaxIndex);
    if (stUsed.nCount == 0 || nMaxIndex < 0) {
        return 0;
    }
    // The first candidate above the maximum is taken without a look at whether it is used.
    return stUsed.nLowestFree <= nMaxIndex ? stUsed.nLowestFree
                                           : std::max(CMMIndexCounts::FIRST_NUMBER, nMaxIndex + 1);
}

int CMMDeviceMgr::GetDeviceCount() {
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    const int nCount = get_list_count(m_pDevList);
    MM_INFO("m_pDevList:%p nCount=%d", static_cast<void*>(m_pDevList), nCount);
    return nCount;
}

int CMMDeviceMgr::GetDeviceCount(int nFsType) {
    MM_INFO("FS type :%d", nFsType);
    if (nFsType == USB_FILESYSTEM_EXFAT) {
        MM_INFO("m_nExFatFsDeviceCount :%d", m_nExFatFsDeviceCount);
        return m_nExFatFsDeviceCount;
    }
    int nCount = m_nExt4FsDeviceCount + m_nFatFsDeviceCount + m_nExFatFsDeviceCount +
                 m_nNtfsFsDeviceCount + m_nFsType6DeviceCount;
    if (nFsType == COUNT_CAMERAS) {
        nCount = m_nFsType6DeviceCount;
    } else if (const int* pCounter = m_FileSystemCounter(nFsType); pCounter != nullptr) {
        nCount = *pCounter;
    }
    MM_INFO("%d", nCount);
    return nCount;
}

int CMMDeviceMgr::GetDeviceInfo(std::string& strKey, CMMDeviceInfo* pDeviceInfo) {
    MM_INFO("Device Name :%s, pDeviceInfo :%p", strKey.c_str(), static_cast<void*>(pDeviceInfo));
    CMMDeviceInfo* pListed = m_SearchDevice(strKey);
    if (pListed == nullptr || pDeviceInfo == nullptr) {
        return MM_DEVICE_LIST_NOT_FOUND;
    }
    pDeviceInfo->Copy(pListed);
    return MM_DEVICE_LIST_DONE;
}

GList* CMMDeviceMgr::GetDeviceList() {
    MM_INFO("m_pDevList :%p", static_cast<void*>(m_pDevList));
    if (m_pDevList == nullptr) {
        m_RequestMassStorageList();
        m_RequestPTPDeviceList();
    }
    return m_pDevList;
}
