// Power events, and what follows from them: the list is rebuilt after a wake-up, connections start
// nothing from a real power-off until 60 s after the next wake-up, and the shop demo is started again.
#include <platform/power.h>

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"

namespace {

constexpr unsigned ACTIVATION_DELAY_MS = 60000;
constexpr unsigned DEMO_DELAY_MS = 10000;

}  // namespace

int CMMDeviceMgr::m_WakeupChangedCB(int nReason, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("m_WakeupChangedCB: pThis is NULL");
        return -1;
    }
    // What was attached before the sleep may be gone: the next request enumerates anew, and nobody is
    // told in between.
    pMgr->m_FreeDroppedRecords();
    pMgr->m_DropDeviceList();
    MM_INFO("m_WakeupChangedCB: reason=%d,user_data=%p, begin to set Enable false", nReason, pThis);
    pMgr->m_nEnableTimerId = g_timeout_add(ACTIVATION_DELAY_MS, m_ChangeEnableTimerCB, pMgr);
    if (pMgr->m_IsShopMode()) {
        pMgr->m_StartDemoTimer();
    }
    return 0;
}

gboolean CMMDeviceMgr::m_ChangeEnableTimerCB(void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("m_ChangeEnableTimerCB: pThis is NULL");
        return FALSE;
    }
    pMgr->m_bActivated = true;
    MM_INFO("m_ChangeEnableTimerCB SetEnable to true and return false");
    return FALSE;
}

int CMMDeviceMgr::m_PoweroffChangedCB(int nOption, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        MM_WARN("m_OnPoweroff_ChangedCB: pThis is NULL");
        return -1;
    }
    MM_INFO("option = %d", nOption);
    pMgr->m_bStandby = false;
    if (nOption != DEVICE_POWEROFF_OPTION_13 && nOption != DEVICE_POWEROFF_OPTION_14 &&
        (static_cast<unsigned>(nOption) & DEVICE_POWEROFF_BIT_OFF) != 0) {
        pMgr->m_bActivated = false;
        m_RemoveTimer(pMgr->m_nEnableTimerId);
        m_RemoveTimer(pMgr->m_nDemoTimerId);
    }
    MM_INFO("m_PoweroffChangedCB over");
    return 0;
}

int CMMDeviceMgr::m_PowerStateChangedCB(int nState, void* pThis) noexcept {
    CMMDeviceMgr* pMgr = CMMLiveObjects<CMMDeviceMgr>::Find(pThis);
    if (pMgr == nullptr) {
        return -1;
    }
    MM_INFO("option = %d", nState);
    MM_INFO("from Standby = %d", pMgr->m_bStandby);
    if (nState == DEVICE_POWER_STATE_STANDBY) {
        pMgr->m_bStandby = true;
        m_RemoveTimer(pMgr->m_nDemoTimerId);
    } else if (nState == DEVICE_POWER_STATE_NORMAL && pMgr->m_bStandby && pMgr->m_IsShopMode()) {
        pMgr->m_StartDemoTimer();
    }
    MM_INFO("m_PowerStateChangedCB over");
    return 1;
}

/// Remove a timer that may have fired long ago: ids are kept, and GLib complains about stale ones.
void CMMDeviceMgr::m_RemoveTimer(unsigned nTimerId) {
    if (nTimerId != 0 && g_main_context_find_source_by_id(nullptr, nTimerId) != nullptr) {
        g_source_remove(nTimerId);
    }
}

void CMMDeviceMgr::m_StartDemoTimer() {
    m_nDemoTimerId = g_timeout_add(DEMO_DELAY_MS, m_LaunchAllDemoPlayerTimerCB, this);
}
