// Launching applications: the players for a scanned file, the content browser for a device, and the
// companion application, which is told of devices. All through the one launch handle, on which extra data
// accumulate.
#include <json-glib/json-glib.h>

#include "MMDeviceMgr.h"
#include "MMLogger.h"
#include "MMNames.h"
#include "MMUtf8.h"
#include "json_value.h"

namespace {

void SetItemText(JsonObject* pItem, const char* pKey, const std::string& strText) {
    json_object_set_string_member(pItem, pKey, MMJsonUtf8(strText).c_str());
}

/// The play list's one entry.
JsonObject* PlayListItem(const _stScanFileData& stFile) {
    const bool bVideo = stFile.nType == SCAN_FILE_VIDEO;
    JsonObject* pItem = json_object_new();
    SetItemText(pItem, "file_name", stFile.strFileName);
    if (bVideo) {
        SetItemText(pItem, "file_format", stFile.strFormat);
    }
    SetItemText(pItem, "file_date", stFile.strDate);
    if (!bVideo) {
        SetItemText(pItem, "file_size", stFile.strSize);
    }
    SetItemText(pItem, "file_location", "USB");
    SetItemText(pItem, "file_path", stFile.strFilePath);
    if (bVideo) {
        SetItemText(pItem, "subtitle_path", "");
        SetItemText(pItem, "thumbnail_path", "");
    }
    return pItem;
}

}  // namespace

void CMMDeviceMgr::m_LaunchPlayer() {
    MM_INFO("enter m_LaunchPlayer, type=%d", m_stScanFileData.nType);
    // A file that no player is known for is launched all the same, with no application named.
    const char* pAppId = "";
    switch (m_stScanFileData.nType) {
        case SCAN_FILE_VIDEO:
        case SCAN_FILE_PHOTO: {
            const std::string strLaunchString = m_GetLaunchString();
            MM_INFO("launch player: strLaunchString = %s", strLaunchString.c_str());
            m_AddExtraData("play_list_data", strLaunchString);
            pAppId = m_stScanFileData.nType == SCAN_FILE_VIDEO ? MMNames::APP_VIDREEL
                                                               : MMNames::APP_PICREEL;
            break;
        }
        case SCAN_FILE_MUSIC:
            m_AddExtraData("file_name", m_stScanFileData.strFileName);
            m_AddExtraData("music_url", m_stScanFileData.strFilePath);
            m_AddExtraData("music_title", m_stScanFileData.strTitle);
            m_AddExtraData("music_artist", m_stScanFileData.strArtist);
            m_AddExtraData("music_album", m_stScanFileData.strAlbum);
            m_AddExtraData("called_app", MMNames::APP_LUMET);
            MM_INFO("launch player: file_name = %s file_path=%s",
                    m_stScanFileData.strFileName.c_str(), m_stScanFileData.strFilePath.c_str());
            pAppId = MMNames::APP_FOLIAN;
            break;
        default:
            break;
    }
    m_SendLaunchRequest(pAppId);
    MM_INFO("launch player=%s", pAppId);
}

std::string CMMDeviceMgr::m_GetLaunchString() {
    const bool bVideo = m_stScanFileData.nType == SCAN_FILE_VIDEO;
    if (!bVideo && m_stScanFileData.nType != SCAN_FILE_PHOTO) {
        return "";
    }
    CMMDeviceJsonValue jsonValue;
    if (m_pDeviceInfo != nullptr) {
        const std::string strMountPath = m_pDeviceInfo->GetMountpath();
        MM_INFO("begin to scan device - %s", strMountPath.c_str());
        jsonValue.Set("root_path", strMountPath);
    } else if (bVideo) {
        MM_WARN("NULL == m_pDeviceInfo");
    } else {
        MM_WARN("NULL == pNode");
    }
    jsonValue.Set("app_id", MMNames::APP_LUMET);
    jsonValue.Set("play_index", 0);
    if (bVideo) {
        for (const char* pFunction : {"function_trickplay", "function_pause", "function_rotate",
                                      "function_scenesearch", "function_repeat"}) {
            jsonValue.Set(pFunction, true);
        }
    } else {
        jsonValue.Set("need_slideshow", false);
    }
    JsonArray* pItems = json_array_new();
    json_array_add_object_element(pItems, PlayListItem(m_stScanFileData));
    jsonValue.Set("items", pItems);

    std::string strLaunchString = jsonValue.ToString();
    jsonValue.Destroy(true);
    MM_INFO("strLaunchString = %s", strLaunchString.c_str());
    return strLaunchString;
}

