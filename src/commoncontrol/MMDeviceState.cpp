// Reading the state of the manager and of the bus service, each by its own members.
#include "MMDeviceState.h"

#include "MMDeviceDbusServer.h"
#include "MMDeviceMgr.h"

bool CMMDeviceMgr::ReadState(_stMMDeviceState& stState) {
    if (m_pInstance == nullptr) {
        return false;
    }
    const CMMDeviceMgr& mgr = *m_pInstance;
    for (const GList* pNode = mgr.m_pDevList; pNode != nullptr; pNode = pNode->next) {
        stState.vDevices.push_back(static_cast<const CMMDeviceInfo*>(pNode->data));
    }
    stState.pCurrentDevice = mgr.m_pDeviceInfo;
    stState.pDisplayedDevice = mgr.m_pDisplayedDeviceInfo;
    stState.nFatCount = mgr.m_nFatFsDeviceCount;
    stState.nExFatCount = mgr.m_nExFatFsDeviceCount;
    stState.nExt4Count = mgr.m_nExt4FsDeviceCount;
    stState.nNtfsCount = mgr.m_nNtfsFsDeviceCount;
    stState.nCameraCount = mgr.m_nFsType6DeviceCount;
    stState.bActivated = mgr.m_bActivated;
    stState.bStandby = mgr.m_bStandby;
    stState.nNotificationType = mgr.m_eNotifactiontype;
    stState.bRemovalNotice = mgr.m_bNotificationShown;
    stState.strRemovalNotice = mgr.m_strShownNotification;
    stState.nScanFileType = mgr.m_stScanFileData.nType;
    stState.strScanFileName = mgr.m_stScanFileData.strFileName;
    stState.strScanFilePath = mgr.m_stScanFileData.strFilePath;
    return true;
}

void CMMDeviceDbusServer::ReadClients(_stMMDeviceState& stState) {
    if (m_pInstance == nullptr || m_pInstance->m_pClientMgr == nullptr) {
        return;
    }
    CMMDeviceClientMgr& clients = *m_pInstance->m_pClientMgr;
    for (int i = 0; i < clients.GetClientCount(); ++i) {
        const CMMDeviceClient* pClient = clients.GetClientByIndex(i);
        stState.vClients.push_back({pClient->GetClientId(), pClient->GetSender()});
    }
}

bool MMReadDeviceState(_stMMDeviceState& stState) {
    stState = {};
    CMMDeviceDbusServer::ReadClients(stState);
    return CMMDeviceMgr::ReadState(stState);
}
