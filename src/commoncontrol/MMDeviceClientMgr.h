// Who wants device news: one record per client id, and the registry of them. Sending is the bus
// service's.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>

/// One client of the bus service: the id that it chose, and where its signals go. Borrows the
/// connection, which is the bus service's own and outlives the record.
class CMMDeviceClient {
public:
    CMMDeviceClient() = default;
    ~CMMDeviceClient();
    CMMDeviceClient(const CMMDeviceClient&) = delete;
    CMMDeviceClient& operator=(const CMMDeviceClient&) = delete;

    /// Set all fields. Always true.
    bool Create(int nClientId,
                GDBusConnection* pConnection,
                std::string strSender,
                std::string strObjectPath,
                std::string strInterfaceName);

    void SetClientId(int nClientId) { m_nClientId = nClientId; }
    void SetDBusConnection(GDBusConnection* pConnection) { m_pConnection = pConnection; }
    void SetSender(std::string strSender) { m_strSender = std::move(strSender); }
    void SetObjectPath(std::string strPath) { m_strObjectPath = std::move(strPath); }
    void SetInterfaceName(std::string strName) { m_strInterfaceName = std::move(strName); }

    int GetClientId() const { return m_nClientId; }
    GDBusConnection* GetDBusConnection() const { return m_pConnection; }
    std::string GetSender() const { return m_strSender; }
    std::string GetObjectPath() const { return m_strObjectPath; }
    std::string GetInterfaceName() const { return m_strInterfaceName; }

private:
    int m_nClientId = -1;
    GDBusConnection* m_pConnection = nullptr;
    std::string m_strSender;         // unique bus name of the peer
    std::string m_strObjectPath;     // of the call that registered it: the service's own
    std::string m_strInterfaceName;  // likewise
};

/// The clients, in the order of their first registration. Owns their records.
class CMMDeviceClientMgr {
public:
    CMMDeviceClientMgr() = default;
    ~CMMDeviceClientMgr();
    CMMDeviceClientMgr(const CMMDeviceClientMgr&) = delete;
    CMMDeviceClientMgr& operator=(const CMMDeviceClientMgr&) = delete;

    /// Register a client, or refresh the one with this id: the last caller of an id gets its
    /// signals. A null text counts as "".
    void AddClient(unsigned int nClientId,
                   GDBusConnection* pConnection,
                   const char* pSender,
                   const char* pObjectPath,
                   const char* pInterfaceName);

    /// Forget the client with this id, if there is one.
    void DeleteClient(int nClientId);

    int GetClientCount() const;

    /// The client at a position, lent. Null for an index above the count; throws std::out_of_range
    /// for the count itself and for a negative index.
    CMMDeviceClient* GetClientByIndex(int nIndex);

    /// The client with this id, lent; null when there is none.
    CMMDeviceClient* GetClient(int nClientId);

private:
    std::vector<CMMDeviceClient*>::iterator m_Find(int nClientId);
    CMMDeviceClient* m_Search(int nClientId);

    std::vector<CMMDeviceClient*> m_pRequester;  // owned
};
