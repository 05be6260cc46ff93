// The lines below the transcript that show how things stand now: the pop-up that is up, the TV, the
// sticks, the keys that make sense.
#pragma once

#include <vector>

#include "Shelf.h"
#include "SimulatedTv.h"
#include "Terminal.h"

namespace workbench {

/// The lines, for a terminal of this size. Drawn anew whenever something changes, and as time passes.
std::vector<Line> statusArea(simulated::SimulatedTv& tv, const Shelf& shelf, int columns, int rows);

}  // namespace workbench
