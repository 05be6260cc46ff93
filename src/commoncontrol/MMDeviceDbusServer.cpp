// The bus service as an object: the singleton, what it loads from the interface description, and
// its name and object on the bus.
#include "MMDeviceDbusServer.h"

#include "MMDeviceMgr.h"
#include "MMLiveObjects.h"
#include "MMLogger.h"
#include "MMNames.h"
#include "MMPaths.h"
#include "MMPhotoBGM.h"

CMMDeviceDbusServer* CMMDeviceDbusServer::m_pInstance = nullptr;

CMMDeviceDbusServer::CMMDeviceDbusServer() : m_stVTable{m_HandleMethodCall, nullptr, nullptr, {}} {
    CMMLiveObjects<CMMDeviceDbusServer>::Add(this);
}

CMMDeviceDbusServer::~CMMDeviceDbusServer() {
    CMMLiveObjects<CMMDeviceDbusServer>::Remove(this);
}

CMMDeviceDbusServer* CMMDeviceDbusServer::GetInstance() {
    MM_INFO("Instance:%p", static_cast<void*>(m_pInstance));
    if (m_pInstance == nullptr) {
        m_pInstance = new CMMDeviceDbusServer();
        if (!m_pInstance->Create()) {
            MM_WARN("Create CMMDeviceDbusServer instance fail");
            DestroyInstance();
        }
    }
    MM_INFO("Instance:%p", static_cast<void*>(m_pInstance));
    return m_pInstance;
}

void CMMDeviceDbusServer::DestroyInstance() {
    delete m_pInstance;
    m_pInstance = nullptr;
}

bool CMMDeviceDbusServer::Create() {
    if (m_InitMMDeviceDbus() != 0) {
        MM_WARN("m_InitMMDeviceDbus fail");
        return false;
    }
    CMMDeviceMgr* pDeviceMgr = CMMDeviceMgr::GetInstance();
    if (pDeviceMgr == nullptr) {
        MM_WARN("get CMMDeviceMgr instance  fail");
    } else {
        MM_INFO("SetDeviceEventCallback");
        pDeviceMgr->SetDeviceEventCallback(m_DeviceActionCbFunc, this);
    }
    m_pClientMgr = std::make_unique<CMMDeviceClientMgr>();
    return true;
}

void CMMDeviceDbusServer::Destroy() {
    m_pClientMgr.reset();
    m_pConnection.reset();
    if (m_nOwnerId != 0) {
        g_bus_unown_name(m_nOwnerId);
    }
    m_pIntrospectionData.reset();
    m_pIntrospectionXml.reset();
    CMMPhotoBGM::GetInstance();
    CMMPhotoBGM::DestroyInstance();
}

/// Load the interface description and request the name. 0 when the description is sound, whatever
/// became of the name; else -1.
int CMMDeviceDbusServer::m_InitMMDeviceDbus() {
    if (!m_InitIntrospectionXml()) {
        MM_WARN("init_introspection_xml error.");
        return -1;
    }
    MM_INFO("init_introspection_xml ok.");
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    g_type_init();
    G_GNUC_END_IGNORE_DEPRECATIONS

    m_pIntrospectionData.reset(g_dbus_node_info_new_for_xml(m_pIntrospectionXml.get(), nullptr));
    if (m_pIntrospectionData == nullptr) {
        MM_WARN("g_dbus_node_info_new_for_xml fail");
        return -1;
    }
    m_LogIntrospectionData();
    m_nOwnerId = g_bus_own_name(G_BUS_TYPE_SYSTEM, MMNames::BUS_NAME, G_BUS_NAME_OWNER_FLAGS_NONE,
                                m_OnBusAcquired, m_OnNameAcquired, m_OnNameLost, this, nullptr);
    MM_INFO("Create-------------------------------nOwnerId=%d\n", static_cast<int>(m_nOwnerId));
    if (m_nOwnerId == 0) {
        MM_WARN(" dbus own name fail");
    }
    return 0;
}

