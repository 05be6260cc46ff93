// What the daemon knows now, as one plain value, for whoever shows it from within the process, such as
// the workbench. Reading enumerates nothing, changes nothing and logs nothing, which the queries for
// clients do. The daemon itself has no use for it.
#pragma once

#include <string>
#include <vector>

#include "MMDeviceInfo.h"

/// A registered client of the bus service.
struct _stMMClientState {
    int nClientId;
    std::string strSender;  ///< unique bus name that its signals go to
};

/// The state. Records are lent: they stay valid until the main loop goes on.
struct _stMMDeviceState {
    std::vector<const CMMDeviceInfo*> vDevices;       ///< the list, newest first
    const CMMDeviceInfo* pCurrentDevice = nullptr;    ///< what pop-up or launch is about
    const CMMDeviceInfo* pDisplayedDevice = nullptr;  ///< of the last browse pop-up; may be gone
    int nFatCount = 0;
    int nExFatCount = 0;
    int nExt4Count = 0;
    int nNtfsCount = 0;
    int nCameraCount = 0;
    bool bActivated = false;
    bool bStandby = false;
    int nNotificationType = -1;    ///< last connection pop-up: 1 browse, 0 play, -1 none yet
    bool bRemovalNotice = false;   ///< a removal notice is on screen
    std::string strRemovalNotice;  ///< whose
    int nScanFileType = 0;         ///< of the last scan: 1 photo, 2 video, 3 music, 0 none
    std::string strScanFileName;
    std::string strScanFilePath;
    std::vector<_stMMClientState> vClients;  ///< in the order of their first registration
};

/// Read the state of the one manager and the one bus service; of what is not there, nothing. False
/// without a manager.
bool MMReadDeviceState(_stMMDeviceState& stState);
