// What a device is: reading a USB handle into a record - identity, key, names with their numbers,
// storage facts - and the test that keeps the scan off a multi-partition disk.
#include <sys/statfs.h>

#include <cstdio>

#include "MMDeviceMgr.h"
#include "MMLogger.h"
#include "MMUtf8.h"

namespace {

// Kinds of disk as the record keeps them.
enum { DISKTYPE_ATA = 0, DISKTYPE_USB = 1, DISKTYPE_OTHER = 2 };

constexpr long long BYTES_PER_KB = 1024;

int StoredDiskType(int nDiskType) {
    switch (nDiskType) {
        case USB_DISK_ATA:
            return DISKTYPE_ATA;
        case USB_DISK_USB:
            return DISKTYPE_USB;
        default:
            return DISKTYPE_OTHER;
    }
}

/// Signed 64-bit arithmetic; the product is formed unsigned, so that a file system that claims more than
/// 8 EiB wraps around instead of being undefined.
long long Kilobytes(unsigned long long nBlockSize, unsigned long long nBlocks) {
    return static_cast<long long>(nBlockSize * nBlocks) / BYTES_PER_KB;
}

/// Whether two records agree in a text, read through one of their pointer getters.
bool SameText(CMMDeviceInfo* pOne,
              CMMDeviceInfo* pOther,
              void (CMMDeviceInfo::*pGetter)(std::string**)) {
    std::string* pOneText = nullptr;
    std::string* pOtherText = nullptr;
    (pOne->*pGetter)(&pOneText);
    (pOther->*pGetter)(&pOtherText);
    return *pOneText == *pOtherText;
}

}  // namespace

int CMMDeviceMgr::m_GetDeviceClass(usb_device_s* pUsbDeviceHnd) {
    const int nClass = usb_device_get_class(pUsbDeviceHnd);
    MM_INFO("Device Class = %d", nClass);
    return nClass;
}

std::string CMMDeviceMgr::m_GetDeviceKey(usb_device_s* pUsbDeviceHnd) {
    switch (m_GetDeviceClass(pUsbDeviceHnd)) {
        case USB_CLASS_MASS_STORAGE:
            return MMString(usb_device_get_devname(pUsbDeviceHnd));
        case USB_CLASS_STILL_IMAGE:
            return MMString(usb_device_get_serial(pUsbDeviceHnd));
        default:
            return "";
    }
}

std::string CMMDeviceMgr::m_GetDeviceDisplayName(usb_device_s* pUsbDeviceHnd) {
    return MMString(usb_device_get_product(pUsbDeviceHnd));
}

