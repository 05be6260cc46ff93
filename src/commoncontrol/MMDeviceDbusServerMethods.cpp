// The methods of the bus service: what each reads, does and answers. Some are never answered, and
// none answers with an error: clients rely on both.
#include "MMDeviceDbusServer.h"
#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMPhotoBGM.h"

void CMMDeviceDbusServer::m_HandleMethodCall(GDBusConnection* pConnection,
                                             const char* pSender,
                                             const char* pObjectPath,
                                             const char* pInterfaceName,
                                             const char* pMethodName,
                                             GVariant* pParameters,
                                             GDBusMethodInvocation* pInvocation,
                                             void* pUserData) noexcept {
    auto* pThis = CMMLiveObjects<CMMDeviceDbusServer>::Find(pUserData);
    const bool bRegistry = pThis != nullptr && pThis->m_pClientMgr != nullptr;
    const auto registerCaller = [&](int nClientId) {
        if (bRegistry) {
            pThis->m_pClientMgr->AddClient(static_cast<unsigned>(nClientId), pConnection, pSender,
                                           pObjectPath, pInterfaceName);
        }
    };
    const auto reply = [&](GVariant* pValues) {
        g_dbus_method_invocation_return_value(pInvocation, pValues);
    };
    const auto isMethod = [&](const char* pName) { return g_strcmp0(pMethodName, pName) == 0; };
    // The invocation's end sends nothing: the caller is left without an answer.
    const auto neverReply = [&] { g_object_unref(pInvocation); };

    MM_INFO("szMethodName :%s", MMText(pMethodName));
    if (isMethod("Connect")) {
        const char* pPluginName = nullptr;
        int nClientId = 0;
        g_variant_get(pParameters, "(&si)", &pPluginName, &nClientId);
        MM_INFO("szPluginName:%s,Client Id :%d", pPluginName, nClientId);
        registerCaller(nClientId);
        reply(g_variant_new("(i)", nClientId));
    } else if (isMethod("GetDeviceInfo")) {
        int nClientId = 0;
        const char* pDeviceName = nullptr;
        g_variant_get(pParameters, "(i&s)", &nClientId, &pDeviceName);
        MM_INFO("szDeviceName:%s,nHandleId:%d", pDeviceName, nClientId);
        registerCaller(nClientId);
        neverReply();
    } else if (isMethod("GetDeviceCount")) {
        int nClientId = 0;
        int nFsType = 0;
        g_variant_get(pParameters, "(ii)", &nClientId, &nFsType);
        MM_INFO("nHandleId:%d", nClientId);
        registerCaller(nClientId);
        const int nCount = CMMDeviceMgr::GetInstance()->GetDeviceCount(nFsType);
        MM_INFO("nCount:%d", nCount);
        reply(g_variant_new("(i)", nCount));
    } else if (isMethod("DisConnect")) {
        int nClientId = 0;
        g_variant_get(pParameters, "(i)", &nClientId);
        MM_INFO("nHandleId:%d", nClientId);
        if (pThis != nullptr) {
            pThis->m_DisConnect(nClientId);
        }
        reply(nullptr);
    } else if (isMethod("RequesAll")) {
        int nClientId = 0;
        g_variant_get(pParameters, "(i)", &nClientId);
        MM_INFO("nHandleId:%d", nClientId);
        if (bRegistry) {
            registerCaller(nClientId);
            pThis->m_GetAllDevice(nClientId);
        }
        reply(nullptr);
    } else if (isMethod("SetEnablePopUP")) {
        gboolean bEnable = TRUE;
        g_variant_get(pParameters, "(b)", &bEnable);
        MM_INFO("bEnable:%d", bEnable);
        if (pThis != nullptr) {
            pThis->m_EnableDeviceViewPopUp(bEnable != FALSE);
        }
        reply(nullptr);
    } else if (isMethod("GetDeviceListByFsType")) {
        int nClientId = 0;
        int nFsType = 0;
        g_variant_get(pParameters, "(ii)", &nClientId, &nFsType);
        MM_INFO("nHandleId:%d,nFsType:%d", nClientId, nFsType);
        if (bRegistry) {
            registerCaller(nClientId);
            pThis->m_GetDeviceList(nClientId, nFsType);
        }
        reply(nullptr);
    } else if (isMethod("LaunchPopup")) {
        const char* pDeviceName = nullptr;
        g_variant_get(pParameters, "(&s)", &pDeviceName);
        MM_INFO("szDeviceName:%s", pDeviceName);
        neverReply();
    } else if (isMethod("SwitchToContent")) {
        neverReply();
    } else if (isMethod("SetPhotoBGMPlayList")) {
        g_autofree char* pItem1 = nullptr;
        g_autofree char* pItem2 = nullptr;
        g_autofree char* pItem3 = nullptr;
        g_variant_get(pParameters, "(sss)", &pItem1, &pItem2, &pItem3);
        MM_INFO("1=[%s],2=[%s],3=[%s]", pItem1, pItem2, pItem3);
        CMMPhotoBGM::GetInstance()->PushbackPlayListVec(pItem1, pItem2, pItem3);
        reply(nullptr);
    } else if (isMethod("GetPhotoBGMPlayListItem")) {
        int nIndex = 0;
        g_variant_get(pParameters, "(i)", &nIndex);
        MM_INFO("nval:%d", nIndex);
        std::string strItem1;
        std::string strItem2;
        std::string strItem3;
        CMMPhotoBGM::GetInstance()->GetPlayListVecByIndex(nIndex, strItem1, strItem2, strItem3);
        MM_INFO("1=[%s],2=[%s],3=[%s]", strItem1.c_str(), strItem2.c_str(), strItem3.c_str());
        reply(g_variant_new("(sss)", strItem1.c_str(), strItem2.c_str(), strItem3.c_str()));
    } else if (isMethod("ClearPhotoBGMPlayList")) {
        MM_INFO("ClearPhotoBGMPlayList");
        CMMPhotoBGM::GetInstance()->ClearPlayListVec();
        reply(nullptr);
    } else {
        MM_INFO("unkown method call.\n");
        reply(nullptr);
    }
}
