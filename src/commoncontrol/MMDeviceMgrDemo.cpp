// The shop demo: the TV's internal demo, or a demo video on a stick. No state: each decision is made
// afresh from the settings, the demo folder, the running applications and the attached devices.
#include <dirent.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <utility>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMNames.h"
#include "MMPaths.h"

namespace {

constexpr int USE_MODE_SHOP = 1;
constexpr int DEMO_MODE_FORBIDDEN = -1;

// A name counts when its tail from the last dot occurs anywhere in one of these texts, part of a listed
// extension included.
constexpr const char* VIDEO_EXTENSIONS = ".ts/.avi/.mp4/.asf/.wmv/.divx/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr const char* PICTURE_EXTENSIONS = ".jpg/.jpeg/.JPG/.JPEG";

struct SCloseDir {
    void operator()(DIR* pDir) const { closedir(pDir); }
};
using Directory = std::unique_ptr<DIR, SCloseDir>;

bool IsDemoFile(const char* pName) {
    if (std::strcmp(pName, ".") == 0 || std::strcmp(pName, "..") == 0) {
        return false;
    }
    const char* pTail = std::strrchr(pName, '.');
    return pTail != nullptr && (std::strstr(VIDEO_EXTENSIONS, pTail) != nullptr ||
                                std::strstr(PICTURE_EXTENSIONS, pTail) != nullptr);
}

/// The next entry; null at the end and after a read error.
dirent* NextEntry(DIR* pDir, dirent* pStorage) {
    dirent* pEntry = nullptr;
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    const int nError = readdir_r(pDir, pStorage, &pEntry);
    G_GNUC_END_IGNORE_DEPRECATIONS
    return nError == 0 ? pEntry : nullptr;
}

}  // namespace

bool CMMDeviceMgr::m_IsShopMode() {
    return m_GetVconfigInt(MMNames::KEY_USE_MODE) == USE_MODE_SHOP;
}

bool CMMDeviceMgr::m_CheckDemoFile(const std::string& strPath) {
    if (access(strPath.c_str(), R_OK) == 0) {
        MM_INFO("File %s exist", strPath.c_str());
        return true;
    }
    MM_WARN("File %s not exist", strPath.c_str());
    return false;
}

bool CMMDeviceMgr::m_CheckInternalDemoStatus() {
    int nFileCount = 0;
    {
        const Directory hDir(opendir(MMPaths::INTERNAL_DEMO_DIR));
        if (hDir == nullptr) {
            MM_INFO("NULL == pMovieDir");
            return false;
        }
        dirent stStorage;
        while (const dirent* pEntry = NextEntry(hDir.get(), &stStorage)) {
            MM_INFO("file = [%s]", pEntry->d_name);
            if (IsDemoFile(pEntry->d_name)) {
                MM_INFO("found file = [%s]", pEntry->d_name);
                ++nFileCount;
            }
        }
    }
    MM_INFO("file number is = [%d]", nFileCount);
    const bool bDemoPlayer = m_IsAppRunning(MMNames::APP_SHOPREEL);
    const bool bInternalDemoPlayer = m_IsAppRunning(MMNames::APP_FLOORREEL);
    MM_INFO("%s running status is %d", MMNames::APP_SHOPREEL, bDemoPlayer);
    MM_INFO("%s running status is %d", MMNames::APP_FLOORREEL, bInternalDemoPlayer);
    if (nFileCount != 0 && m_GetVconfigInt(MMNames::KEY_DEMO_MODE) != DEMO_MODE_FORBIDDEN &&
        !bDemoPlayer && !bInternalDemoPlayer) {
        MM_INFO("Internal demo CAN be launched");
        return true;
    }
    MM_INFO("Internal demo CANNOT be launched");
    return false;
}

void CMMDeviceMgr::m_LaunchInternalDemoPlayer(bool bCheckDistraction) {
    MM_INFO("launch internal demo player");
    if (bCheckDistraction && m_IsTVContextDistractionMode()) {
        return;
    }
    m_SendLaunchRequest(MMNames::APP_FLOORREEL);
}

void CMMDeviceMgr::m_LaunchDemoPlayer(const std::string& strPath, bool bCheckDistraction) {
    if (bCheckDistraction && m_IsTVContextDistractionMode()) {
        return;
    }
    if (aul_app_is_running(MMNames::APP_FLOORREEL) != 0) {
        MM_INFO("internal demo is running. don't launch demo player!");
        return;
    }
    MM_INFO("m_LaunchDemoPlayer File path =  %s", strPath.c_str());
    m_AddExtraData("root_path", strPath);
    m_SendLaunchRequest(MMNames::APP_SHOPREEL);
}

void CMMDeviceMgr::m_LaunchAllDemoPlayer(bool bCheckDistraction) {
    if (!m_IsShopMode()) {
        return;
    }
    if (m_CheckInternalDemoStatus()) {
        m_LaunchInternalDemoPlayer(bCheckDistraction);
        MM_INFO("launch internal demo player");
        return;
    }
    MM_INFO("Check Demo player via m_AllUsbActionCallback\n");
    usb_mass_storage_foreach(m_OnConnectedUsbForDemoCallback, this);
}

gboolean CMMDeviceMgr::m_LaunchAllDemoPlayerTimerCB(void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("m_LaunchAllDemoPlayerTimerCb: pThis is NULL");
        return FALSE;
    }
    pMgr->m_LaunchAllDemoPlayer(true);
    return FALSE;
}

bool CMMDeviceMgr::m_OnConnectedUsbForDemoCallback(usb_device_s* pUsbDeviceHnd,
                                                   void* pThis) noexcept {
    MM_INFO("pUsbDeviceHnd:%p", static_cast<void*>(pUsbDeviceHnd));
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pUsbDeviceHnd == nullptr || pMgr == nullptr) {
        MM_WARN("NULL == pUsbDeviceHnd || NULL == pThis");
        return true;
    }
    pMgr->m_PrintDebugLogForUSBInfo(pUsbDeviceHnd);
    auto pDeviceInfo = std::make_unique<CMMDeviceInfo>();
    pMgr->m_GetUsbStorageInfo(pUsbDeviceHnd, pDeviceInfo.get());
    pMgr->m_CheckDeviceProductName(pDeviceInfo.get());
    const std::string strDemoFile = pDeviceInfo->GetMountpath() + "/" + MMNames::USB_DEMO_FILE;
    pMgr->m_ListOrDrop(std::move(pDeviceInfo));
    if (pMgr->m_IsShopMode() && pMgr->m_CheckDemoFile(strDemoFile)) {
        pMgr->m_LaunchDemoPlayer(strDemoFile, false);
        MM_INFO("launch demo player - %s", strDemoFile.c_str());
    }
    free_usb_device_h(pUsbDeviceHnd);
    return true;
}
