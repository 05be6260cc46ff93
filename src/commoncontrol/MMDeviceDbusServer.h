// The bus service: the one object through which other applications ask for devices and receive
// signals about them. One class, one source file per subject:
//
//   MMDeviceDbusServer.cpp          singleton, interface description, name and object on the bus
//   MMDeviceDbusServerMethods.cpp   the methods and their answers
//   MMDeviceDbusServerSignals.cpp   signals to clients
//
// Who the clients are is kept by MMDeviceClientMgr. Names and types of methods and signals are
// those of the interface description, an installed file.
#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "MMDeviceClientMgr.h"

class CMMDeviceInfo;
struct _stMMDeviceState;

class CMMDeviceDbusServer {
public:
    CMMDeviceDbusServer();
    virtual ~CMMDeviceDbusServer();
    CMMDeviceDbusServer(const CMMDeviceDbusServer&) = delete;
    CMMDeviceDbusServer& operator=(const CMMDeviceDbusServer&) = delete;

    /// The one service, made on first use. Null when it could not be made (no sound interface
    /// description); the next call tries again.
    static CMMDeviceDbusServer* GetInstance();

    /// Delete the one service, if there is one. Call Destroy() on it first.
    static void DestroyInstance();

    /// Request the name on the bus and hook into the device manager. False without a sound
    /// interface description; a bus that is not there does not count.
    bool Create();

    /// Forget all clients, give back the name and end the photo play list. The object stays on the
    /// bus until the process ends; its methods then find no clients.
    void Destroy();

    /// Append the one service's clients to `stState`; see MMDeviceState.h. Nothing without a service.
    static void ReadClients(_stMMDeviceState& stState);

private:
    friend class CMMDeviceDbusServerTestAccess;  // tests of what no peer on a bus can bring about

    struct SUnrefNode {
        void operator()(GDBusNodeInfo* pNode) const { g_dbus_node_info_unref(pNode); }
    };
    struct SFreeText {
        void operator()(char* pText) const { g_free(pText); }
    };
    struct SUnrefConnection {
        void operator()(GDBusConnection* pConnection) const { g_object_unref(pConnection); }
    };

    // ---- set-up (MMDeviceDbusServer.cpp)
    int m_InitMMDeviceDbus();
    bool m_InitIntrospectionXml();
    GDBusInterfaceInfo* m_FirstInterface() const;
    void m_LogIntrospectionData() const;
    unsigned m_RegisterObject(GDBusConnection* pConnection, GError** ppError);
    static void m_OnBusAcquired(GDBusConnection* pConnection,
                                const char* pName,
                                void* pUserData) noexcept;
    static void m_OnNameAcquired(GDBusConnection* pConnection,
                                 const char* pName,
                                 void* pUserData) noexcept;
    static void m_OnNameLost(GDBusConnection* pConnection,
                             const char* pName,
                             void* pUserData) noexcept;

    // ---- methods (MMDeviceDbusServerMethods.cpp)
    static void m_HandleMethodCall(GDBusConnection* pConnection,
                                   const char* pSender,
                                   const char* pObjectPath,
                                   const char* pInterfaceName,
                                   const char* pMethodName,
                                   GVariant* pParameters,
                                   GDBusMethodInvocation* pInvocation,
                                   void* pUserData) noexcept;

    // ---- signals (MMDeviceDbusServerSignals.cpp)
    static void m_DeviceActionCbFunc(void* pvData,
                                     CMMDeviceInfo* pDeviceInfo,
                                     bool bAttached) noexcept;
    void m_EmitSignal(const char* pSignal, CMMDeviceClient* pClient, std::string& strJson);
    void m_EmitSignal(const char* pSignal, CMMDeviceClient* pClient, GVariant* pParameters);
    void m_GetAllDevice(int nClientId);
    void m_GetDeviceList(int nClientId, int nFsType);
    void m_DisConnect(int nClientId);
    void m_EnableDeviceViewPopUp(bool bEnable);
    CMMDeviceClient* m_GetClient(int nClientId);

    std::unique_ptr<GDBusNodeInfo, SUnrefNode> m_pIntrospectionData;
    std::unique_ptr<char, SFreeText> m_pIntrospectionXml;
    unsigned m_nOwnerId = 0;  // 0 when the name was never requested
    GDBusInterfaceVTable m_stVTable;
    std::unique_ptr<CMMDeviceClientMgr> m_pClientMgr;
    // Held because the clients' records borrow it: a bus that dies must not take it from them.
    std::unique_ptr<GDBusConnection, SUnrefConnection> m_pConnection;

    static CMMDeviceDbusServer* m_pInstance;
};
