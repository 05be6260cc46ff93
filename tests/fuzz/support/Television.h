// A simulated TV with a daemon that has been running for 30 seconds, made afresh for each input: what one
// input leaves behind does not reach the next.
#pragma once

#include <string>

#include "FakeBus.h"
#include "MMDeviceDbusServer.h"
#include "MMDeviceMgr.h"
#include "SimulatedTv.h"

namespace fuzz {

class Television {
public:
    /// The manager alone.
    Television();
    /// Ends the daemon; a breach of the platform's contract, or something not given back, ends the
    /// process.
    ~Television();
    Television(const Television&) = delete;
    Television& operator=(const Television&) = delete;

    /// Start the bus service with an interface description. Whether it came to be.
    bool serve(const std::string& interfaceDescription);

    simulated::SimulatedTv tv;
    FakeBus bus;

private:
    CMMDeviceMgr* mgr_;
    CMMDeviceDbusServer* server_ = nullptr;
};

/// The bytes of the description that is installed beside the daemon.
const std::string& installedDescription();

/// Ends the process unless a pop-up's texts are valid ones of at most 255 bytes each part that a device
/// names, and the Linux machine makes harmless text of them.
void requireShowable(const simulated::Popup& popup);

/// Ends the process unless a launch carries valid text only.
void requireValidLaunch(const simulated::Launch& launch);

}  // namespace fuzz
