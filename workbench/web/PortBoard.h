// The USB ports of the TV as pages and scenarios see them: numbered from 1 in the order of plugging, with
// what is in each. It plugs, mounts and pulls; what the daemon makes of it is told elsewhere.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "Order.h"
#include "SimulatedTv.h"

namespace workbench {

class PortBoard {
public:
    /// One port with what is, or was, in it.
    struct Port {
        std::string kind;  ///< "stick", "disk" (a partition of one), "camera"
        std::string title;
        std::optional<std::string> folder;  ///< its content; none for a camera
        simulated::DeviceId id = 0;
        bool plugged = true;
        bool mounted = false;
        Order order;   ///< that plugged it in
        int plug = 0;  ///< which one that was: of a disk, each partition has the same
    };

    /// `samples` is the folder of samples, `empty` that of a stick without content.
    PortBoard(simulated::SimulatedTv& tv, std::string samples, std::string empty);

    // The orders. Each throws OrderError for what cannot be done.
    Json plugFolder(const Json& with);
    Json plugSample(const Json& with);
    Json plugCamera(const Json& with);
    Json hub(const Json& with);
    Json mount(const Json& with);
    Json pull(const Json& with);

    /// To be called in every turn of the loop: notes of which port a content scan is that has begun.
    /// `current` is the node of the device that the daemon deals with.
    void look(const std::string& current);

    /// What is plugged in, as the protocol has it. `front` is the application in front with what it was
    /// given, to tell what is busy.
    Json state(const std::optional<simulated::Launch>& front) const;

    /// Every port that ever was; the one at index i has number i + 1.
    const std::deque<Port>& ports() const { return ports_; }

private:
    Port& plugged(const Json& with);
    int add(Port port);
    int addStick(const std::string& kind,
                 const std::string& folder,
                 const simulated::UsbDevice& properties,
                 bool mounted,
                 const Order& order);
    std::string serialOfNext() const;
    std::string folderOfSample(const std::string& name) const;
    bool isScanned(const Port& port) const;

    simulated::SimulatedTv& tv_;
    std::string samples_;
    std::string empty_;
    std::deque<Port> ports_;
    int plugs_ = 0;                  // orders that plugged something in
    std::size_t scans_ = 0;          // that were looked at
    const Port* scanned_ = nullptr;  // by the last of them
};

}  // namespace workbench
