// What the bus service sends: news of a device to every client, and the device lists that one client
// asked for. Each signal goes to one peer; nothing is broadcast.
#include "MMDeviceDbusServer.h"
#include "MMDeviceInfo.h"
#include "MMDeviceJsonUtil.h"
#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"

namespace {

constexpr const char* SIGNAL_ACTION = "mm_device_action";
constexpr const char* SIGNAL_LIST = "mm_device_get_list";

/// The "Action" of a device's JSON.
enum {
    ACTION_ATTACHED = 1,  // attached, or an entry of a list
    ACTION_REMOVED = 2,
    ACTION_LAST_ENTRY = 3,  // the last entry of a filtered list
    ACTION_NO_LIST = 4      // there is no device at all
};

/// Asks for every file system.
constexpr int EVERY_FILE_SYSTEM = -1;

/// A signal's values: one text.
GVariant* ParametersOf(const std::string& strJson) {
    return g_variant_ref_sink(g_variant_new("(s)", strJson.c_str()));
}

}  // namespace

/// The device manager's news: a device was attached or removed. Every client is told with the same
/// values; nothing is built when there is none.
void CMMDeviceDbusServer::m_DeviceActionCbFunc(void* pvData,
                                               CMMDeviceInfo* pDeviceInfo,
                                               bool bAttached) noexcept {
    MM_INFO("pvData :%p,pDeviceInfo:%p", pvData, static_cast<void*>(pDeviceInfo));
    auto* pThis = CMMLiveObjects<CMMDeviceDbusServer>::Find(pvData);
    if (pThis == nullptr) {
        MM_WARN("NULL == pThis");
        return;
    }
    CMMDeviceClientMgr* pClientMgr = pThis->m_pClientMgr.get();
    const int nCount = pClientMgr != nullptr ? pClientMgr->GetClientCount() : 0;
    if (nCount <= 0) {
        return;
    }
    if (pDeviceInfo == nullptr) {
        MM_WARN("NULL == pDeviceInfo");
        return;
    }
    std::string strJson;
    const int nAction = bAttached ? ACTION_ATTACHED : ACTION_REMOVED;
    CMMDeviceJsonUtil().DetailParamToJson(pDeviceInfo, nAction, strJson);
    MM_INFO("strDeviceInfo:%s", strJson.c_str());
    g_autoptr(GVariant) pParameters = ParametersOf(strJson);
    for (int i = 0; i < nCount; ++i) {
        CMMDeviceClient* pClient = pClientMgr->GetClientByIndex(i);
        if (pClient == nullptr) {
            continue;
        }
        MM_INFO("pClient ID :%d", pClient->GetClientId());
        pThis->m_EmitSignal(SIGNAL_ACTION, pClient, pParameters);
    }
}

void CMMDeviceDbusServer::m_EmitSignal(const char* pSignal,
                                       CMMDeviceClient* pClient,
                                       std::string& strJson) {
    g_autoptr(GVariant) pParameters = ParametersOf(strJson);
    m_EmitSignal(pSignal, pClient, pParameters);
}

/// Send a signal to one client. A failure is logged: a client is never told of it.
void CMMDeviceDbusServer::m_EmitSignal(const char* pSignal,
                                       CMMDeviceClient* pClient,
                                       GVariant* pParameters) {
    MM_INFO("pSignal:%s,pClient:%p", MMText(pSignal), static_cast<void*>(pClient));
    if (pClient == nullptr) {
        MM_WARN("NULL == pClient");
        return;
    }
    g_autoptr(GError) pError = nullptr;
    g_dbus_connection_emit_signal(pClient->GetDBusConnection(), pClient->GetSender().c_str(),
                                  pClient->GetObjectPath().c_str(),
                                  pClient->GetInterfaceName().c_str(), pSignal, pParameters,
                                  &pError);
    if (pError != nullptr) {
        MM_WARN(
            "Error: Create pDBusProxy for remote interface faild:  Error code: %d  Error msg: %s\n",
            pError->code, pError->message);
    }
}

