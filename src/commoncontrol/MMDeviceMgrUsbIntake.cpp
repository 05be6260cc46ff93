// USB events into the device list: "added" lists a mass-storage device, "mounted" makes it known to the
// viewer, "removed" takes it out again; a camera is ready as soon as it is added. An attach event that
// meets an empty list has all attached devices enumerated first.
#include <memory>
#include <utility>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMNames.h"

namespace {

struct SFreeDevice {
    void operator()(usb_device_s* pDevice) const { free_usb_device_h(pDevice); }
};
using UsbDeviceHandle = std::unique_ptr<usb_device_s, SFreeDevice>;

struct SFreeDeviceList {
    void operator()(usb_device_list_s* pList) const { usb_device_free_device_list(pList); }
};
using UsbDeviceList = std::unique_ptr<usb_device_list_s, SFreeDeviceList>;

}  // namespace

void CMMDeviceMgr::m_OnDetectUsbCB(usb_device_s* pUsbDeviceHnd,
                                   char* pcAction,
                                   void* pThis) noexcept {
    MM_DEBUG("pUsbDeviceHnd:%p  pcAction=%s", static_cast<void*>(pUsbDeviceHnd), MMText(pcAction));
    if (pUsbDeviceHnd == nullptr || pcAction == nullptr) {
        MM_WARN("NULL == pUsbDeviceHnd || NULL == pcAction");
        return;
    }
    const UsbDeviceHandle hDevice(pUsbDeviceHnd);
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("NULL == pThis");
        return;
    }
    const int nClass = usb_device_get_class(pUsbDeviceHnd);
    if (nClass != USB_CLASS_STILL_IMAGE && nClass != USB_CLASS_MASS_STORAGE) {
        MM_INFO("class[%d]. The device is not storage", nClass);
        return;
    }
    const int nDiskType = usb_mass_storage_get_disk_type(pUsbDeviceHnd);
    if (nClass == USB_CLASS_MASS_STORAGE && nDiskType == USB_DISK_UNKNOWN) {
        MM_INFO("The device is Usb, but disk type[%d] is unkown", nDiskType);
        return;
    }
    const bool bMounted = g_strcmp0(pcAction, USB_ACTION_MOUNTED) == 0;
    if (bMounted || g_strcmp0(pcAction, USB_ACTION_ADDED) == 0) {
        pMgr->m_HandleAttachEvent(pUsbDeviceHnd, nClass, bMounted);
    } else if (g_strcmp0(pcAction, USB_ACTION_REMOVED) == 0) {
        pMgr->m_DisconnectedDevice(pUsbDeviceHnd);
    }
}

void CMMDeviceMgr::m_HandleAttachEvent(usb_device_s* pUsbDeviceHnd, int nClass, bool bMounted) {
    if (m_pDevList == nullptr) {
        MM_INFO("Request all device");
        m_RequestMassStorageList();
        m_RequestPTPDeviceList();
    }
    if (nClass == USB_CLASS_STILL_IMAGE) {
        if (!bMounted) {
            m_ConnectedDevice(pUsbDeviceHnd);
        }
        return;
    }
    if (!bMounted) {
        MM_INFO("pUsbDeviceHnd:%p", static_cast<void*>(pUsbDeviceHnd));
        MM_DEBUG("HOST_ADDED pUsbDeviceHnd=%p", static_cast<void*>(pUsbDeviceHnd));
        CMMDeviceInfo* pDeviceInfo = m_AddDeviceNode(pUsbDeviceHnd);
        if (pDeviceInfo == nullptr) {
            MM_WARN("add failed !!!! pUsbDeviceHnd:%p", static_cast<void*>(pUsbDeviceHnd));
        } else {
            pDeviceInfo->SetUsbStorageAddAction(true);
        }
        return;
    }
    MM_INFO("STORAGE_MOUNTED");
    CMMDeviceInfo* pDeviceInfo = m_SearchDevice(m_GetDeviceKey(pUsbDeviceHnd));
    if (pDeviceInfo != nullptr && pDeviceInfo->GetUsbStorageAddAction()) {
        MM_INFO("clear add action flag!!!");
        pDeviceInfo->SetUsbStorageAddAction(false);
        m_ConnectedDevice(pUsbDeviceHnd);
    } else {
        MM_INFO("pUsbDeviceHnd %p ,MOUNTED but not after add action , ignore !!!! ",
                static_cast<void*>(pUsbDeviceHnd));
    }
}

void CMMDeviceMgr::m_ConnectedDevice(usb_device_s* pUsbDeviceHnd) {
    MM_INFO("pUsbDeviceHnd:%p", static_cast<void*>(pUsbDeviceHnd));
    CMMDeviceInfo* pDeviceInfo = m_AddDeviceNode(pUsbDeviceHnd);
    if (pDeviceInfo == nullptr) {
        return;
    }
    const int nCount = get_list_count(m_pDevList);
    MM_INFO("Device Count :%d", nCount);
    const std::string strDemoFile = pDeviceInfo->GetMountpath() + "/" + MMNames::USB_DEMO_FILE;

    if (m_IsShopMode() && m_CheckDemoFile(strDemoFile)) {
        MM_INFO("");
        if (m_bActivated) {
            m_LaunchDemoPlayer(strDemoFile, true);
        } else {
            MM_INFO("m_bActivated is false, don't launch usb demo now!");
        }
        return;
    }
    MM_INFO("");
    if (!m_bActivated) {
        MM_INFO("m_bActivated is false, don't launch usb notification now!");
        return;
    }
    csf_stop_checking_device_v2(m_hScanHandle);
    m_pDeviceInfo = pDeviceInfo;
    m_eNotifactiontype = NOTIFICATION_ITEM_BROWSE;
    m_LaunchAddNotification();
    if (pDeviceInfo->GetClass() != USB_CLASS_STILL_IMAGE && !m_IsMultiHDD() && nCount == 1) {
        csf_check_device_v2(pDeviceInfo->GetMountpath().c_str(), m_OnScanDeviceCB, this,
                            &m_hScanHandle);
    }
}

