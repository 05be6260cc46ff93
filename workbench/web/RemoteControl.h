// The remote control and the screen that it works on: buttons of the pop-up, the application in front,
// power. It acts, and tells what the screen shows.
#pragma once

#include <optional>
#include <string>

#include "Order.h"
#include "SimulatedTv.h"

namespace workbench {

class RemoteControl {
public:
    explicit RemoteControl(simulated::SimulatedTv& tv) : tv_(tv) {}

    // The orders. Each throws OrderError for what cannot be done.
    Json press(const Json& with);
    Json hide();
    Json key(const Json& with);
    Json standby();
    Json powerOff();
    Json wake();

    /// The pop-up that is up, as the protocol has it. Without `times`, what only says how time passes is
    /// left out.
    Json popup(bool times) const;
    /// The application in front, as the protocol has it.
    Json launched() const;
    /// "on", "standby", "off"
    std::string power() const;

    /// The launch of the application in front.
    std::optional<simulated::Launch> front() const;

    /// Whether a path is that of a picture of the pop-up that is up, or was the last that was.
    bool isPicture(const std::string& path) const;

    /// To be called in every turn of the loop: notes what a pop-up that has come up looks like.
    void look();

private:
    void pressButton(int button);

    simulated::SimulatedTv& tv_;
    bool resting_ = false;
    int focus_ = 0;
    std::size_t seen_ = 0;  // pop-ups
    std::string language_;  // when the pop-up came up
};

/// What orders and expectations call the kind of a pop-up: "play", "browse", "removal".
std::string popupKind(const simulated::Popup& popup);

}  // namespace workbench
