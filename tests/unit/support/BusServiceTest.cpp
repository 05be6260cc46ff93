// The fixture of BusServiceTest.h.
#include "BusServiceTest.h"

#include <algorithm>

namespace {

/// A text with every pointer in it as "0x*".
std::string masked(std::string text) {
    const std::string begin = "0x";
    for (std::size_t at = 0; (at = text.find(begin, at)) != std::string::npos;) {
        at += begin.size();
        const std::size_t end = text.find_first_not_of("0123456789abcdef", at);
        text.replace(at, std::min(end, text.size()) - at, "*");
    }
    return text;
}

}  // namespace

BusServiceTest::BusServiceTest() {
    describe(
        "<node name=\"/com/norvane/portmeld\"><interface name=\"com.norvane.portmeld\"/></node>");
}

void BusServiceTest::TearDown() {
    if (server != nullptr) {
        server->Destroy();
        CMMDeviceDbusServer::DestroyInstance();
    }
    ManagerTest::TearDown();
}

void BusServiceTest::describe(const std::string& xml) const {
    temp.file("root/usr/bin/portmeld.interface.xml", xml);
}

void BusServiceTest::startService() {
    server = CMMDeviceDbusServer::GetInstance();
    bus.acquireBus();
    forget();
}

std::vector<int> BusServiceTest::clients() {
    std::vector<int> ids;
    CMMDeviceClientMgr* registry = Access::registry(*server);
    for (int i = 0; i < registry->GetClientCount(); ++i) {
        ids.push_back(registry->GetClientByIndex(i)->GetClientId());
    }
    return ids;
}

Texts BusServiceTest::story(int leastPriority) {
    Texts lines = tv.journal().story(mark, leastPriority);
    std::transform(lines.begin(), lines.end(), lines.begin(), masked);
    return lines;
}