void CMMDeviceMgr::m_DisconnectedDevice(usb_device_s* pUsbDeviceHnd) {
    MM_DEBUG("");
    if (pUsbDeviceHnd == nullptr) {
        MM_WARN("NULL == pUsbDeviceHnd");
        return;
    }
    const std::string strKey = m_GetDeviceKey(pUsbDeviceHnd);
    CMMDeviceInfo* pDeviceInfo = m_SearchDevice(strKey);
    if (pDeviceInfo == nullptr) {
        MM_WARN("Device %s is NOT found in pDeviceInfoNode", strKey.c_str());
        const int nClass = m_GetDeviceClass(pUsbDeviceHnd);
        if (nClass == USB_CLASS_MASS_STORAGE || nClass == USB_CLASS_STILL_IMAGE) {
            const std::string strName = m_GetDeviceDisplayName(pUsbDeviceHnd);
            m_LaunchRemoveNotification(strName, m_GetDeviceClass(pUsbDeviceHnd));
        }
        return;
    }
    const bool bRunning = m_IsAppRunning(MMNames::APP_LUMET);
    MM_INFO("bRunning=[%d]", bRunning);
    if (bRunning) {
        m_LaunchLumet(pDeviceInfo, LUMET_DEVICE_REMOVED);
    } else {
        m_LaunchRemoveNotification(pDeviceInfo->GetDisplayNameForNotification(),
                                   m_GetDeviceClass(pUsbDeviceHnd));
    }
    if (m_pDeviceRemovedCB != nullptr) {
        m_pDeviceRemovedCB(m_pDeviceRemovedUserData, strKey);
    }
    if (m_pDeviceEventCB != nullptr) {
        m_pDeviceEventCB(m_pDeviceEventUserData, pDeviceInfo, false);
    }
    m_DeleteDeviceNode(pDeviceInfo);
    m_DestroyRecord(pDeviceInfo);
}

CMMDeviceInfo* CMMDeviceMgr::m_AddDeviceNode(usb_device_s* pUsbDeviceHnd) {
    if (pUsbDeviceHnd == nullptr) {
        MM_WARN("NULL == pUsbDeviceHnd");
        return nullptr;
    }
    CMMDeviceInfo* pListed = m_SearchDevice(m_GetDeviceKey(pUsbDeviceHnd));
    if (pListed != nullptr) {
        MM_INFO("Update");
        m_GetUsbStorageInfo(pUsbDeviceHnd, pListed);
        return pListed;
    }
    MM_INFO("New ");
    auto pDeviceInfo = std::make_unique<CMMDeviceInfo>();
    m_GetUsbStorageInfo(pUsbDeviceHnd, pDeviceInfo.get());
    return m_ListOrDrop(std::move(pDeviceInfo));
}

void CMMDeviceMgr::m_DeleteDeviceNode(CMMDeviceInfo* pDeviceInfo) {
    MM_INFO("before delete,dev list count is %d", get_list_count(m_pDevList));
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
    m_DevListUpdate(pDeviceInfo, false);
    MM_INFO("after delete,dev list count is %d", get_list_count(m_pDevList));
    MM_INFO("m_pDevList:%p", static_cast<void*>(m_pDevList));
}

void CMMDeviceMgr::m_RequestMassStorageList() {
    m_RequestDeviceList(USB_CLASS_MASS_STORAGE);
}

void CMMDeviceMgr::m_RequestPTPDeviceList() {
    m_RequestDeviceList(USB_CLASS_STILL_IMAGE);
}

/// List every attached device of one class, silently: nothing is shown or launched.
void CMMDeviceMgr::m_RequestDeviceList(int nClass) {
    usb_device_list_s* pRequested = nullptr;
    if (usb_device_get_device_list(nClass, &pRequested) != 0) {
        return;
    }
    const UsbDeviceList hList(pRequested);
    usb_device_s* pDeviceH = nullptr;
    if (usb_device_list_get_first(hList.get(), &pDeviceH) == 0) {
        m_AddEnumeratedDevice(pDeviceH);
    }
    while (usb_device_list_get_next(hList.get(), &pDeviceH) == 0) {
        MM_INFO("pDeviceH:%p", static_cast<void*>(pDeviceH));
        m_AddEnumeratedDevice(pDeviceH);
    }
}

void CMMDeviceMgr::m_AddEnumeratedDevice(usb_device_s* pDeviceH) {
    m_AddDeviceNode(pDeviceH);
    const std::string strDeviceKey = m_GetDeviceKey(pDeviceH);
    // The names are settled again now that more devices of the product may be listed.
    m_CheckDeviceProductName(m_SearchDevice(strDeviceKey));
    MM_INFO("pDeviceH:%p strDeviceKey=%s", static_cast<void*>(pDeviceH), strDeviceKey.c_str());
}

void CMMDeviceMgr::m_ScanUSBStorage() {
    usb_mass_storage_foreach(m_OnConnectedUsbForDemoCallback, this);
}
