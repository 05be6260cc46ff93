// A pop-up as a viewer sees it, drawn in characters.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "SimulatedTv.h"
#include "Terminal.h"

namespace workbench {

/// The lines of a box at most `columns` wide, with the keys that press its buttons. `left`: the
/// milliseconds until it goes by itself, running down; without it the whole time is told.
std::vector<Line> popupBox(const simulated::Popup& popup,
                           int columns,
                           std::optional<std::int64_t> left = std::nullopt);

/// When a pop-up goes by itself, on the TV's clock, in milliseconds.
std::int64_t popupEnd(const simulated::Popup& popup);

/// The label of a button (0 the first), printable; "" when the pop-up does not have it.
std::string buttonLabel(const simulated::Popup& popup, int button);

}  // namespace workbench