void CMMDeviceMgr::m_GetUsbStorageInfo(usb_device_s* pUsbDeviceHnd, CMMDeviceInfo* pDeviceNode) {
    MM_INFO("pUsbDeviceHnd:%p,pDeviceNode:%p", static_cast<void*>(pUsbDeviceHnd),
            static_cast<void*>(pDeviceNode));
    if (pUsbDeviceHnd == nullptr || pDeviceNode == nullptr) {
        MM_WARN("NULL == pUsbDeviceHnd || NULL == pDeviceNode");
        return;
    }
    pDeviceNode->SetClass(m_GetDeviceClass(pUsbDeviceHnd));
    pDeviceNode->SetSubClass(usb_device_get_sub_class(pUsbDeviceHnd));
    pDeviceNode->SetProtocol(usb_device_get_protocol(pUsbDeviceHnd));
    pDeviceNode->SetVendorId(usb_device_get_vendor_id(pUsbDeviceHnd));
    pDeviceNode->SetProductId(usb_device_get_product_id(pUsbDeviceHnd));
    pDeviceNode->SetBus(usb_device_get_bus(pUsbDeviceHnd));
    pDeviceNode->SetAddress(usb_device_get_address(pUsbDeviceHnd));
    pDeviceNode->SetNumber(usb_device_get_number(pUsbDeviceHnd));

    const int nFsType = usb_mass_storage_get_filesystem_type(pUsbDeviceHnd);
    pDeviceNode->SetFileSystemType(nFsType);
    if (nFsType == USB_FILESYSTEM_UNKNOWN && pDeviceNode->GetClass() == USB_CLASS_MASS_STORAGE) {
        pDeviceNode->SetDamageFlag(true);
    }

    pDeviceNode->SetManufacturer(MMString(usb_device_get_manufacturer(pUsbDeviceHnd)));
    pDeviceNode->SetProduct(MMString(usb_device_get_product(pUsbDeviceHnd)));
    pDeviceNode->SetDisplayName(MMString(usb_device_get_product(pUsbDeviceHnd)));
    pDeviceNode->SetDeviceName(MMString(usb_device_get_devname(pUsbDeviceHnd)));
    pDeviceNode->SetDevicePath(MMString(usb_device_get_devpath(pUsbDeviceHnd)));
    pDeviceNode->SetMountpath(MMString(usb_device_get_mountpath(pUsbDeviceHnd)));
    pDeviceNode->SetSerial(MMString(usb_device_get_serial(pUsbDeviceHnd)));

    pDeviceNode->SetDiskType(StoredDiskType(usb_mass_storage_get_disk_type(pUsbDeviceHnd)));
    pDeviceNode->SetPartitionLabel(MMString(usb_device_get_partlabel(pUsbDeviceHnd)));
    m_GetDeviceCapacity(pDeviceNode->GetMountpath(), pDeviceNode);
    pDeviceNode->SetDeviceKey(m_GetDeviceKey(pUsbDeviceHnd));
    m_CheckDeviceProductName(pDeviceNode);
}

void CMMDeviceMgr::m_GetDeviceCapacity(const std::string& strMountPath,
                                       CMMDeviceInfo* pDeviceNode) {
    MM_INFO("Mountpath :%s,pDeviceNode:%p", strMountPath.c_str(), static_cast<void*>(pDeviceNode));
    struct statfs stFs = {};
    if (statfs(strMountPath.c_str(), &stFs) != 0) {
        pDeviceNode->SetTotalSize(0);
        pDeviceNode->SetUsedSize(0);
        return;
    }
    const long long nFree = Kilobytes(static_cast<unsigned long long>(stFs.f_bsize), stFs.f_bfree);
    const long long nTotal =
        Kilobytes(static_cast<unsigned long long>(stFs.f_bsize), stFs.f_blocks);
    MM_INFO("Mountpath:%s,freespace:%lld KB,totalspace:%lld KB", strMountPath.c_str(), nFree,
            nTotal);
    pDeviceNode->SetTotalSize(static_cast<int>(nTotal));
    pDeviceNode->SetUsedSize(static_cast<int>(nTotal - nFree));
}

void CMMDeviceMgr::m_CheckDeviceProductName(CMMDeviceInfo* pDeviceInfo) {
    if (pDeviceInfo == nullptr) {
        MM_WARN("NULL == pDeviceInfo");
        return;
    }
    std::string* pProduct = nullptr;
    std::string* pKey = nullptr;
    std::string* pName = nullptr;
    pDeviceInfo->GetProduct(&pProduct);
    pDeviceInfo->GetDeviceKey(&pKey);
    pDeviceInfo->GetDeviceName(&pName);
    MM_INFO("Product:%s key=%s name=%s Device count=%d", pProduct->c_str(), pKey->c_str(),
            pName->c_str(), m_index.Count());

    for (GList* pList = m_LoggedWalk(); pList != nullptr; pList = pList->next) {
        MM_INFO("pNode:%p", pList->data);
    }
    const _stUsedIndexes stUsed = m_index.UsedIndexes(*pProduct, *pKey);
    const int nValidIndex = m_GetValidIndex(stUsed, stUsed.nMax);
    MM_INFO("Product:%s key=%s name=%s nValidIndex=%d", pProduct->c_str(), pKey->c_str(),
            pName->c_str(), nValidIndex);

    pDeviceInfo->SetDisplayName(*pProduct);
    pDeviceInfo->SetDisplayNameForNotification(*pProduct);
    if (nValidIndex > 0) {
        // The character reference keeps the number left-to-right in a right-to-left interface; whoever
        // shows the name resolves it.
        char szNumber[32];
        std::snprintf(szNumber, sizeof szNumber, "(%d&#x202d;)", nValidIndex);
        pDeviceInfo->SetIndex(nValidIndex);
        pDeviceInfo->SetDisplayName(*pProduct + szNumber);
    }
    m_index.Changed(*pKey);
}

