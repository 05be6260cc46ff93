// The result of a content scan: what is kept of a single media file, and the texts made of it.
#include <cctype>
#include <cstdio>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMUtf8.h"
#include "json_value.h"

bool CMMDeviceMgr::m_OnScanDeviceCB(void* pThis,
                                    CCSFDeviceCheckHandle* /*pHandle*/,
                                    csf_event_e eEvent,
                                    const char* pJson) noexcept {
    MM_INFO("m_OnScanDeviceCB begin: event=%d, json = %s", static_cast<int>(eEvent), MMText(pJson));
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("NULL == pThis");
        return false;
    }
    if (eEvent != CSF_EVENT_SINGLE_MEDIA) {
        return true;
    }
    MM_INFO("single media");
    pMgr->m_eNotifactiontype = NOTIFICATION_ITEM_PLAY_FILE;
    CMMDeviceJsonValue jsonValue(MMString(pJson));
    pMgr->m_TakeScanResult(jsonValue);
    pMgr->m_LaunchAddNotification();
    jsonValue.Destroy(false);
    MM_INFO("strFileName=%s strFilePath=%s", pMgr->m_stScanFileData.strFileName.c_str(),
            pMgr->m_stScanFileData.strFilePath.c_str());
    MM_INFO("event=%d m_eNotifactiontype=%d, json = %s", static_cast<int>(eEvent),
            pMgr->m_eNotifactiontype, MMText(pJson));
    return true;
}

void CMMDeviceMgr::m_TakeScanResult(CMMDeviceJsonValue& jsonValue) {
    int nMediaType = -1;
    int nSize = 0;
    int nModified = 0;
    jsonValue.Get("MEDIA_TYPE", nMediaType);
    jsonValue.Get("DISPLAY_NAME", m_stScanFileData.strFileName);
    jsonValue.Get("FILE_PATH", m_stScanFileData.strFilePath);
    switch (nMediaType) {
        case CSF_MEDIA_PHOTO: {
            m_stScanFileData.nType = SCAN_FILE_PHOTO;
            jsonValue.Get("SIZE", nSize);
            jsonValue.Get("MODIFIED_TIME", nModified);
            std::time_t nTime = nModified;
            m_stScanFileData.strSize = m_GetSizeStr(&nSize);
            m_stScanFileData.strDate = m_GetTimeStr(&nTime);
            break;
        }
        case CSF_MEDIA_VIDEO: {
            m_stScanFileData.nType = SCAN_FILE_VIDEO;
            jsonValue.Get("MODIFIED_TIME", nModified);
            std::time_t nTime = nModified;
            m_stScanFileData.strDate = m_GetTimeStr(&nTime);
            std::string strBase;
            m_GetFileName(m_stScanFileData.strFileName, strBase, m_stScanFileData.strFormat);
            break;
        }
        case CSF_MEDIA_MUSIC:
            m_stScanFileData.nType = SCAN_FILE_MUSIC;
            jsonValue.Get("TITLE", m_stScanFileData.strTitle);
            jsonValue.Get("ARTIST", m_stScanFileData.strArtist);
            jsonValue.Get("ALBUM", m_stScanFileData.strAlbum);
            break;
        default:
            m_stScanFileData.nType = SCAN_FILE_NONE;
            break;
    }
}

/// "1.50KB": at least KB, at most TB, two decimals. "" for null.
std::string CMMDeviceMgr::m_GetSizeStr(int* pSize) {
    if (pSize == nullptr) {
        return "";
    }
    static constexpr const char* UNITS[] = {"KB", "MB", "GB", "TB"};
    double fValue = *pSize / 1024.0;
    std::size_t nUnit = 0;
    while (fValue >= 1024 && nUnit < G_N_ELEMENTS(UNITS) - 1) {
        fValue /= 1024;
        ++nUnit;
    }
    char szSize[256];
    std::snprintf(szSize, sizeof szSize, "%0.2f%s", fValue, UNITS[nUnit]);
    return szSize;
}

/// "YYYY-MM-DD" in local time. "" for null and for a time that has no local date.
std::string CMMDeviceMgr::m_GetTimeStr(std::time_t* pTime) {
    std::tm stTime = {};
    if (pTime == nullptr || localtime_r(pTime, &stTime) == nullptr) {
        return "";
    }
    char szDate[48];
    std::snprintf(szDate, sizeof szDate, "%04d-%02d-%02d", stTime.tm_year + 1900, stTime.tm_mon + 1,
                  stTime.tm_mday);
    return szDate;
}

/// Split a name at its last dot, the extension in upper case (ASCII). Without a dot both are the whole
/// name. Always true.
bool CMMDeviceMgr::m_GetFileName(const std::string& strName,
                                 std::string& strBase,
                                 std::string& strExtension) {
    const std::size_t nDot = strName.rfind('.');
    strBase = strName.substr(0, nDot);
    strExtension = nDot == std::string::npos ? strName : strName.substr(nDot + 1);
    for (char& c : strExtension) {
        const auto nByte = static_cast<unsigned char>(c);
        if (std::islower(nByte) != 0) {
            c = static_cast<char>(std::toupper(nByte));
        }
    }
    return true;
}
