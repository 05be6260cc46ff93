// The fixture of the bus service's tests: a TV with a running device manager, an interface
// description and a bus.
#pragma once

#include <string>

#include "FakeBus.h"
#include "MMDeviceDbusServer.h"
#include "Observations.h"
#include "TvTest.h"

/// Operations of the bus service that no peer on a bus can bring about.
class CMMDeviceDbusServerTestAccess {
public:
    static void busAcquired(GDBusConnection* connection, void* user) {
        CMMDeviceDbusServer::m_OnBusAcquired(connection, "com.norvane.portmeld", user);
    }
    static void deviceAction(void* user, CMMDeviceInfo* device, bool attached) {
        CMMDeviceDbusServer::m_DeviceActionCbFunc(user, device, attached);
    }
    static void emit(CMMDeviceDbusServer& server, CMMDeviceClient* client, std::string json) {
        server.m_EmitSignal("mm_device_action", client, json);
    }
    static void getAllDevice(CMMDeviceDbusServer& server, int id) { server.m_GetAllDevice(id); }
    static void getDeviceList(CMMDeviceDbusServer& server, int id, int fsType) {
        server.m_GetDeviceList(id, fsType);
    }
    static CMMDeviceClientMgr* registry(CMMDeviceDbusServer& server) {
        return server.m_pClientMgr.get();
    }
    static void loseRegistry(CMMDeviceDbusServer& server) { server.m_pClientMgr.reset(); }
};

class BusServiceTest : public ManagerTest {
protected:
    using Access = CMMDeviceDbusServerTestAccess;

    BusServiceTest();
    void TearDown() override;

    /// Install an interface description.
    void describe(const std::string& xml) const;

    /// Create the service and put its object on the bus; the journal starts afresh.
    void startService();

    /// Ids of the registered clients, in order.
    std::vector<int> clients();

    /// The whole journal since the last forget(), pointers masked as "0x*".
    Texts story(int leastPriority = 4);

    FakeBus bus;
    CMMDeviceDbusServer* server = nullptr;
};