/// Read the interface description. False when it cannot be read.
bool CMMDeviceDbusServer::m_InitIntrospectionXml() {
    const std::string strPath = std::string(MMPaths::INTERFACE_DIR) + "/" + MMPaths::INTERFACE_FILE;
    MM_INFO("ConfigFilePath:%s", strPath.c_str());
    char* pText = nullptr;
    const bool bLoaded = g_file_get_contents(strPath.c_str(), &pText, nullptr, nullptr);
    m_pIntrospectionXml.reset(pText);
    if (bLoaded) {
        MM_INFO("load %s ok.", MMPaths::INTERFACE_FILE);
    } else {
        MM_WARN("load %s fail.", MMPaths::INTERFACE_FILE);
    }
    return bLoaded;
}

/// The interface that the object serves; null when the description declares none.
GDBusInterfaceInfo* CMMDeviceDbusServer::m_FirstInterface() const {
    GDBusInterfaceInfo** ppInterfaces = m_pIntrospectionData->interfaces;
    return ppInterfaces != nullptr ? *ppInterfaces : nullptr;
}

void CMMDeviceDbusServer::m_LogIntrospectionData() const {
    MM_INFO("m_pIntrospectionData:%p", static_cast<void*>(m_pIntrospectionData.get()));
    MM_INFO("m_pIntrospectionData path:%s", MMText(m_pIntrospectionData->path));
    MM_INFO("m_pIntrospectionData inter:%p", static_cast<void*>(m_FirstInterface()));
}

/// Put the object on the bus. Returns its registration id; 0 when the bus refuses it, and, without
/// an error, when the description names no object or no interface that a bus could take.
unsigned CMMDeviceDbusServer::m_RegisterObject(GDBusConnection* pConnection, GError** ppError) {
    const char* pPath = m_pIntrospectionData->path;
    GDBusInterfaceInfo* pInterface = m_FirstInterface();
    if (pPath == nullptr || !g_variant_is_object_path(pPath) || pInterface == nullptr ||
        !g_dbus_is_interface_name(pInterface->name)) {
        return 0;
    }
    return g_dbus_connection_register_object(pConnection, pPath, pInterface, &m_stVTable, this,
                                             nullptr, ppError);
}

void CMMDeviceDbusServer::m_OnBusAcquired(GDBusConnection* pConnection,
                                          const char* pName,
                                          void* pUserData) noexcept {
    MM_INFO("szName:%s", MMText(pName));
    if (pConnection == nullptr) {
        MM_WARN("NULL == pConnection");
        return;
    }
    auto* pMMDeviceEngine = CMMLiveObjects<CMMDeviceDbusServer>::Find(pUserData);
    if (pMMDeviceEngine == nullptr) {
        MM_WARN("NULL == pMMDeviceEngine");
        return;
    }
    if (pMMDeviceEngine->m_pIntrospectionData == nullptr) {
        MM_WARN("NULL == m_pIntrospectionData");
        return;
    }
    pMMDeviceEngine->m_pConnection.reset(static_cast<GDBusConnection*>(g_object_ref(pConnection)));
    pMMDeviceEngine->m_LogIntrospectionData();
    g_autoptr(GError) pError = nullptr;
    const unsigned nRegistrationId = pMMDeviceEngine->m_RegisterObject(pConnection, &pError);
    MM_INFO("nRegistrationId : %d", static_cast<int>(nRegistrationId));
    if (nRegistrationId == 0 && pError != nullptr) {
        MM_WARN("Error: g_dbus_connection_register_object:  Error code: %d  Error msg: %s\n",
                pError->code, pError->message);
    }
}

void CMMDeviceDbusServer::m_OnNameAcquired(GDBusConnection*, const char* pName, void*) noexcept {
    MM_INFO("%s NameAcquired.", MMText(pName));
}

void CMMDeviceDbusServer::m_OnNameLost(GDBusConnection*, const char* pName, void*) noexcept {
    MM_INFO("%s NameLost.", MMText(pName));
}
