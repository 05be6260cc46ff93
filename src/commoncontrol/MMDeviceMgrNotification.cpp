// Pop-ups: what they say, when they are kept back, and what their buttons, their hiding and their
// time-out do.
#include <libintl.h>

#include <platform/i18n.h>
#include <platform/tv_context.h>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMNames.h"
#include "MMPaths.h"
#include "MMUtf8.h"

namespace {

/// Device class of a removal notice for a media server of the network.
constexpr int CLASS_DLNA = -1;

constexpr int MESSAGE_LIMIT = 255;

/// The text of a message in the menu language.
const char* Translated(const char* pMessageId) {
    const char* pText = dgettext(MMNames::SELF, pMessageId);
    return pText != nullptr ? pText : pMessageId;
}

/// A message with one argument, cut to what a pop-up takes.
std::string Combined(const char* pMessageId, const std::string& strArgument) {
    char szText[MESSAGE_LIMIT + 1] = {};
    CStringUtil::CombinateStrings(szText, MESSAGE_LIMIT, Translated(pMessageId),
                                  MMValidUtf8(strArgument).c_str(), nullptr, nullptr, nullptr);
    return szText;
}

/// A record with the words that every pop-up of this service carries.
NotificationRecord BlankRecord(int nItemType, int nTimeout) {
    NotificationRecord stRecord = {};
    stRecord.nWord0 = NOTIFICATION_WORD_0;
    stRecord.nWord4 = NOTIFICATION_WORD_4;
    stRecord.nWord8 = NOTIFICATION_WORD_8;
    stRecord.pSender = MMNames::SELF;
    stRecord.nItemType = nItemType;
    stRecord.nTimeout = nTimeout;
    return stRecord;
}

const char* SourceIcon(int nDeviceClass) {
    switch (nDeviceClass) {
        case USB_CLASS_STILL_IMAGE:
            return MMPaths::ICON_CAMERA;
        case USB_CLASS_MASS_STORAGE:
            return MMPaths::ICON_USB;
        default:
            return nullptr;
    }
}

void Show(NotificationRecord& stRecord) {
    if (add_notification_data(&stRecord) != 0) {
        MM_INFO("notification save error2");
    }
}

int QueryTvContext() {
    int nState = 0;
    tvcontext_init();
    tvcontext_query_state(&nState);
    tvcontext_fini();
    return nState;
}

}  // namespace

bool CMMDeviceMgr::m_IsDistractionFreeMode() {
    int nState = QueryTvContext();
    MM_INFO("distraction_free MODE : %d", nState);
    nState &= TVCONTEXT_DISTRACTION_FREE_MASK;
    MM_INFO("distraction_free MODE : %d", nState);
    if (nState != 0) {
        MM_WARN("Distraction Free Mode enabled, ignore popup launch");
        return true;
    }
    MM_WARN("Distraction Free Mode disabled");
    return false;
}

bool CMMDeviceMgr::m_IsTVContextDistractionMode() {
    int nState = QueryTvContext();
    MM_INFO("distraction_free MODE : %d", nState);
    nState &= TVCONTEXT_DISTRACTION_FREE_MASK;
    MM_INFO("distraction_free MODE : %d", nState);
    if (nState != 0) {
        MM_INFO("Distraction Free Mode enabled, ignore demo player launch");
        return true;
    }
    return false;
}

void CMMDeviceMgr::m_LaunchAddNotification() {
    if (m_IsDistractionFreeMode()) {
        return;
    }
    const bool bRunning = m_IsAppRunning(MMNames::APP_LUMET);
    MM_INFO("bRunning=[%d]", bRunning);
    if (bRunning) {
        m_LaunchLumet(m_pDeviceInfo, LUMET_DEVICE_ADDED);
        return;
    }
    if (m_eNotifactiontype == NOTIFICATION_ITEM_BROWSE && m_IsSameDeviceWithDisplayedDevice()) {
        MM_INFO("No need to notify again");
        return;
    }
    if (m_pDeviceInfo == nullptr) {
        MM_WARN("m_pDeviceInfo = NULL");
        return;
    }
    NotificationRecord stRecord = BlankRecord(m_eNotifactiontype, NOTIFICATION_TIMEOUT_CONNECTION);
    stRecord.pSourceIcon = SourceIcon(m_pDeviceInfo->GetClass());
    const std::string strTitle =
        Combined("TV_SID_MIX_NEW_DEVICE_CONNECTED", m_pDeviceInfo->GetDisplayNameForNotification());
    stRecord.pTitle = strTitle.c_str();

    std::string strBody;
    if (m_eNotifactiontype == NOTIFICATION_ITEM_BROWSE) {
        CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_NOTIFICATION_SHOWN, "");
        strBody = Translated("TV_SID_WOULD_U_LIKE_BROWSE_FILES");
        stRecord.pFirstButton = Translated("COM_COMMONCTRL_BROWSE");
    } else if (m_eNotifactiontype == NOTIFICATION_ITEM_PLAY_FILE) {
        CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_NOTIFICATION_SHOWN, "");
        MM_INFO("file name:%s", m_stScanFileData.strFileName.c_str());
        const std::string strFileName =
            Combined("COM_SID_MIX_FILE_NAME_COLON", m_stScanFileData.strFileName);
        strBody = Translated("COM_SID_FILE_DETECTED_ON_THIS_DEVICE");
        strBody += std::string(" ") + Translated("TV_SID_LIKE_TO_PLAY_FILE") + " " + strFileName;
        stRecord.pFirstButton = Translated("SID_PLAY");
    } else {
        MM_INFO("No Need to add notification");
        return;
    }
    stRecord.pBody = strBody.c_str();
    stRecord.nButtonCount = 2;
    stRecord.pSecondButton = Translated("COM_SID_CANCEL");
    stRecord.pFirstButtonIcon = MMPaths::ICON_OPEN;
    stRecord.pSecondButtonIcon = MMPaths::ICON_CANCEL;
    MM_INFO("m_LaunchAddNotification nItemType = %d", stRecord.nItemType);
    Show(stRecord);
    MM_INFO("end");
}

