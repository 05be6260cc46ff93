// Registering, finding and forgetting the clients of the bus service; see MMDeviceClientMgr.h.
#include "MMDeviceClientMgr.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "MMLogger.h"
#include "MMUtf8.h"

CMMDeviceClient::~CMMDeviceClient() {
    m_nClientId = -1;
    m_pConnection = nullptr;
}

bool CMMDeviceClient::Create(int nClientId,
                             GDBusConnection* pConnection,
                             std::string strSender,
                             std::string strObjectPath,
                             std::string strInterfaceName) {
    m_nClientId = nClientId;
    m_pConnection = pConnection;
    m_strSender = std::move(strSender);
    m_strObjectPath = std::move(strObjectPath);
    m_strInterfaceName = std::move(strInterfaceName);
    return true;
}

CMMDeviceClientMgr::~CMMDeviceClientMgr() {
    MM_INFO("m_pRequester.size:%d", GetClientCount());
    for (CMMDeviceClient* pClient : m_pRequester) {
        delete pClient;
    }
}

void CMMDeviceClientMgr::AddClient(unsigned int nClientId,
                                   GDBusConnection* pConnection,
                                   const char* pSender,
                                   const char* pObjectPath,
                                   const char* pInterfaceName) {
    const int nId = static_cast<int>(nClientId);
    MM_INFO("nHandleId:%d vec_size=%d", nId, GetClientCount());
    CMMDeviceClient* pClient = m_Search(nId);
    if (pClient == nullptr) {
        MM_INFO("Not find requester , new it");
        auto pNew = std::make_unique<CMMDeviceClient>();
        m_pRequester.push_back(pNew.get());
        pClient = pNew.release();
    }
    pClient->Create(nId, pConnection, MMString(pSender), MMString(pObjectPath),
                    MMString(pInterfaceName));
}

void CMMDeviceClientMgr::DeleteClient(int nClientId) {
    MM_INFO("nClientId:%d  m_pRequester.size:%d", nClientId, GetClientCount());
    const auto found = m_Find(nClientId);
    if (found != m_pRequester.end()) {
        delete *found;
        m_pRequester.erase(found);
    }
}

int CMMDeviceClientMgr::GetClientCount() const {
    return static_cast<int>(m_pRequester.size());
}

CMMDeviceClient* CMMDeviceClientMgr::GetClientByIndex(int nIndex) {
    if (nIndex > GetClientCount()) {
        return nullptr;
    }
    return m_pRequester.at(static_cast<std::size_t>(nIndex));
}

CMMDeviceClient* CMMDeviceClientMgr::GetClient(int nClientId) {
    return m_Search(nClientId);
}

std::vector<CMMDeviceClient*>::iterator CMMDeviceClientMgr::m_Find(int nClientId) {
    return std::find_if(m_pRequester.begin(), m_pRequester.end(), [=](CMMDeviceClient* pClient) {
        return pClient != nullptr && pClient->GetClientId() == nClientId;
    });
}

CMMDeviceClient* CMMDeviceClientMgr::m_Search(int nClientId) {
    MM_INFO("nClientId:%d m_pRequester.size:%d", nClientId, GetClientCount());
    const auto found = m_Find(nClientId);
    return found != m_pRequester.end() ? *found : nullptr;
}
