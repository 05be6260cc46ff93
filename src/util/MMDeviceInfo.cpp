// What the copies of a device record take, and what they leave; the rest is in the header.
#include "MMDeviceInfo.h"

CMMDeviceInfo::CMMDeviceInfo(CMMDeviceInfo* pSrc) {
    m_CopyBaseInfo(pSrc);
}

bool CMMDeviceInfo::Create(CMMDeviceInfo* pSrc) {
    return m_CopyBaseInfo(pSrc);
}

bool CMMDeviceInfo::Copy(CMMDeviceInfo* pSrc) {
    if (pSrc == nullptr) {
        return false;
    }
    m_strDisplayName = pSrc->m_strDisplayName;
    m_nIndex = pSrc->m_nIndex;
    return m_CopyBaseInfo(pSrc);
}

bool CMMDeviceInfo::m_CopyBaseInfo(CMMDeviceInfo* pSrc) {
    if (pSrc == nullptr) {
        return false;
    }
    m_nClass = pSrc->m_nClass;
    m_nSubClass = pSrc->m_nSubClass;
    m_nProtocol = pSrc->m_nProtocol;
    m_nVendorId = pSrc->m_nVendorId;
    m_nProductId = pSrc->m_nProductId;
    m_nBus = pSrc->m_nBus;
    m_nAddress = pSrc->m_nAddress;
    m_nNumber = pSrc->m_nNumber;
    m_nFileSystemType = pSrc->m_nFileSystemType;
    m_nTotalSize = pSrc->m_nTotalSize;
    m_nUsedSize = pSrc->m_nUsedSize;
    m_strManufacturer = pSrc->m_strManufacturer;
    m_strProduct = pSrc->m_strProduct;
    m_strDeviceName = pSrc->m_strDeviceName;
    m_strDevicePath = pSrc->m_strDevicePath;
    m_strMountpath = pSrc->m_strMountpath;
    m_strSerial = pSrc->m_strSerial;
    m_strPartitionLabel = pSrc->m_strPartitionLabel;
    m_bDamage = pSrc->m_bDamage;
    m_strDeviceKey = pSrc->m_strDeviceKey;
    return true;
}

void CMMDeviceInfo::m_Lend(std::string& strText, std::string** ppText) {
    if (ppText != nullptr) {
        *ppText = &strText;
    }
}