bool CMMDeviceMgr::m_IsSameDeviceWithDisplayedDevice() {
    if (m_pDeviceInfo == nullptr) {
        MM_WARN("m_pDeviceInfo = NULL");
        return false;
    }
    if (m_pDisplayedDeviceInfo == nullptr) {
        m_SetDisplayedDevice(m_pDeviceInfo);
        MM_INFO("New device is connected");
        return false;
    }
    if (m_pDeviceInfo->GetProductId() == m_pDisplayedDeviceInfo->GetProductId() &&
        m_pDeviceInfo->GetVendorId() == m_pDisplayedDeviceInfo->GetVendorId() &&
        m_pDeviceInfo->GetSerial() == m_pDisplayedDeviceInfo->GetSerial()) {
        MM_INFO("the device is same with previous device");
        return true;
    }
    m_SetDisplayedDevice(m_pDeviceInfo);
    MM_INFO("the device is different with previous device");
    return false;
}

void CMMDeviceMgr::m_LaunchRemoveNotification(const std::string& strName, int nDeviceClass) {
    if (m_IsDistractionFreeMode()) {
        return;
    }
    const bool bRunning = m_IsAppRunning(MMNames::APP_LUMET);
    MM_INFO("bRunning=[%d]", bRunning);
    if (bRunning) {
        MM_INFO("No need to notify");
        return;
    }
    if (!m_bNotificationShown && strName != m_strShownNotification) {
        m_ShowRemoveNotification(strName, nDeviceClass);
    }
    m_SetDisplayedDevice(nullptr);
    MM_INFO("end");
}

void CMMDeviceMgr::m_ShowRemoveNotification(const std::string& strName, int nDeviceClass) {
    m_strShownNotification = strName;
    NotificationRecord stRecord =
        BlankRecord(NOTIFICATION_ITEM_DISCONNECTED, NOTIFICATION_TIMEOUT_REMOVAL);
    const std::string strTitle = MMValidUtf8(strName);
    stRecord.pTitle = strTitle.c_str();
    stRecord.pBody = Translated("TV_SID_DEVICE_BEEN_DISCONNECTED");
    std::string strServerIcon;
    if (nDeviceClass != CLASS_DLNA) {
        stRecord.pSourceIcon = SourceIcon(nDeviceClass);
    } else if (m_GetVconfString(MMNames::KEY_REMOVED_DLNA_ICON, strServerIcon)) {
        stRecord.pSourceIcon = strServerIcon.c_str();
    }
    Show(stRecord);
    m_bNotificationShown = true;  // also when showing failed: until a hide or a time-out
}

void CMMDeviceMgr::m_RemovedDLNADeviceNameChangedCB(keynode_s* /*pNode*/, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("pThis is NULL");
        return;
    }
    std::string strName;
    pMgr->m_GetVconfString(MMNames::KEY_REMOVED_DLNA_DEVICE, strName);
    pMgr->m_LaunchRemoveNotification(strName, CLASS_DLNA);
}

void CMMDeviceMgr::m_OnButtonClickCB(int nItemType, int nButtonIndex, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        return;
    }
    MM_INFO("pressed button is %d(0 is play or browser,other is cancel)", nButtonIndex);
    if (static_cast<unsigned>(nItemType) > NOTIFICATION_ITEM_BROWSE) {
        MM_WARN("Invalid item ID");
        return;
    }
    const bool bPlay = pMgr->m_eNotifactiontype == NOTIFICATION_ITEM_PLAY_FILE;
    if (nButtonIndex != 0) {
        CMMLogService::Get()->OnSelectUSBCommand(
            bPlay ? USB_LOG_PLAY_CANCELLED : USB_LOG_BROWSE_CANCELLED, "");
        return;
    }
    MM_INFO("clicked first button.");
    if (bPlay) {
        CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_PLAY_PRESSED, "");
        pMgr->m_LaunchPlayer();
    } else if (get_list_count(pMgr->m_pDevList) == 1) {
        pMgr->m_LaunchFolian();
    } else {
        pMgr->m_LaunchLumet(pMgr->m_pDeviceInfo, LUMET_DEVICE_ADDED);
    }
}

void CMMDeviceMgr::m_OnNotificationHideCB(char* /*pText*/, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        return;
    }
    MM_INFO("Hide by action");
    pMgr->m_bNotificationShown = false;
    pMgr->m_strShownNotification.clear();
    pMgr->m_SetDisplayedDevice(nullptr);
}

void CMMDeviceMgr::m_OnNotificationTimeOutCB(int nItemType, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        return;
    }
    MM_INFO("Hide by timeout");
    if (nItemType == NOTIFICATION_ITEM_DISCONNECTED) {
        pMgr->m_bNotificationShown = false;
        pMgr->m_strShownNotification.clear();
    }
    pMgr->m_SetDisplayedDevice(nullptr);
    CMMLogService::Get()->OnSelectUSBCommand(USB_LOG_TIMED_OUT, "");
}