void CMMDeviceMgr::m_LaunchFolian() {
    m_AddExtraData("called_app", MMNames::APP_LUMET);
    MM_INFO("call_app = %s", MMNames::APP_LUMET);
    if (m_pDeviceInfo == nullptr) {
        MM_WARN("the device node is NULL");
        return;
    }
    m_AddExtraData("device_path", m_pDeviceInfo->GetMountpath());
    m_AddExtraData("device_name", m_pDeviceInfo->GetDisplayName());
    if (m_pDeviceInfo->GetClass() == USB_CLASS_STILL_IMAGE) {
        m_AddExtraData("device_type", "PTP");
        m_AddExtraData("device_busnumber", m_pDeviceInfo->GetBus());
        m_AddExtraData("device_addressnumber", m_pDeviceInfo->GetAddress());
        MM_INFO("Select PTP device");
        CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_BROWSER_LAUNCHED, "PTP");
    } else if (m_pDeviceInfo->GetClass() == USB_CLASS_MASS_STORAGE) {
        const int nTotal = m_pDeviceInfo->GetTotalSize();
        const int nUsed = m_pDeviceInfo->GetUsedSize();
        // Sizes were cut to 32 bits, so their difference wraps as they do.
        const std::string strAvailable = std::to_string(
            static_cast<int>(static_cast<unsigned>(nTotal) - static_cast<unsigned>(nUsed)));
        const std::string strTotal = std::to_string(nTotal);
        m_AddExtraData("device_type", "USB");
        m_AddExtraData("device_busnumber", "-1");
        m_AddExtraData("device_addressnumber", "-1");
        m_AddExtraData("vendor_name", m_pDeviceInfo->GetProduct());
        MM_INFO("total=[%d],used=[%d]", nTotal, nUsed);
        m_AddExtraData("available_size", strAvailable);
        MM_INFO("size=1[%s]", strAvailable.c_str());
        m_AddExtraData("total_size", strTotal);
        MM_INFO("size=2[%s]", strTotal.c_str());
        MM_INFO("Select storage device");
        CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_BROWSER_LAUNCHED, "USB");
    }
    m_AddExtraData("content_type", "all");
    m_SendLaunchRequest(MMNames::APP_FOLIAN);
    MM_INFO("launch app[%s]", MMNames::APP_FOLIAN);
}

void CMMDeviceMgr::m_LaunchLumet(CMMDeviceInfo* pNode, int nAction) {
    if (pNode == nullptr) {
        MM_WARN("pNode is NULL");
        return;
    }
    MM_INFO("Device Info - nAction:%d,m_bActivated pop:%d", nAction, m_bActivated);
    if (nAction == LUMET_DEVICE_ADDED) {
        if (!m_bActivated || m_IsTVContextDistractionMode()) {
            return;
        }
        MM_INFO("Connected device:%s", pNode->GetDeviceKey().c_str());
        m_SendLumetLaunch(pNode, "ADD");
        MM_INFO("ADD launch %s", MMNames::APP_LUMET);
    } else if (nAction == LUMET_DEVICE_REMOVED) {
        const bool bRunning = m_IsAppRunning(MMNames::APP_LUMET);
        MM_INFO("%s running status is %d", MMNames::APP_LUMET, bRunning);
        if (!bRunning) {
            return;
        }
        MM_INFO("Disconnected device:%s", pNode->GetDeviceKey().c_str());
        m_SendLumetLaunch(pNode, "DELETE");
        MM_INFO("DELETE launch %s", MMNames::APP_LUMET);
    }
}

void CMMDeviceMgr::m_SendLumetLaunch(CMMDeviceInfo* pNode, const char* pDeviceAction) {
    m_AddExtraData("called_app", MMNames::SELF);
    m_AddExtraData("device_action", pDeviceAction);
    m_SetExtraData(pNode);
    m_SendLaunchRequest(MMNames::APP_LUMET);
}

void CMMDeviceMgr::m_SetExtraData(CMMDeviceInfo* pNode) {
    m_AddExtraData("device_key", pNode->GetDeviceKey());
    m_AddExtraData("device_display_name", pNode->GetDisplayName());
    m_AddExtraData("device_mountpath", pNode->GetMountpath());
    m_AddExtraData("device_damage_flag", static_cast<int>(pNode->GetDamageFlag()));
    m_AddExtraData("device_file_system", pNode->GetFileSystemType());
    m_AddExtraData("device_bus_num", pNode->GetBus());
    m_AddExtraData("device_address", pNode->GetAddress());
    m_AddExtraData("device_class", pNode->GetClass());
}

void CMMDeviceMgr::m_AddExtraData(const char* pKey, const std::string& strValue) {
    app_control_add_extra_data(m_hAppControl, pKey, MMValidUtf8(strValue).c_str());
}

void CMMDeviceMgr::m_AddExtraData(const char* pKey, int nValue) {
    m_AddExtraData(pKey, std::to_string(nValue));
}

bool CMMDeviceMgr::m_IsAppRunning(const char* pAppId) {
    bool bRunning = false;
    app_manager_is_running(pAppId, &bRunning);
    return bRunning;
}

/// Launch an application with the extra data collected so far. Before the start-up timer there is no
/// handle; the platform answers that with an error, which is nobody's concern here.
void CMMDeviceMgr::m_SendLaunchRequest(const char* pAppId) {
    app_control_set_app_id(m_hAppControl, pAppId);
    app_control_send_launch_request(m_hAppControl, nullptr, nullptr);
}

bool CMMDeviceMgr::m_EnableLumet() {
    return true;
}