/// Send every listed device to one client, without an end mark.
void CMMDeviceDbusServer::m_GetAllDevice(int nClientId) {
    GList* pList = CMMDeviceMgr::GetInstance()->GetDeviceList();
    if (pList == nullptr) {
        MM_WARN("pList = NULL");
        return;
    }
    CMMDeviceClient* pClient = m_GetClient(nClientId);
    if (pClient == nullptr) {
        MM_WARN("Can not finde client");
        return;
    }
    CMMDeviceJsonUtil jsonUtil;
    std::string strJson;
    for (pList = g_list_first(pList); pList != nullptr; pList = pList->next) {
        auto* pNode = static_cast<CMMDeviceInfo*>(pList->data);
        MM_INFO("pNode:%p", static_cast<void*>(pNode));
        jsonUtil.DetailParamToJson(pNode, ACTION_ATTACHED, strJson);
        m_EmitSignal(SIGNAL_ACTION, pClient, strJson);
        MM_INFO("strDeviceInfo:%s", strJson.c_str());
    }
}

/// Send the listed devices with a file system to one client. The last is marked by counting up to the
/// manager's number, which may differ from the number of matches: too high, and the mark does not come;
/// too low, and every entry from there on carries it.
void CMMDeviceDbusServer::m_GetDeviceList(int nClientId, int nFsType) {
    CMMDeviceMgr* pDeviceMgr = CMMDeviceMgr::GetInstance();
    GList* pList = pDeviceMgr->GetDeviceList();
    const int nDeviceCount = pDeviceMgr->GetDeviceCount(nFsType);
    MM_INFO("Fs %d device count:%d", nFsType, nDeviceCount);
    MM_INFO("nClient:%d,nFsType:%d", nClientId, nFsType);
    CMMDeviceClient* pClient = m_GetClient(nClientId);
    if (pClient == nullptr) {
        MM_WARN("Can not find client");
        return;
    }
    CMMDeviceJsonUtil jsonUtil;
    std::string strJson;
    if (pList == nullptr) {
        jsonUtil.DetailParamToJson(nullptr, ACTION_NO_LIST, strJson);
        m_EmitSignal(SIGNAL_LIST, pClient, strJson);
        MM_INFO("strDeviceInfo:%s", strJson.c_str());
    }
    int nSent = 0;
    for (pList = g_list_first(pList); pList != nullptr; pList = pList->next) {
        auto* pNode = static_cast<CMMDeviceInfo*>(pList->data);
        MM_INFO("pNode:%p", static_cast<void*>(pNode));
        std::string* pKey = nullptr;
        pNode->GetDeviceKey(&pKey);
        MM_INFO("Device Key:%s,Device Fs:%d", pKey->c_str(), pNode->GetFileSystemType());
        if (nFsType != EVERY_FILE_SYSTEM && nFsType != pNode->GetFileSystemType()) {
            continue;
        }
        ++nSent;
        const int nAction = nSent < nDeviceCount ? ACTION_ATTACHED : ACTION_LAST_ENTRY;
        jsonUtil.DetailParamToJson(pNode, nAction, strJson);
        MM_INFO("strDeviceInfo:%s", strJson.c_str());
        m_EmitSignal(SIGNAL_LIST, pClient, strJson);
    }
}

void CMMDeviceDbusServer::m_DisConnect(int nClientId) {
    MM_INFO("connetion : %d", nClientId);
    if (m_pClientMgr != nullptr) {
        m_pClientMgr->DeleteClient(nClientId);
    }
}

void CMMDeviceDbusServer::m_EnableDeviceViewPopUp(bool bEnable) {
    MM_INFO("bEnable:%u", static_cast<unsigned>(bEnable));
    CMMDeviceMgr::GetInstance()->SetActivated(bEnable);
}

/// The client with this id; null when there is none or no registry.
CMMDeviceClient* CMMDeviceDbusServer::m_GetClient(int nClientId) {
    return m_pClientMgr != nullptr ? m_pClientMgr->GetClient(nClientId) : nullptr;
}