bool CMMDeviceMgr::m_IsMultiHDD() {
    if (m_pDeviceInfo == nullptr) {
        MM_WARN("m_pDeviceInfo = NULL");
        return false;
    }
    MM_INFO("check m_IsMultiHDD");
    for (GList* pList = m_pDevList; pList != nullptr; pList = pList->next) {
        auto* pNode = static_cast<CMMDeviceInfo*>(pList->data);
        MM_INFO("pNode:%p", static_cast<void*>(pNode));
        if (!SameText(pNode, m_pDeviceInfo, &CMMDeviceInfo::GetProduct) &&
            SameText(pNode, m_pDeviceInfo, &CMMDeviceInfo::GetDeviceKey) &&
            !SameText(pNode, m_pDeviceInfo, &CMMDeviceInfo::GetSerial)) {
            MM_INFO("the device is multi HDD");
            return true;
        }
    }
    MM_INFO("the device is not multi HDD");
    return false;
}

void CMMDeviceMgr::m_PrintDebugLogForUSBInfo(usb_device_s* pUsbDeviceHnd) {
    const int nClass = usb_device_get_class(pUsbDeviceHnd);
    const int nBus = usb_device_get_bus(pUsbDeviceHnd);
    const int nAddress = usb_device_get_address(pUsbDeviceHnd);
    const char* pDevname = MMText(usb_device_get_devname(pUsbDeviceHnd));
    const char* pDevpath = MMText(usb_device_get_devpath(pUsbDeviceHnd));
    const char* pMountpath = MMText(usb_device_get_mountpath(pUsbDeviceHnd));
    const char* pSerial = MMText(usb_device_get_serial(pUsbDeviceHnd));
    const char* pProduct = MMText(usb_device_get_product(pUsbDeviceHnd));
    const std::string strKey = m_GetDeviceKey(pUsbDeviceHnd);
    const char* pLabel = MMText(usb_device_get_partlabel(pUsbDeviceHnd));
    const int nDiskType = usb_mass_storage_get_disk_type(pUsbDeviceHnd);
    const int nFsType = usb_mass_storage_get_filesystem_type(pUsbDeviceHnd);

    MM_INFO("*************************************");
    MM_INFO("class : %d", nClass);
    MM_INFO("bus : %d", nBus);
    MM_INFO("address : %d", nAddress);
    MM_INFO("devname : %s", pDevname);
    MM_INFO("devpath : %s", pDevpath);
    MM_INFO("mount path : %s", pMountpath);
    MM_INFO("serial :%s", pSerial);
    MM_INFO("product :%s", pProduct);
    MM_INFO("model:%s", pProduct);
    MM_INFO("key :%s", strKey.c_str());
    MM_INFO("Partition label :%s", pLabel);
    MM_INFO("Disk Type :%d", nDiskType);
    MM_INFO("Disk Type :%s", nDiskType == USB_DISK_ATA ? "DISKTYPE_ATA" : "DISKTYPE_USB");
    MM_INFO("Fs : %d", nFsType);
    MM_INFO(
        "class[%d] bus[%d] address[%d] devname[%s] devpath[%s] mountpath[%s] serial[%s] "
        "product[%s] "
        "key[%s] PartitionLabel[%s] DiskType[%d] Fs[%d]",
        nClass, nBus, nAddress, pDevname, pDevpath, pMountpath, pSerial, pProduct, strKey.c_str(),
        pLabel, nDiskType, nFsType);
    MM_INFO("*************************************");
}
