// How the TV stands, as the steps that bring a fresh one there. A recording begins with them. What of it
// can be read from the TV is read when it is asked for; the rest is noted as it happens.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Desk.h"
#include "PortBoard.h"
#include "SimulatedTv.h"
#include "TvState.h"
#include "Wire.h"

namespace workbench {

class Circumstances {
public:
    /// Which of the workbench's own clients has a name on the bus.
    using PeerOf = std::function<std::optional<int>(const std::string& busName)>;

    Circumstances(simulated::SimulatedTv& tv,
                  const TvState& state,
                  const PortBoard& ports,
                  PeerOf peerOf);

    /// The bus messages, once there are any.
    void setWire(const Wire* wire) { wire_ = wire; }

    /// To be called in every turn of the loop: notes what clients have told the daemon to keep.
    void look();
    /// An order was carried out.
    void note(const Order& order);

    /// The lines of the steps; `numbers` receives what number each port has after them, 0 for one that
    /// they do not plug in.
    std::string steps(std::vector<int>& numbers) const;

private:
    std::string settings() const;
    std::string plugged(std::vector<int>& numbers) const;
    std::string clients() const;
    std::string music() const;
    std::string faults() const;
    std::string power() const;

    simulated::SimulatedTv& tv_;
    const TvState& state_;
    const PortBoard& ports_;
    PeerOf peerOf_;
    const Wire* wire_ = nullptr;
    std::uint64_t heard_ = 0;               // messages of the bus
    std::vector<Json> music_;               // the arguments that added each item
    std::map<std::string, Json> settings_;  // the last order for each key of the store
};

}  // namespace workbench
