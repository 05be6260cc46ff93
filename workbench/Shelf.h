// What lies ready to be plugged into the TV: sticks and cameras, in or out, one of them in hand.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "SimulatedTv.h"

namespace workbench {

class Shelf {
public:
    struct Thing {
        std::string name;
        std::optional<std::string> folder;  ///< content of a stick; none for a camera
        simulated::UsbDevice properties;
        simulated::DeviceId id = 0;
        bool isPlugged = false;
    };

    explicit Shelf(simulated::Ports& ports) : ports_(ports) {}

    /// Put one more stick, or camera, on the shelf and take it in hand. Each has a serial number of its
    /// own.
    void addStick(const std::string& folder, const std::string& product);
    void addCamera();

    const std::vector<Thing>& things() const { return things_; }
    bool isEmpty() const { return things_.empty(); }

    /// The one in hand; there must be one.
    const Thing& inHand() const { return things_[hand_]; }
    std::size_t hand() const { return hand_; }
    /// Take the next one in hand.
    void takeNext() { hand_ = (hand_ + 1) % things_.size(); }
    void take(std::size_t index) { hand_ = index; }

    /// Plug in, or pull, the one in hand.
    void plug();
    void pull();

private:
    void add(Thing thing);
    simulated::Ports& ports_;
    std::vector<Thing> things_;
    std::size_t hand_ = 0;
};

}  // namespace workbench
